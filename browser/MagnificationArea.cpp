#include "MagnificationArea.h"

#include <QLineF>
#include <QTimerEvent>
#include <algorithm>
#include <cmath>

namespace lumagrid {

namespace {

constexpr double kThreshold = 0.01;
constexpr int kWheelEndMs = 300;
// One notch of the wheel (120 units): seven double the size.
const double kWheelUnit = std::exp2(1.0 / (7 * 120));

}  // namespace

bool MagnificationArea::covers(QPointF scenePosition) const {
  return isVisible() && isEnabled() && contains(mapFromScene(scenePosition));
}

bool MagnificationArea::windowEvent(QEvent& event) {
  switch (event.type()) {
    case QEvent::Wheel:
      return handleWheel(static_cast<QWheelEvent&>(event));
    case QEvent::NativeGesture:
      handleNativeGesture(static_cast<QNativeGestureEvent&>(event));
      break;
    case QEvent::TouchBegin:
    case QEvent::TouchUpdate:
    case QEvent::TouchEnd:
    case QEvent::TouchCancel:
      handleTouch(static_cast<QTouchEvent&>(event));
      break;
    default:
      break;
  }
  return false;
}

bool MagnificationArea::handleWheel(const QWheelEvent& event) {
  if (!event.modifiers().testFlag(Qt::ControlModifier) || !covers(event.position())) return false;
  if (event.angleDelta().y() == 0) return true;
  if (!m_wheelEnd.isActive()) begin(m_wheelStart);
  m_wheelEnd.start(kWheelEndMs, this);
  change(std::max(m_wheelFloor, *m_magnification * std::pow(kWheelUnit, event.angleDelta().y())));
  return true;
}

void MagnificationArea::timerEvent(QTimerEvent* event) {
  if (event->timerId() == m_wheelEnd.timerId()) end();
}

void MagnificationArea::handleNativeGesture(const QNativeGestureEvent& event) {
  switch (event.gestureType()) {
    case Qt::BeginNativeGesture:
      if (covers(event.position())) begin(1);
      break;
    case Qt::ZoomNativeGesture:
      if (!m_magnification && covers(event.position())) begin(1);
      if (m_magnification) change(*m_magnification * (1 + event.value()));
      break;
    case Qt::EndNativeGesture:
      end();
      break;
    default:
      break;
  }
}

void MagnificationArea::handleTouch(const QTouchEvent& event) {
  const auto& points = event.points();
  const bool twoFingers = points.size() == 2 && event.type() != QEvent::TouchEnd &&
                          event.type() != QEvent::TouchCancel && points[0].state() != QEventPoint::Released &&
                          points[1].state() != QEventPoint::Released;
  if (!twoFingers) {
    if (m_startDistance > 0) end();
    return;
  }
  const double distance = QLineF(points[0].scenePosition(), points[1].scenePosition()).length();
  if (m_startDistance > 0) {
    change(distance / m_startDistance);
  } else if (distance > 0 && covers(points[0].scenePosition()) && covers(points[1].scenePosition())) {
    begin(1);
    m_startDistance = distance;
  }
}

void MagnificationArea::begin(double magnification) {
  end();
  m_magnification = magnification;
}

void MagnificationArea::change(double magnification) {
  m_magnification = magnification;
  m_hasPassedThreshold = m_hasPassedThreshold || m_wheelEnd.isActive() || std::abs(magnification - 1) >= kThreshold;
  if (m_hasPassedThreshold) Q_EMIT magnified(magnification);
}

void MagnificationArea::end() {
  m_wheelEnd.stop();
  m_startDistance = 0;
  m_magnification.reset();
  if (std::exchange(m_hasPassedThreshold, false)) Q_EMIT ended();
}

}  // namespace lumagrid
