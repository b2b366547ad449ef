#include "Appearance.h"

#include <utility>

#include "moc_Appearance.cpp"

namespace lumagrid {

void Appearance::setColorScheme(ColorScheme colorScheme) {
  if (m_colorScheme == colorScheme) return;
  m_colorScheme = colorScheme;
  Q_EMIT colorSchemeChanged(colorScheme);
}

void Appearance::setContrast(Contrast contrast) {
  if (std::exchange(m_contrast, contrast) != contrast) Q_EMIT contrastChanged();
}

void Appearance::setMotion(Motion motion) {
  if (std::exchange(m_motion, motion) != motion) Q_EMIT motionChanged();
}

}  // namespace lumagrid
