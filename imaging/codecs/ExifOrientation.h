#pragma once

#include <QByteArrayView>

namespace lumagrid {

// The orientation (1 to 8) that EXIF data gives in its first directory; 1 when it gives none or an impossible one.
// `tiff` is the data from its byte-order mark on. Never reads outside of it. Layout: TIFF 6.0, tag 274.
[[nodiscard]] int exifOrientation(QByteArrayView tiff);

// The same for data that may begin with the "Exif\0\0" that JPEG files put before it.
[[nodiscard]] int exifOrientationOfBlock(QByteArrayView block);

}  // namespace lumagrid
