#include "PictureFinishing.h"

#include <QColorSpace>
#include <algorithm>

#include "MemoryLimit.h"
#include "ShownSize.h"
#include "Upright.h"

namespace lumagrid {
namespace {

// Four channels, alpha apart from the colors, and no more bits than the conversion of colors can use.
QImage::Format workFormat(const QImage& pixels) {
  const bool isDeep = pixels.depth() == 64 || pixels.format() == QImage::Format_RGBX16FPx4 ||
                      pixels.format() == QImage::Format_RGBX32FPx4 || pixels.format() == QImage::Format_RGBA32FPx4;
  if (pixels.hasAlphaChannel()) return isDeep ? QImage::Format_RGBA64 : QImage::Format_RGBA8888;
  return isDeep ? QImage::Format_RGBX64 : QImage::Format_RGBX8888;
}

bool isOpaque(const QImage& pixels) {
  for (int y = 0; y < pixels.height(); ++y) {
    const uchar* row = pixels.constScanLine(y);
    for (int x = 0; x < pixels.width(); ++x) {
      if (row[x * 4 + 3] != 255) return false;
    }
  }
  return true;
}

}  // namespace

double pixelAspectOf(double horizontalDensity, double verticalDensity) {
  constexpr double kTolerance = 0.01;  // 72 dpi and 2835 per metre are the same density
  constexpr double kLargest = 8;
  if (!(horizontalDensity > 0) || !(verticalDensity > 0)) return 1;
  const double aspect = horizontalDensity / verticalDensity;
  const double stretch = std::max(aspect, 1 / aspect);
  return stretch < 1 + kTolerance || stretch > kLargest ? 1 : aspect;
}

DecodedImage finishedPicture(RawPicture picture, std::int64_t bound) {
  QImage pixels = std::move(picture.pixels);
  if (pixels.isNull()) return {{}, ImageError::damaged};
  const PictureMetadata& metadata = picture.metadata;
  const QSize stored = picture.storedSize.isEmpty() ? pixels.size() : picture.storedSize;
  QSize target = shownSize(stored, metadata.pixelAspect, bound);
  if (!isPictureSizeSane(target.width(), target.height())) target = shownSize(stored, 1, bound);

  // Every pixel is the mean of the area that it covers, in the same format; alpha must be premultiplied.
  const auto scale = [&] { pixels = pixels.scaled(target, Qt::IgnoreAspectRatio, Qt::SmoothTransformation); };
  const auto toSrgb = [&] { pixels = convertedToSrgb(std::move(pixels), picture.model, metadata.iccProfile); };
  const bool isPlain = picture.model == ColorModel::rgb || picture.model == ColorModel::gray;
  if (isPlain && metadata.iccProfile.isEmpty() && pixels.format() == QImage::Format_RGBA8888_Premultiplied) {
    scale();
  } else {
    const QImage::Format format = workFormat(pixels);
    if (isPlain) pixels = std::move(pixels).convertToFormat(format);
    const bool isScalableFirst = isPlain && pixels.format() == QImage::Format_RGBX8888;
    if (isScalableFirst) scale();
    toSrgb();
    if (pixels.hasAlphaChannel()) pixels = std::move(pixels).convertToFormat(QImage::Format_RGBA8888_Premultiplied);
    if (!isScalableFirst) scale();
  }
  if (pixels.hasAlphaChannel() && isOpaque(pixels)) pixels.reinterpretAsFormat(QImage::Format_RGBX8888);
  pixels = upright(std::move(pixels), metadata.orientation);
  if (pixels.isNull()) return {{}, ImageError::tooLarge};
  pixels.setDevicePixelRatio(1);
  pixels.setColorSpace({});
  return {pixels, ImageError::none};
}

}  // namespace lumagrid
