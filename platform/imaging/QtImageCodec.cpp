#include <QBuffer>
#include <QColorSpace>
#include <QImageReader>
#include <cmath>

#include "BmpHeader.h"
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
  if (!reader.read(&picture.pixels)) return {{}, ImageError::damaged};
  picture.metadata = std::move(metadata);
  const QColorSpace colors = picture.pixels.colorSpace();
  // Without a profile, a PNG may give its gamma and primaries. The gamma 1/2.2 is how such files spell sRGB.
  const bool isSrgbBySpelling =
      colors.primaries() == QColorSpace::Primaries::SRgb &&
      (colors.transferFunction() == QColorSpace::TransferFunction::SRgb ||
       (colors.transferFunction() == QColorSpace::TransferFunction::Gamma && std::abs(colors.gamma() - 2.2F) < 0.01F));
  if (picture.metadata.iccProfile.isEmpty() && colors.isValid() && !isSrgbBySpelling) {
    picture.metadata.iccProfile = colors.iccProfile();
  }
  if (picture.pixels.isGrayscale() && picture.pixels.depth() <= 16) picture.model = ColorModel::gray;
  return finished(std::move(picture), request.bound);
}

}  // namespace

DecodedImage decodePng(const CodecRequest& request) {
  return decodeWith("png", Packing::unlimited, request, pngMetadata(request.bytes));
}

DecodedImage decodeGif(const CodecRequest& request) {
  return decodeWith("gif", Packing::limited, request, {});
}

DecodedImage decodeWebp(const CodecRequest& request) {
  return decodeWith("webp", Packing::unlimited, request, webpMetadata(request.bytes));
}

DecodedImage decodeBmp(const CodecRequest& request) {
  const PictureMetadata metadata = bmpMetadata(request.bytes);
  const QByteArray common = bmpWithCommonHeader(request.bytes);
  return decodeWith("bmp", Packing::limited, common.isEmpty() ? request : CodecRequest{common, request.bound},
                    metadata);
}

}  // namespace lumagrid
