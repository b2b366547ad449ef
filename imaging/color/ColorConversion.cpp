#include "ColorConversion.h"

#include <lcms2.h>

#include <algorithm>
#include <array>
#include <cstdlib>
#include <functional>
#include <memory>
#include <vector>

#include "MatrixConversion.h"
#include "MemoryCache.h"
#include "PixelBuffer.h"
#include "ProfileCost.h"
#include "WorkerPool.h"

namespace lumagrid {
namespace {

struct CloseProfile {
  void operator()(void* profile) const { cmsCloseProfile(profile); }
};
struct DeleteTransform {
  void operator()(void* transform) const { cmsDeleteTransform(transform); }
};
using Profile = std::unique_ptr<void, CloseProfile>;
using Transform = std::unique_ptr<void, DeleteTransform>;

enum class Depth : unsigned char { bits8, bits16 };

struct Conversion {
  Transform transform;                       // null: the pixels stay as they are
  std::unique_ptr<MatrixConversion> matrix;  // does the same for 8 bits in less time; null: it cannot
  ColorModel model = ColorModel::rgb;
  std::array<std::uint32_t, 256> grays{};  // the pixel of each gray, for gray profiles
};

bool isCmyk(ColorModel model) {
  return model == ColorModel::cmyk || model == ColorModel::invertedCmyk;
}

cmsUInt32Number sourceType(ColorModel model, Depth depth) {
  switch (model) {
    case ColorModel::gray:
      return TYPE_GRAY_8;
    case ColorModel::rgb:
      return depth == Depth::bits8 ? TYPE_RGBA_8 : TYPE_RGBA_16;
    case ColorModel::cmyk:
      return TYPE_CMYK_8;
    case ColorModel::invertedCmyk:
      return TYPE_CMYK_8_REV;
    case ColorModel::lab:
      return COLORSPACE_SH(PT_Lab) | CHANNELS_SH(3) | EXTRA_SH(1) | BYTES_SH(depth == Depth::bits8 ? 1 : 2);
  }
  return 0;
}

using Colors = std::vector<std::array<uchar, 4>>;

// A coarse lattice of colours, and all grays.
Colors sampleColors() {
  Colors colors;
  constexpr int kStep = 51;
  for (int red = 0; red < 256; red += kStep) {
    for (int green = 0; green < 256; green += kStep) {
      for (int blue = 0; blue < 256; blue += kStep) {
        colors.push_back({static_cast<uchar>(red), static_cast<uchar>(green), static_cast<uchar>(blue), 255});
      }
    }
  }
  for (int gray = 0; gray < 256; ++gray) {
    const auto value = static_cast<uchar>(gray);
    colors.push_back({value, value, value, 255});
  }
  return colors;
}

Colors transformed(cmsHTRANSFORM transform, const Colors& colors) {
  Colors result = colors;
  cmsDoTransform(transform, colors.data(), result.data(), static_cast<cmsUInt32Number>(colors.size()));
  return result;
}

// True when no colour differs by more than a rounding.
bool isSame(const Colors& some, const Colors& others) {
  return std::equal(some.begin(), some.end(), others.begin(), [](const auto& one, const auto& other) {
    return std::equal(one.begin(), one.begin() + 3, other.begin(),
                      [](int value, int otherValue) { return std::abs(value - otherValue) <= 1; });
  });
}

// What has tables beside its matrix, or curves with a twist, is left to the general way.
std::unique_ptr<MatrixConversion> makeMatrix(cmsHPROFILE profile, const Colors& colors, const Colors& wanted) {
  auto matrix = MatrixConversion::of(profile);
  if (!matrix) return nullptr;
  Colors found = colors;
  matrix->convert(found.front().data(), static_cast<qsizetype>(found.size()));
  return isSame(found, wanted) ? std::move(matrix) : nullptr;
}

Transform makeTransform(cmsHPROFILE profile, ColorModel model, Depth depth) {
  const Profile srgb(cmsCreate_sRGBProfile());
  cmsUInt32Number flags = cmsFLAGS_NOCACHE;  // the cache of one pixel is shared by the users of a transform
  if (model == ColorModel::rgb || model == ColorModel::lab) flags |= cmsFLAGS_COPY_ALPHA;
  return Transform(
      cmsCreateTransform(profile, sourceType(model, depth), srgb.get(), TYPE_RGBA_8, INTENT_PERCEPTUAL, flags));
}

std::shared_ptr<const Conversion> makeConversion(const QByteArray& iccProfile, ColorModel model, Depth depth) {
  auto conversion = std::make_shared<Conversion>();
  if (!isProfileAffordable(iccProfile)) return conversion;
  const Profile profile(cmsOpenProfileFromMem(iccProfile.constData(), static_cast<cmsUInt32Number>(iccProfile.size())));
  if (!profile) return conversion;
  const cmsColorSpaceSignature space = cmsGetColorSpace(profile.get());
  // A gray picture may carry an RGB profile: its values stand in all three channels.
  if (model == ColorModel::gray && space == cmsSigRgbData) model = ColorModel::rgb;
  conversion->model = model;
  const cmsColorSpaceSignature wanted = isCmyk(model)               ? cmsSigCmykData
                                        : model == ColorModel::gray ? cmsSigGrayData
                                        : model == ColorModel::lab  ? cmsSigLabData
                                                                    : cmsSigRgbData;
  if (space != wanted) return conversion;
  conversion->transform = makeTransform(profile.get(), model, depth);
  if (!conversion->transform) return conversion;
  if (model == ColorModel::rgb) {
    const Transform sampled = depth == Depth::bits16 ? makeTransform(profile.get(), model, Depth::bits8) : nullptr;
    const Colors colors = sampleColors();
    const Colors wanted = transformed(sampled ? sampled.get() : conversion->transform.get(), colors);
    if (isSame(colors, wanted)) {
      conversion->transform.reset();
    } else if (depth == Depth::bits8) {
      conversion->matrix = makeMatrix(profile.get(), colors, wanted);
    }
  } else if (model == ColorModel::gray) {
    std::array<uchar, 256> values{};
    for (size_t gray = 0; gray < values.size(); ++gray) values[gray] = static_cast<uchar>(gray);
    cmsDoTransform(conversion->transform.get(), values.data(), conversion->grays.data(), values.size());
  }
  return conversion;
}

// Transforms are costly to make (up to 20 ms for tables), and a folder's photos share a few profiles.
std::shared_ptr<const Conversion> conversionFor(const QByteArray& iccProfile, ColorModel model, Depth depth) {
  struct HashOfBytes {
    size_t operator()(const QByteArray& bytes) const { return qHash(bytes); }
  };
  static MemoryCache<QByteArray, std::shared_ptr<const Conversion>, HashOfBytes> cache(size_t{32} << 20);
  constexpr size_t kTablesOfOneTransform = size_t{1} << 20;
  QByteArray key = iccProfile;
  key += static_cast<char>(model);
  key += static_cast<char>(depth);
  if (auto known = cache.object(key)) return *known;
  auto made = makeConversion(iccProfile, model, depth);
  cache.setObject(key, made, static_cast<size_t>(key.size()) + kTablesOfOneTransform);
  return made;
}

// Each ink takes its share of the light that the black leaves.
void filterLight(uchar* pixel, int count, ColorModel model) {
  const int invert = model == ColorModel::cmyk ? 255 : 0;
  for (uchar* const end = pixel + qsizetype{count} * 4; pixel != end; pixel += 4) {
    const int light = pixel[3] ^ invert;
    for (int channel = 0; channel < 3; ++channel) {
      pixel[channel] = static_cast<uchar>(((pixel[channel] ^ invert) * light + 127) / 255);
    }
    pixel[3] = 255;
  }
}

void setOpaque(uchar* pixel, int count) {
  for (uchar* const end = pixel + qsizetype{count} * 4; pixel != end; pixel += 4) pixel[3] = 255;
}

void convertRow(const Conversion& conversion, ColorModel model, uchar* row, int count) {
  cmsHTRANSFORM transform = conversion.transform.get();
  if (isCmyk(model)) {
    if (!transform) return filterLight(row, count, model);
    cmsDoTransform(transform, row, row, static_cast<cmsUInt32Number>(count));
    setOpaque(row, count);
  } else if (conversion.model == ColorModel::gray) {
    for (uchar* const end = row + qsizetype{count} * 4; row != end; row += 4) {
      std::copy_n(reinterpret_cast<const uchar*>(&conversion.grays[*row]), 3, row);
    }
  } else if (conversion.matrix) {
    conversion.matrix->convert(row, count);
  } else {
    cmsDoTransform(transform, row, row, static_cast<cmsUInt32Number>(count));
  }
}

// On several threads when there is enough to be worth it.
void convertRows(const Conversion& conversion, ColorModel model, QImage& pixels) {
  constexpr qsizetype kPixelsWorthAThread = qsizetype{1} << 21;  // 4 ms; smaller pictures come many at once
  const qsizetype area = qsizetype{pixels.width()} * pixels.height();
  const int bands = std::max(static_cast<int>(area / kPixelsWorthAThread), 1);
  const int rowsOfBand = (pixels.height() + bands - 1) / bands;
  uchar* const first = pixels.bits();
  parallelFor(bands, [&, stride = pixels.bytesPerLine()](int band) {
    const int end = std::min((band + 1) * rowsOfBand, pixels.height());
    for (int y = band * rowsOfBand; y < end; ++y) convertRow(conversion, model, first + y * stride, pixels.width());
  });
}

}  // namespace

QImage convertedToSrgb(QImage pixels, ColorModel model, const QByteArray& iccProfile) {
  const Depth depth = pixels.depth() == 64 ? Depth::bits16 : Depth::bits8;
  const QImage::Format result = pixels.hasAlphaChannel() ? QImage::Format_RGBA8888 : QImage::Format_RGBX8888;
  const auto conversion =
      iccProfile.isEmpty() ? std::make_shared<const Conversion>() : conversionFor(iccProfile, model, depth);
  if (!conversion->transform && !isCmyk(model)) return std::move(pixels).convertToFormat(result);
  if (depth == Depth::bits16 && conversion->model != ColorModel::gray && !isCmyk(model)) {
    QImage converted = unsetPixels(pixels.size(), result);
    for (int y = 0; y < converted.height(); ++y) {
      cmsDoTransform(conversion->transform.get(), pixels.constScanLine(y), converted.scanLine(y),
                     static_cast<cmsUInt32Number>(pixels.width()));
    }
    return converted;
  }
  pixels = std::move(pixels).convertToFormat(result);
  convertRows(*conversion, model, pixels);
  return pixels;
}

QByteArray labProfile() {
  const Profile profile(cmsCreateLab4Profile(nullptr));
  cmsUInt32Number size = 0;
  if (!profile || !cmsSaveProfileToMem(profile.get(), nullptr, &size)) return {};
  QByteArray bytes(static_cast<qsizetype>(size), Qt::Uninitialized);
  return cmsSaveProfileToMem(profile.get(), bytes.data(), &size) ? bytes : QByteArray();
}

}  // namespace lumagrid
