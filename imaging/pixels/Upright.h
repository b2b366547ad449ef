#pragma once

#include <QImage>

namespace lumagrid {

// Turns and mirrors a picture of 32-bit pixels as its EXIF orientation (1 to 8) asks; anything else leaves it as it is.
// Takes the pixels over: mirroring happens in place, turning takes one more buffer. Null only when memory is short.
[[nodiscard]] QImage upright(QImage pixels, int orientation);

}  // namespace lumagrid
