#pragma once

#include <QBasicTimer>
#include <deque>
#include <optional>

#include "ContentView.h"
#include "WindowEventItem.h"

namespace lumagrid {

// The window's keys, which act whatever has the focus: Esc, and on the detail stage the arrows and Delete (Backspace
// too), without modifiers and only while their buttons are enabled; none while a dialog is open.
//
// Each press of an arrow is a step, and a frame shows it before the next press of an arrow or Delete acts: those wait
// in their order. Esc, a click and a dialog end the waiting. A held arrow, from its first repeat on, steps as soon as
// the frame with the last step is shown and the next photo is ready, but only once the window has come up with its
// input: when the key is released, it steps no more. Main thread.
class WindowKeys : public lumagrid::WindowEventItem {
  Q_OBJECT
  QML_ELEMENT
  Q_PROPERTY(lumagrid::ContentView* view MEMBER m_view NOTIFY viewChanged REQUIRED FINAL)

 public:
  using WindowEventItem::WindowEventItem;

 Q_SIGNALS:
  void viewChanged();

 protected:
  bool windowEvent(QEvent& event) override;
  void timerEvent(QTimerEvent* event) override;

 private:
  bool handlePress(const QKeyEvent& event);
  void press(int key);
  void hold(int key);
  void release();
  void stepInNextTurn();
  void actOnWaiting();
  void forgetWaiting();
  void step(int key);
  void awaitFrame();
  [[nodiscard]] bool awaitsFrame() const { return m_shownStep < m_lastStep; }

  ContentView* m_view = nullptr;
  std::deque<int> m_waiting;     // presses that have not acted yet
  std::optional<int> m_heldKey;  // an arrow that repeats
  int m_lastStep = 0;            // counts what has to be shown
  int m_shownStep = 0;           // the last one that a frame has shown
  QBasicTimer m_nextTurn;        // of the event loop, in which what waits may act
};

}  // namespace lumagrid
