// What is read beside the pixels: the chunks of WebP, and orientations.
#include <cstdint>
#include <cstdlib>

#include "ExifOrientation.h"
#include "PictureMetadata.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const QByteArrayView bytes(data, static_cast<qsizetype>(size));
  const auto isSane = [](int orientation) { return orientation >= 1 && orientation <= 8; };
  if (!isSane(lumagrid::webpMetadata(bytes).orientation)) std::abort();
  if (!isSane(lumagrid::exifOrientation(bytes)) || !isSane(lumagrid::exifOrientationOfBlock(bytes))) std::abort();
  return 0;
}
