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
  if (!appearance) return follow(ColorScheme::light, Contrast::standard);
  const auto followAppearance = [this, appearance] { follow(appearance->colorScheme(), appearance->contrast()); };
  connect(appearance, &Appearance::colorSchemeChanged, this, followAppearance);
  connect(appearance, &Appearance::contrastChanged, this, followAppearance);
  followAppearance();
}

QColor Palette::withOpacity(QColor color, double opacity) {
  color.setAlphaF(float(color.alphaF() * opacity));
  return color;
}

void Palette::follow(ColorScheme scheme, Contrast contrast) {
  if (scheme == m_scheme && contrast == m_contrast) return;
  m_scheme = scheme;
  m_contrast = contrast;
  m_colors = SystemColors::of(scheme, contrast);
  Q_EMIT changed();
}

}  // namespace lumagrid
