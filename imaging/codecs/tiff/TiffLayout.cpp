#include "TiffLayout.h"

#include <algorithm>

namespace lumagrid {
namespace {

TiffAlpha alphaOf(TIFF* tiff) {
  std::uint16_t count = 0;
  std::uint16_t* kinds = nullptr;
  if (TIFFGetFieldDefaulted(tiff, TIFFTAG_EXTRASAMPLES, &count, &kinds) != 1 || count == 0) return TiffAlpha::none;
  if (kinds[0] == EXTRASAMPLE_ASSOCALPHA) return TiffAlpha::associated;
  return kinds[0] == EXTRASAMPLE_UNASSALPHA ? TiffAlpha::unassociated : TiffAlpha::none;
}

ColorModel modelOf(std::uint16_t photometric) {
  switch (photometric) {
    case PHOTOMETRIC_MINISWHITE:
    case PHOTOMETRIC_MINISBLACK:
      return ColorModel::gray;
    case PHOTOMETRIC_SEPARATED:
      return ColorModel::cmyk;
    case PHOTOMETRIC_CIELAB:
    case PHOTOMETRIC_ICCLAB:
      return ColorModel::lab;
    default:
      return ColorModel::rgb;
  }
}

// The colours of 16 bits; some writers give them 8.
std::vector<std::array<uchar, 3>> paletteOf(TIFF* tiff, int bits) {
  std::uint16_t* channels[3] = {};
  if (TIFFGetField(tiff, TIFFTAG_COLORMAP, &channels[0], &channels[1], &channels[2]) != 1) return {};
  std::vector<std::array<uchar, 3>> palette(size_t{1} << bits);
  const bool isNarrow = std::all_of(std::begin(channels), std::end(channels), [&palette](const std::uint16_t* channel) {
    return std::all_of(channel, channel + palette.size(), [](std::uint16_t value) { return value < 256; });
  });
  for (size_t index = 0; index < palette.size(); ++index) {
    for (size_t channel = 0; channel < 3; ++channel) {
      palette[index][channel] = static_cast<uchar>(channels[channel][index] >> (isNarrow ? 0 : 8));
    }
  }
  return palette;
}

bool isDirect(const TiffLayout& layout, std::uint16_t photometric) {
  if (!isSupported(layout.type) || layout.samplesPerPixel < layout.colorCount) return false;
  switch (photometric) {
    case PHOTOMETRIC_MINISWHITE:
    case PHOTOMETRIC_MINISBLACK:
    case PHOTOMETRIC_RGB:
    case PHOTOMETRIC_SEPARATED:
      return true;
    case PHOTOMETRIC_CIELAB:
    case PHOTOMETRIC_ICCLAB:
      return layout.type.kind == SampleKind::unsignedInteger && layout.type.bits <= 16;
    case PHOTOMETRIC_PALETTE:
      return !layout.palette.empty() && !layout.isPlanar;
    default:
      return false;
  }
}

}  // namespace

TiffLayout tiffLayout(TIFF* tiff, QSize size) {
  TiffLayout layout;
  layout.size = size;
  layout.type.bits = tiffField<std::uint16_t>(tiff, TIFFTAG_BITSPERSAMPLE, 1);
  const auto format = tiffField<std::uint16_t>(tiff, TIFFTAG_SAMPLEFORMAT, SAMPLEFORMAT_UINT);
  layout.samplesPerPixel = tiffField<std::uint16_t>(tiff, TIFFTAG_SAMPLESPERPIXEL, 1);
  layout.isPlanar = tiffField<std::uint16_t>(tiff, TIFFTAG_PLANARCONFIG, PLANARCONFIG_CONTIG) == PLANARCONFIG_SEPARATE;
  const auto photometric = tiffField<std::uint16_t>(tiff, TIFFTAG_PHOTOMETRIC, PHOTOMETRIC_MINISBLACK);
  layout.isInverted = photometric == PHOTOMETRIC_MINISWHITE;
  layout.hasSignedLab = photometric == PHOTOMETRIC_CIELAB;
  layout.model = modelOf(photometric);
  const bool isFixedKind = layout.model == ColorModel::lab || photometric == PHOTOMETRIC_PALETTE;
  if (format == SAMPLEFORMAT_INT && !isFixedKind) layout.type.kind = SampleKind::signedInteger;
  if (format == SAMPLEFORMAT_IEEEFP) layout.type.kind = SampleKind::floatingPoint;
  const bool isSingle = layout.model == ColorModel::gray || photometric == PHOTOMETRIC_PALETTE;
  layout.colorCount = isSingle ? 1 : layout.model == ColorModel::cmyk ? 4 : 3;
  if (layout.model != ColorModel::cmyk && layout.samplesPerPixel > layout.colorCount) layout.alpha = alphaOf(tiff);
  const bool isWhole = layout.type.kind == SampleKind::unsignedInteger;
  if (photometric == PHOTOMETRIC_PALETTE && isWhole && (layout.type.bits == 8 || layout.type.bits == 16)) {
    layout.palette = paletteOf(tiff, layout.type.bits);
    if (layout.alpha != TiffAlpha::none) layout.alpha = TiffAlpha::unassociated;  // no index can be multiplied
  }
  layout.isDirect = isDirect(layout, photometric);
  return layout;
}

}  // namespace lumagrid
