#include "ContentView.h"
#include "OpenDialogs.h"

namespace lumagrid {

void ContentView::deleteCurrentPhoto() {
  m_shared.dialogs.run([this] { m_library.deleteCurrentPhoto(); });
}

void ContentView::handleDetailMagnification(double magnification) {
  const bool magnifies = magnification > ZoomState::kFittedScale;  // not when it is no number
  const double scale = magnifies ? magnification : ZoomState::kFittedScale;
  setZoom({scale, m_zoom.offset}, m_dragOffset, ZoomState::Curve::None);
}

void ContentView::endDetailMagnification() {
  constexpr double kLeastKeptScale = 1.05;
  if (m_zoom.scale < kLeastKeptScale) setZoom({}, m_dragOffset, ZoomState::Curve::Spring);
}

void ContentView::handleDrag(QPointF translation) {
  if (isZoomed()) setZoom(m_zoom, translation, ZoomState::Curve::None);
}

void ContentView::endDrag(QPointF translation) {
  if (isZoomed()) setZoom({m_zoom.scale, m_zoom.offset + translation}, {}, ZoomState::Curve::None);
}

void ContentView::handleDoubleClick() {
  setZoom({}, {}, ZoomState::Curve::Spring);
}

void ContentView::setZoom(const ZoomState& zoom, QPointF dragOffset, ZoomState::Curve curve) {
  Q_EMIT zoomWillChange(curve);
  m_zoom = zoom;
  m_dragOffset = dragOffset;
  Q_EMIT zoomChanged();
}

}  // namespace lumagrid
