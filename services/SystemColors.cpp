#include "SystemColors.h"

namespace lumagrid {

namespace {

struct Opacities {
  double primary;
  double secondary;
};
constexpr Opacities kStandard{0.85, 0.6};
constexpr Opacities kHigh{1, 0.85};

QColor withOpacity(const QColor& color, double opacity) {
  QColor result = color;
  result.setAlphaF(float(opacity));
  return result;
}

}  // namespace

SystemColors SystemColors::of(ColorScheme colorScheme, Contrast contrast) {
  const bool high = contrast == Contrast::high;
  const Opacities& opacities = high ? kHigh : kStandard;
  const bool dark = colorScheme == ColorScheme::dark;
  const QColor content = dark ? QColor(Qt::white) : QColor(Qt::black);
  return {
      .primaryContent = withOpacity(content, opacities.primary),
      .secondaryContent = withOpacity(content, opacities.secondary),
      // Grays as warm as the backdrop, so that a bar reads as a part of the window.
      .windowBackground = high   ? (dark ? QColor(Qt::black) : QColor(Qt::white))
                          : dark ? QColor(50, 46, 42)
                                 : QColor(246, 243, 238),
  };
}

}  // namespace lumagrid
