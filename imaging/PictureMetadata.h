#pragma once

#include <QByteArray>
#include <QByteArrayView>

namespace lumagrid {

// Profiles above this size are left out: the largest in use, CMYK tables of high precision, have a few megabytes.
inline constexpr qsizetype kLargestProfileBytes = 16 << 20;

// What a file says about its pixels beside the pixels.
struct PictureMetadata {
  QByteArray iccProfile;   // empty when there is none, or it is incomplete
  int orientation = 1;     // as in EXIF, 1 to 8
  double pixelAspect = 1;  // height of a pixel divided by its width
};

// The aspect of pixels from the densities along both axes (pixels per any unit): 1 when one of them is missing, when
// they differ by less than a rounding of the usual units, or by more than any device had.
[[nodiscard]] double pixelAspectOf(double horizontalDensity, double verticalDensity);

// All of them take the whole file, read no further than its end, and leave out what is not well-formed. Any thread.
[[nodiscard]] PictureMetadata webpMetadata(QByteArrayView file);

}  // namespace lumagrid
