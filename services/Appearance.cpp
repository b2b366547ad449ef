#include "Appearance.h"

#include "moc_Appearance.cpp"

namespace lumagrid {

void Appearance::setColorScheme(ColorScheme colorScheme) {
  if (m_colorScheme == colorScheme) return;
  m_colorScheme = colorScheme;
  Q_EMIT colorSchemeChanged(colorScheme);
}

}  // namespace lumagrid
