#include <QBuffer>
#include <QImageReader>

#include "GifCanvas.h"
#include "ImageCodec.h"
#include "MemoryLimit.h"
#include "PictureFinishing.h"

namespace lumagrid {
namespace {

// Whether isPictureSizeCredible() holds for the format.
enum class Packing : unsigned char { limited, unlimited };

// One file through the reader of one named format: it never looks at the content to choose another.
DecodedImage readWith(const char* format, Packing packing, QByteArrayView file) {
  QByteArray bytes = QByteArray::fromRawData(file.data(), file.size());
  QBuffer buffer(&bytes);
  buffer.open(QIODevice::ReadOnly);
  QImageReader reader(&buffer, format);
  reader.setDecideFormatFromContent(false);
  reader.setAutoDetectImageFormat(false);
  const QSize size = reader.size();
  if (size.isValid() && !isPictureSizeSane(size.width(), size.height())) return {{}, ImageError::tooLarge};
  if (packing == Packing::limited && !isPictureSizeCredible(size.width(), size.height(), file.size())) {
    return {{}, ImageError::damaged};
  }
  QImage pixels;
  if (!reader.read(&pixels)) return {{}, ImageError::damaged};
  return {pixels, ImageError::none};
}

}  // namespace

bool isGif(QByteArrayView head) {
  return head.startsWith("GIF87a") || head.startsWith("GIF89a");
}

DecodedImage decodeGif(const CodecRequest& request) {
  DecodedImage canvas = readWith("gif", Packing::limited, request.bytes);
  if (canvas.error != ImageError::none) return canvas;
  fillGifBackground(request.bytes, canvas.pixels);
  RawPicture picture;
  picture.pixels = std::move(canvas.pixels);
  return finishedPicture(std::move(picture), request.bound);
}

bool isWebp(QByteArrayView head) {
  return head.startsWith("RIFF") && head.size() >= 12 && head.sliced(8, 4) == QByteArrayView("WEBP");
}

DecodedImage decodeWebp(const CodecRequest& request) {
  DecodedImage canvas = readWith("webp", Packing::unlimited, request.bytes);
  if (canvas.error != ImageError::none) return canvas;
  RawPicture picture;
  picture.pixels = std::move(canvas.pixels);
  picture.metadata = webpMetadata(request.bytes);
  return finishedPicture(std::move(picture), request.bound);
}

}  // namespace lumagrid
