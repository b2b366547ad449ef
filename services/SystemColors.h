#pragma once

#include <QColor>

#include "Appearance.h"

namespace lumagrid {

// The colors that the system gives to a window, sRGB. Both content colors are see-through, and keep a contrast of at
// least 4.5:1 on the window background and on every backdrop of the window. A value; any thread.
struct SystemColors {
  QColor primaryContent;    // text and icons
  QColor secondaryContent;  // explanations
  QColor windowBackground;  // bars and plain buttons; opaque

  [[nodiscard]] static SystemColors of(ColorScheme colorScheme);
};

}  // namespace lumagrid
