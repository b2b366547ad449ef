#include "Curves.h"

#include <QPointF>

namespace lumagrid {

namespace {

QEasingCurve bezier(QPointF first, QPointF second) {
  QEasingCurve curve(QEasingCurve::BezierSpline);
  curve.addCubicBezierSegment(first, second, {1, 1});
  return curve;
}

}  // namespace

QEasingCurve Curves::easeOut() {
  return bezier({0, 0}, {0.58, 1});
}

QEasingCurve Curves::easeInOut() {
  return bezier({0.42, 0}, {0.58, 1});
}

}  // namespace lumagrid
