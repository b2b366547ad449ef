#include "SystemColors.h"

namespace lumagrid {

namespace {

constexpr double kPrimaryOpacity = 0.85;
constexpr double kSecondaryOpacity = 0.6;

QColor withOpacity(const QColor& color, double opacity) {
  QColor result = color;
  result.setAlphaF(float(opacity));
  return result;
}

}  // namespace

SystemColors SystemColors::of(ColorScheme colorScheme) {
  const bool dark = colorScheme == ColorScheme::dark;
  const QColor content = dark ? QColor(Qt::white) : QColor(Qt::black);
  return {
      .primaryContent = withOpacity(content, kPrimaryOpacity),
      .secondaryContent = withOpacity(content, kSecondaryOpacity),
      // Grays as warm as the backdrop, so that a bar reads as a part of the window.
      .windowBackground = dark ? QColor(50, 46, 42) : QColor(246, 243, 238),
  };
}

}  // namespace lumagrid
