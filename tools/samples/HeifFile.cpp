#include <libheif/heif.h>

#include <cstring>
#include <memory>

#include "PictureFiles.h"

namespace lumagrid::samples {

namespace {

template <auto release>
struct Releaser {
  template <typename T>
  void operator()(T* object) const {
    release(object);
  }
};

using Context = std::unique_ptr<heif_context, Releaser<heif_context_free>>;
using Encoder = std::unique_ptr<heif_encoder, Releaser<heif_encoder_release>>;
using Image = std::unique_ptr<heif_image, Releaser<heif_image_release>>;

heif_error appendBytes(heif_context* /*context*/, const void* data, std::size_t size, void* file) {
  static_cast<QByteArray*>(file)->append(static_cast<const char*>(data), static_cast<qsizetype>(size));
  return {heif_error_Ok, heif_suberror_Unspecified, ""};
}

Image heifImage(const QImage& picture) {
  const bool alpha = picture.hasAlphaChannel();
  const QImage pixels = picture.convertToFormat(alpha ? QImage::Format_RGBA8888 : QImage::Format_RGB888);
  heif_image* made = nullptr;
  heif_image_create(pixels.width(), pixels.height(), heif_colorspace_RGB,
                    alpha ? heif_chroma_interleaved_RGBA : heif_chroma_interleaved_RGB, &made);
  Image image(made);
  if (!image ||
      heif_image_add_plane(made, heif_channel_interleaved, pixels.width(), pixels.height(), 8).code != heif_error_Ok) {
    return nullptr;
  }
  int stride = 0;  // bytes
  uint8_t* plane = heif_image_get_plane(made, heif_channel_interleaved, &stride);
  for (int y = 0; y < pixels.height(); ++y) {
    std::memcpy(plane + static_cast<std::ptrdiff_t>(y) * stride, pixels.constScanLine(y),
                static_cast<std::size_t>(pixels.width()) * (alpha ? 4 : 3));
  }
  return image;
}

}  // namespace

QByteArray heifFile(const QImage& picture, HeifCodec codec) {
  const Context context(heif_context_alloc());
  heif_encoder* found = nullptr;
  heif_context_get_encoder_for_format(context.get(),
                                      codec == HeifCodec::Av1 ? heif_compression_AV1 : heif_compression_HEVC, &found);
  const Encoder encoder(found);
  const Image image = heifImage(picture);
  if (!encoder || !image) {
    return {};
  }
  heif_encoder_set_lossy_quality(found, 70);
  // The fastest that each encoder offers: the samples are made by the first build, while somebody waits.
  if (codec == HeifCodec::Av1) {
    heif_encoder_set_parameter_integer(found, "speed", 9);
  } else {
    heif_encoder_set_parameter_string(found, "preset", "ultrafast");
  }
  if (heif_context_encode_image(context.get(), image.get(), found, nullptr, nullptr).code != heif_error_Ok) {
    return {};
  }
  QByteArray file;
  heif_writer writer{1, appendBytes};
  const heif_error error = heif_context_write(context.get(), &writer, &file);
  return error.code == heif_error_Ok ? file : QByteArray();
}

}  // namespace lumagrid::samples
