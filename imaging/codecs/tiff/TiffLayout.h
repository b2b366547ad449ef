#pragma once

#include <tiffio.h>

#include <QSize>
#include <array>
#include <vector>

#include "ColorConversion.h"
#include "TiffSamples.h"

namespace lumagrid {

enum class TiffAlpha : unsigned char { none, associated, unassociated };

// How the samples of a file stand, and what they mean.
struct TiffLayout {
  QSize size;
  SampleType type;
  int samplesPerPixel = 1;
  int colorCount = 1;  // of the samples; alpha follows them
  TiffAlpha alpha = TiffAlpha::none;
  ColorModel model = ColorModel::rgb;
  std::vector<std::array<uchar, 3>> palette;  // of all indices, where the only colour sample is one
  bool hasSignedLab = false;                  // a and b count from 0 instead of -128
  bool isInverted = false;
  bool isPlanar = false;
  // Whether samples can be read as they are; the others (bits, most palettes, YCbCr, fax, …) are the library's to turn
  // into RGBA.
  bool isDirect = false;
};

[[nodiscard]] TiffLayout tiffLayout(TIFF* tiff, QSize size);

template <typename Number>
[[nodiscard]] Number tiffField(TIFF* tiff, ttag_t tag, Number fallback) {
  Number value{};
  return TIFFGetFieldDefaulted(tiff, tag, &value) == 1 ? value : fallback;
}

}  // namespace lumagrid
