#include "ContinuousPath.h"

#include <algorithm>
#include <cmath>
#include <numbers>

namespace lumagrid {

namespace {

constexpr int kSegmentsPerCorner = 48;

// The exponent whose superellipse over `reach` radii has its diagonal point where the circle has its own.
double exponentForReach(double reach) {
  const double inset = 1 - 1 / std::numbers::sqrt2;
  return -1 / std::log2(1 - inset / reach);
}

}  // namespace

double cornerReach(QSizeF size, double radius) {
  if (radius <= 0) return 0;
  const double room = std::min(size.width(), size.height()) / (2 * radius);
  return std::clamp(room, 1.0, kContinuousCornerReach);
}

QPainterPath continuousRectanglePath(const QRectF& rect, double radius) {
  QPainterPath path;
  if (!(rect.width() > 0 && rect.height() > 0)) return path;
  radius = std::clamp(radius, 0.0, std::min(rect.width(), rect.height()) / 2);
  if (radius == 0) {
    path.addRect(rect);
    return path;
  }
  const double reach = cornerReach(rect.size(), radius);
  const double length = reach * radius;
  const double power = 2 / exponentForReach(reach);

  // Each corner runs clockwise from the end of one edge to the start of the next: `along` points back into the edge
  // that ends here, `across` into the edge that begins.
  const auto addCorner = [&](QPointF corner, QPointF along, QPointF across) {
    for (int i = 0; i <= kSegmentsPerCorner; ++i) {
      const double angle = std::numbers::pi / 2 * i / kSegmentsPerCorner;
      const double u = 1 - std::pow(std::sin(angle), power);
      const double v = 1 - std::pow(std::max(0.0, std::cos(angle)), power);
      const QPointF point = corner + along * (length * u) + across * (length * v);
      if (path.elementCount() == 0) {
        path.moveTo(point);
      } else {
        path.lineTo(point);
      }
    }
  };
  path.moveTo(rect.left() + length, rect.top());
  addCorner(rect.topRight(), {-1, 0}, {0, 1});
  addCorner(rect.bottomRight(), {0, -1}, {-1, 0});
  addCorner(rect.bottomLeft(), {1, 0}, {0, -1});
  addCorner(rect.topLeft(), {0, 1}, {1, 0});
  path.closeSubpath();
  return path;
}

}  // namespace lumagrid
