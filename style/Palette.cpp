#include "Palette.h"

#include <QJSEngine>

namespace lumagrid {

Palette* Palette::instance() {
  static Palette palette;
  return &palette;
}

Palette* Palette::create(QQmlEngine*, QJSEngine*) {
  QJSEngine::setObjectOwnership(instance(), QJSEngine::CppOwnership);
  return instance();
}

void Palette::setAppearance(const Appearance* appearance) {
  if (m_appearance) m_appearance->disconnect(this);
  m_appearance = appearance;
  if (appearance) connect(appearance, &Appearance::colorSchemeChanged, this, &Palette::setScheme);
  setScheme(appearance ? appearance->colorScheme() : ColorScheme::light);
}

QColor Palette::withOpacity(QColor color, double opacity) {
  color.setAlphaF(float(color.alphaF() * opacity));
  return color;
}

void Palette::setScheme(ColorScheme scheme) {
  if (scheme == m_scheme) return;
  m_scheme = scheme;
  m_colors = SystemColors::of(scheme);
  Q_EMIT changed();
}

}  // namespace lumagrid
