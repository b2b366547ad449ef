#pragma once

#include <QBasicTimer>
#include <optional>

#include "ContentView.h"
#include "WindowEventItem.h"

namespace lumagrid {

// The window's keys, which act whatever has the focus: Esc, and on the detail stage the arrows and Delete (Backspace
// too), without modifiers and only while their buttons are enabled. A held arrow steps on with the key's repeats, but
// only once the window has come up with its input: what waits when the key is released steps no more. Main thread.
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
  void step(int key);

  ContentView* m_view = nullptr;
  std::optional<int> m_heldKey;  // an arrow that repeats and whose next step is due
  QBasicTimer m_stepTimer;
};

}  // namespace lumagrid
