#pragma once

#include <libheif/heif.h>

#include <QImage>

namespace lumagrid {

// The library takes gray pictures and alpha for full range, whatever they say: white comes out as 235. Mends the pixels
// that it decoded from `handle`, of four channels of 8 or 16 bits. Where they look as if they might need it, the image
// is decoded once more, as it is stored, to see whether they do.
void stretchLimitedRange(const heif_image_handle* handle, QImage& pixels);

}  // namespace lumagrid
