#include "Curves.h"

#include <QJSEngine>

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

Curves* Curves::instance() {
  static Curves curves;
  return &curves;
}

Curves* Curves::create(QQmlEngine*, QJSEngine*) {
  QJSEngine::setObjectOwnership(instance(), QJSEngine::CppOwnership);
  return instance();
}

void Curves::setAppearance(const Appearance* appearance) {
  if (m_appearance) m_appearance->disconnect(this);
  m_appearance = appearance;
  const auto follow = [this, appearance] {
    m_pace = appearance && appearance->motion() == Appearance::Motion::reduced ? 0 : 1;
    Q_EMIT paceChanged();
  };
  if (appearance) connect(appearance, &Appearance::motionChanged, this, follow);
  follow();
}

}  // namespace lumagrid
