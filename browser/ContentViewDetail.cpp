#include <cmath>

#include "ContentView.h"
#include "OpenDialogs.h"

namespace lumagrid {

void ContentView::deleteCurrentPhoto() {
  m_shared.dialogs.run([this] { m_library.deleteCurrentPhoto(); });
}

void ContentView::handleDetailMagnification(double magnification) {
  const double scale = std::isnan(magnification) ? 1.0 : std::max(magnification, 1.0);
  setZoom({scale, m_zoom.offset}, m_dragOffset, ZoomAnimation::None);
}

void ContentView::endDetailMagnification() {
  constexpr double kLeastKeptScale = 1.05;
  if (m_zoom.scale < kLeastKeptScale) setZoom({}, m_dragOffset, ZoomAnimation::Spring);
}

void ContentView::handleDrag(QPointF translation) {
  if (m_zoom.scale > 1.0) setZoom(m_zoom, translation, ZoomAnimation::None);
}

void ContentView::endDrag(QPointF translation) {
  if (m_zoom.scale > 1.0) setZoom({m_zoom.scale, m_zoom.offset + translation}, {}, ZoomAnimation::None);
}

void ContentView::handleDoubleClick() {
  setZoom({}, {}, ZoomAnimation::Spring);
}

void ContentView::setZoom(const ZoomState& zoom, QPointF dragOffset, ZoomAnimation animation) {
  Q_EMIT zoomWillChange(animation);
  m_zoom = zoom;
  m_dragOffset = dragOffset;
  Q_EMIT zoomChanged();
}

}  // namespace lumagrid
