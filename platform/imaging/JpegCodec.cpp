#include <turbojpeg.h>

#include <algorithm>
#include <array>
#include <memory>

#include "AreaScaling.h"
#include "BaselineJpegEighth.h"
#include "ImageCodec.h"
#include "JpegStrips.h"
#include "MemoryLimit.h"
#include "PictureFinishing.h"
#include "PixelBuffer.h"
#include "ProgressiveJpegScans.h"
#include "WorkerPool.h"

namespace lumagrid {
namespace {

struct DestroyHandle {
  void operator()(void* handle) const { tjDestroy(handle); }
};
using Handle = std::unique_ptr<void, DestroyHandle>;

constexpr tjscalingfactor kEighth = {1, 8};

QSize scaledBy(tjscalingfactor factor, QSize size) {
  return {TJSCALED(size.width(), factor), TJSCALED(size.height(), factor)};
}

// The smallest of the sizes that the inverse transform can give directly and that still covers `target`.
QSize smallestScaled(QSize stored, QSize target) {
  constexpr std::array<tjscalingfactor, 3> kFactors = {{kEighth, {2, 8}, {4, 8}}};  // the others have no fast transform
  for (const tjscalingfactor factor : kFactors) {
    const QSize scaled = scaledBy(factor, stored);
    if (scaled.width() >= target.width() && scaled.height() >= target.height()) return scaled;
  }
  return stored;
}

}  // namespace

DecodedImage decodeJpeg(const CodecRequest& request) {
  const JpegMetadata metadata = jpegMetadata(request.bytes);
  if (metadata.size.isEmpty()) return {{}, ImageError::damaged};
  if (!isPictureSizeSane(metadata.size.width(), metadata.size.height())) return {{}, ImageError::tooLarge};
  if (!isPictureSizeCredible(metadata.size.width(), metadata.size.height(), request.bytes.size())) {
    return {{}, ImageError::damaged};
  }

  const Handle handle(tjInitDecompress());
  if (!handle) return {{}, ImageError::tooLarge};
  const auto* bytes = reinterpret_cast<const unsigned char*>(request.bytes.data());
  const auto byteCount = static_cast<unsigned long>(request.bytes.size());
  // Its answer is not what counts (it refuses rare subsamplings that decode well): a size that differs from the one
  // read here would leave a part of the buffer unwritten.
  QSize size(0, 0);
  int subsampling = 0;
  int colorspace = 0;
  tjDecompressHeader3(handle.get(), bytes, byteCount, &size.rwidth(), &size.rheight(), &subsampling, &colorspace);
  if (size != metadata.size) return {{}, ImageError::damaged};

  const bool isInks = metadata.componentCount == 4;
  const QSize target = shownSize(size, metadata.pixelAspect, request.bound);
  const QSize scaled = request.bound > 0 ? smallestScaled(size, target) : size;
  QImage pixels;
  QByteArray needed;  // of a progressive file
  if (scaled == scaledBy(kEighth, size)) {
    pixels = baselineJpegAtEighth(request.bytes);
    if (pixels.isNull()) needed = progressiveJpegForEighth(request.bytes);
  } else if (scaled == size) {
    constexpr qsizetype kPixelsWorthAStrip = qsizetype{1} << 21;  // 10 ms; smaller pictures come many at once
    const auto strips = static_cast<int>(qsizetype{size.width()} * size.height() / kPixelsWorthAStrip);
    // Two for each core: one that is busy with something else then keeps nobody waiting.
    if (strips > 1) pixels = jpegInStrips(request.bytes, std::min(strips, 2 * coreCount()));
  }
  if (pixels.isNull()) {
    pixels = unsetPixels(scaled, QImage::Format_RGBX8888);
    if (pixels.isNull()) return {{}, ImageError::tooLarge};
    // TJPF_RGBA promises what RGBX8888 needs, 255 in the fourth byte. More than 500 scans are an attack on time.
    const auto decode = [&](QByteArrayView file) {
      return tjDecompress2(handle.get(), reinterpret_cast<const unsigned char*>(file.data()),
                           static_cast<unsigned long>(file.size()), pixels.bits(), scaled.width(),
                           static_cast<int>(pixels.bytesPerLine()), scaled.height(), isInks ? TJPF_CMYK : TJPF_RGBA,
                           TJFLAG_LIMITSCANS) == 0;
    };
    // A warning (data cut short, strange bytes) leaves a whole picture, gray where nothing came.
    if ((needed.isNull() || !decode(needed)) && !decode(request.bytes) &&
        tjGetErrorCode(handle.get()) != TJERR_WARNING) {
      return {{}, ImageError::damaged};
    }
  }

  RawPicture picture;
  picture.pixels = std::move(pixels);
  picture.model = metadata.componentCount == 1 ? ColorModel::gray
                  : !isInks                    ? ColorModel::rgb
                  : metadata.hasAdobeMarker    ? ColorModel::invertedCmyk
                                               : ColorModel::cmyk;
  picture.metadata = metadata;
  picture.storedSize = size;
  return finished(std::move(picture), request.bound);
}

}  // namespace lumagrid
