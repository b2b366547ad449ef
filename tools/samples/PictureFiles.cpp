#include "PictureFiles.h"

#include <libheif/heif_cxx.h>

#include <QBuffer>
#include <QImageWriter>
#include <QTransform>
#include <cstring>

namespace lumagrid::samples {

namespace {

heif::Image heifImage(const QImage& picture) {
  const bool alpha = picture.hasAlphaChannel();
  const QImage pixels = picture.convertToFormat(alpha ? QImage::Format_RGBA8888 : QImage::Format_RGB888);
  heif::Image image;
  image.create(pixels.width(), pixels.height(), heif_colorspace_RGB,
               alpha ? heif_chroma_interleaved_RGBA : heif_chroma_interleaved_RGB);
  image.add_plane(heif_channel_interleaved, pixels.width(), pixels.height(), 8);
  int stride = 0;  // bytes
  uint8_t* plane = image.get_plane(heif_channel_interleaved, &stride);
  for (int y = 0; y < pixels.height(); ++y) {
    std::memcpy(plane + static_cast<std::ptrdiff_t>(y) * stride, pixels.constScanLine(y),
                static_cast<std::size_t>(pixels.width()) * (alpha ? 4 : 3));
  }
  return image;
}

struct HeifWriter : heif::Context::Writer {
  QByteArray file;

  heif_error write(const void* data, std::size_t size) override {
    file.append(static_cast<const char*>(data), static_cast<qsizetype>(size));
    return {heif_error_Ok, heif_suberror_Unspecified, ""};
  }
};

}  // namespace

QByteArray qtFile(const QImage& upright, const QByteArray& format, const FileOptions& options) {
  constexpr int kQuality = 87;
  QBuffer buffer;
  QImageWriter writer(&buffer, format);
  if (format == "jpeg" || format == "webp") writer.setQuality(kQuality);  // elsewhere it is the effort of compression
  writer.setProgressiveScanWrite(options.isProgressive);
  switch (options.turn) {
    case 90:
      writer.setTransformation(QImageIOHandler::TransformationRotate90);
      break;
    case 180:
      writer.setTransformation(QImageIOHandler::TransformationRotate180);
      break;
    case 270:
      writer.setTransformation(QImageIOHandler::TransformationRotate270);
      break;
    default:
      break;
  }
  return writer.write(upright.transformed(QTransform().rotate(-options.turn))) ? buffer.data() : QByteArray();
}

QByteArray heifFile(const QImage& picture, HeifCodec codec) try {
  heif::Encoder encoder(codec == HeifCodec::Av1 ? heif_compression_AV1 : heif_compression_HEVC);
  encoder.set_lossy_quality(70);
  // The fastest that each encoder offers: the samples are made by the first build, while somebody waits.
  if (codec == HeifCodec::Av1) {
    encoder.set_integer_parameter("speed", 9);
  } else {
    encoder.set_string_parameter("preset", "ultrafast");
  }
  heif::Context context;
  context.encode_image(heifImage(picture), encoder);
  HeifWriter writer;
  context.write(writer);
  return writer.file;
} catch (const heif::Error&) {
  return {};
}

}  // namespace lumagrid::samples
