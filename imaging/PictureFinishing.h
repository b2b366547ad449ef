#pragma once

#include "ColorConversion.h"
#include "ImageDecoder.h"
#include "PictureMetadata.h"

namespace lumagrid {

// What a codec library gave, before it is a picture.
struct RawPicture {
  QImage pixels;  // any format for RGB and gray; 32 bits per pixel in any 32-bit format for CMYK
  ColorModel model = ColorModel::rgb;
  PictureMetadata metadata;
  QSize storedSize;  // of the whole picture in the file, when the codec scaled it down already
};

// The last steps that all formats share: colors, square pixels, bound (0: none), alpha, orientation. Each in the order
// that makes the least work and keeps alpha right. `damaged` for null pixels.
[[nodiscard]] DecodedImage finishedPicture(RawPicture picture, std::int64_t bound);

}  // namespace lumagrid
