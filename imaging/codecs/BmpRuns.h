#pragma once

#include <QImage>

#include "BmpFile.h"

namespace lumagrid {

// The pixels of a BMP file that is packed in runs, as far as the file goes. What the runs skip is transparent. Null
// when there is not one, and when memory is short.
[[nodiscard]] QImage bmpRuns(const BmpFile& file);

}  // namespace lumagrid
