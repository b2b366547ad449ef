#pragma once

#include <QColor>

#include "Appearance.h"

namespace lumagrid {

// The neutral colors of a window, sRGB, one set for each color scheme and contrast. They are the program's own:
// desktops say whether they are light or dark, and seldom more. Both content colors are see-through, and keep a
// contrast of at least 4.5:1 on the window background and on every backdrop of the window. A value; any thread.
struct SystemColors {
  QColor primaryContent;    // text and icons
  QColor secondaryContent;  // explanations
  QColor windowBackground;  // bars and plain buttons; opaque

  [[nodiscard]] static SystemColors of(ColorScheme colorScheme, Contrast contrast = Contrast::standard);
};

}  // namespace lumagrid
