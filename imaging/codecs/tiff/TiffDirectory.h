#pragma once

#include <QByteArrayView>

#include "ImageDecoder.h"

namespace lumagrid {

// Looks at the first directory of a TIFF or BigTIFF file before the library does, which takes memory for all that the
// directory names before it looks at any of it. Refuses sizes, strips, tiles, samples and values that the file cannot
// justify: `tooLarge` for the size of the picture, `damaged` for everything else. Any thread.
[[nodiscard]] ImageError checkTiffDirectory(QByteArrayView file);

}  // namespace lumagrid
