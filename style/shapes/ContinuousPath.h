#pragma once

#include <QPainterPath>
#include <QRectF>
#include <QSizeF>

namespace lumagrid {

// How far a continuous corner reaches along each edge, in radii, where the sides are long enough.
inline constexpr double kContinuousCornerReach = 1.528665;

// The reach of the corners of a rectangle of `size` (same unit as `radius`), in radii: kContinuousCornerReach, or less
// where a side is too short for two of them; 1 for a capsule.
[[nodiscard]] double cornerReach(QSizeF size, double radius);

// The rectangle with continuous corners: each is a quarter of a superellipse that reaches cornerReach() radii along
// both edges, with the exponent that puts its point on the diagonal where a circle of `radius` has it (2, a plain
// circle, for a reach of 1; about 3.26 at the full reach), so that curvature grows from nothing. `radius` is clamped to
// half the shorter side; 0 gives a plain rectangle. Closed, clockwise, from the left end of the top edge; deviates from
// the exact curve by less than a 3000th of the radius. Any thread.
[[nodiscard]] QPainterPath continuousRectanglePath(const QRectF& rect, double radius);

}  // namespace lumagrid
