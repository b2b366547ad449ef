#include <QBuffer>
#include <QImageReader>

#include "ImageCodec.h"
#include "MemoryLimit.h"
#include "PictureFinishing.h"

namespace lumagrid {
namespace {

// Whether isPictureSizeCredible() holds for the format.
enum class Packing : unsigned char { limited, unlimited };

// One file through the reader of one named format: it never looks at the content to choose another.
DecodedImage decodeWith(const char* format, Packing packing, const CodecRequest& request, PictureMetadata metadata) {
  QByteArray bytes = QByteArray::fromRawData(request.bytes.data(), request.bytes.size());
  QBuffer buffer(&bytes);
  buffer.open(QIODevice::ReadOnly);
  QImageReader reader(&buffer, format);
  reader.setDecideFormatFromContent(false);
  reader.setAutoDetectImageFormat(false);
  const QSize size = reader.size();
  if (size.isValid() && !isPictureSizeSane(size.width(), size.height())) return {{}, ImageError::tooLarge};

  if (packing == Packing::limited && !isPictureSizeCredible(size.width(), size.height(), request.bytes.size())) {
    return {{}, ImageError::damaged};
  }
  RawPicture picture;
  if (reader.format() == "bmp" && reader.imageFormat() != QImage::Format_Invalid) {
    // The toolkit's reader writes into a picture that fits, and leaves the pixels that a file cut short does not have.
    picture.pixels = QImage(size, reader.imageFormat());
    picture.pixels.fill(0);
  }
  if (!reader.read(&picture.pixels)) return {{}, ImageError::damaged};
  picture.metadata = std::move(metadata);
  if (picture.pixels.isGrayscale() && picture.pixels.depth() <= 16) picture.model = ColorModel::gray;
  return finished(std::move(picture), request.bound);
}

}  // namespace

DecodedImage decodeGif(const CodecRequest& request) {
  return decodeWith("gif", Packing::limited, request, {});
}

DecodedImage decodeWebp(const CodecRequest& request) {
  return decodeWith("webp", Packing::unlimited, request, webpMetadata(request.bytes));
}

}  // namespace lumagrid
