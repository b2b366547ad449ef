#include "ImageCodec.h"

#include <array>

namespace lumagrid {
namespace {

template <ImageCodec... Codecs>
constexpr std::array<ImageCodec, sizeof...(Codecs)> kInOrder = {Codecs...};

}  // namespace

std::optional<ImageFormat> sniffImageFormat(QByteArrayView head) {
#define LUMAGRID_FORMAT(identifier, names, extensions, mimeTypes, test, ...) \
  if (test(head)) return ImageFormat::identifier;
#include "PictureFormats.def"
  return std::nullopt;
}

std::span<const ImageCodec> codecsFor(ImageFormat format) {
  switch (format) {
#define LUMAGRID_FORMAT(identifier, names, extensions, mimeTypes, test, ...) \
  case ImageFormat::identifier:                                              \
    return kInOrder<__VA_ARGS__>;
#include "PictureFormats.def"
  }
  return {};
}

}  // namespace lumagrid
