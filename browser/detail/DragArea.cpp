#include "DragArea.h"

#include <QCursor>
#include <QMouseEvent>
#include <cmath>
#include <utility>

namespace lumagrid {

namespace {

constexpr double kDragThreshold = 10;  // points

}  // namespace

DragArea::DragArea(QQuickItem* parent) : QQuickItem(parent) {
  setAcceptedMouseButtons(Qt::LeftButton);
  connect(this, &DragArea::canMoveChanged, this, &DragArea::updateCursor);
}

void DragArea::mousePressEvent(QMouseEvent* event) {
  if (event->button() == Qt::LeftButton) m_start = event->position();
}

void DragArea::mouseMoveEvent(QMouseEvent* event) {
  const QPointF translation = event->position() - m_start;
  if (!m_isDragging && std::hypot(translation.x(), translation.y()) < kDragThreshold) return;
  setDragging(true);
  Q_EMIT dragged(translation);
}

void DragArea::mouseReleaseEvent(QMouseEvent* event) {
  if (event->button() != Qt::LeftButton || !m_isDragging) return;
  setDragging(false);
  Q_EMIT ended(event->position() - m_start);
}

void DragArea::mouseDoubleClickEvent(QMouseEvent*) {
  Q_EMIT doubleClicked();
}

void DragArea::mouseUngrabEvent() {
  if (!m_isDragging) return;
  setDragging(false);
  Q_EMIT canceled();
}

void DragArea::setDragging(bool isDragging) {
  if (std::exchange(m_isDragging, isDragging) != isDragging) updateCursor();
}

void DragArea::updateCursor() {
  setCursor(!m_canMove ? Qt::ArrowCursor : m_isDragging ? Qt::ClosedHandCursor : Qt::OpenHandCursor);
}

}  // namespace lumagrid
