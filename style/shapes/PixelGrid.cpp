#include "PixelGrid.h"

#include <QQuickItem>
#include <QQuickWindow>
#include <cmath>

namespace lumagrid {

QPointF offsetToPixelGrid(const QQuickItem& item, QPointF point) {
  if (!item.window()) return {};
  const QPointF origin = item.mapToScene(point);
  const QPointF unit = item.mapToScene(point + QPointF(1, 1)) - origin;
  if (!qFuzzyCompare(unit.x(), 1.0) || !qFuzzyCompare(unit.y(), 1.0)) return {};
  const double ratio = item.window()->effectiveDevicePixelRatio();
  return QPointF(std::round(origin.x() * ratio), std::round(origin.y() * ratio)) / ratio - origin;
}

}  // namespace lumagrid
