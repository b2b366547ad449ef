#pragma once

#include <QBasicTimer>
#include <QPointF>
#include <optional>

#include "WindowEventItem.h"

namespace lumagrid {

// Recognizes a pinch over the item: two fingers on a touch screen or a touch pad, or the wheel with Ctrl, which begins
// with the first notch and ends 300 ms after the last. It watches the window's events and leaves them to everyone else,
// but for the wheel that it takes. Magnifications are relative to the start of the pinch (1 there); the first is told
// once it differs from 1 by 0.01. Main thread.
class MagnificationArea : public lumagrid::WindowEventItem {
  Q_OBJECT
  QML_ELEMENT
  // The magnification in force when a pinch with the wheel begins: it goes on from there.
  Q_PROPERTY(double wheelStart MEMBER m_wheelStart NOTIFY wheelChanged FINAL)
  // The least magnification that the wheel reaches, so that turning it back acts at once.
  Q_PROPERTY(double wheelFloor MEMBER m_wheelFloor NOTIFY wheelChanged FINAL)

 public:
  using WindowEventItem::WindowEventItem;

 Q_SIGNALS:
  void wheelChanged();
  void magnified(double magnification);
  void ended();

 protected:
  bool windowEvent(QEvent& event) override;
  void timerEvent(QTimerEvent* event) override;

 private:
  [[nodiscard]] bool covers(QPointF scenePosition) const;
  bool handleWheel(const QWheelEvent& event);
  void handleNativeGesture(const QNativeGestureEvent& event);
  void handleTouch(const QTouchEvent& event);
  void begin(double magnification);
  void change(double magnification);
  void end();

  double m_wheelStart = 1;
  double m_wheelFloor = 0;
  std::optional<double> m_magnification;  // of the pinch that is under way
  bool m_hasPassedThreshold = false;      // it has passed the threshold
  double m_startDistance = 0;             // between two fingers
  QBasicTimer m_wheelEnd;
};

}  // namespace lumagrid
