// The conversion of colours by a profile of any content behind a sound header. The first byte chooses what the pixels
// are.
#include <cstdint>

#include "ColorConversion.h"
#include "IccProfile.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using lumagrid::ColorModel;
  constexpr ColorModel kModels[] = {ColorModel::rgb, ColorModel::gray, ColorModel::cmyk, ColorModel::lab};
  if (size == 0) return 0;
  const bool isDeep = (data[0] & 4) != 0 && data[0] % 4 == 0;
  QImage pixels(8, 8, isDeep ? QImage::Format_RGBX64 : QImage::Format_RGBX8888);
  pixels.fill(QColor(200, 60, 40));
  static const QByteArray header = lumagrid::iccProfileOf(lumagrid::CicpColors{12, 13}).left(128);
  const QByteArray profile =
      header + QByteArray(reinterpret_cast<const char*>(data + 1), static_cast<qsizetype>(size - 1));
  (void)lumagrid::convertedToSrgb(pixels, kModels[data[0] % 4], profile);
  return 0;
}
