#include "ImageCodec.h"

#include <QtEndian>
#include <algorithm>
#include <array>

namespace lumagrid {
namespace {

// A file type box that names a still or moving picture format, as its main brand or among the compatible ones.
bool hasHeifBrand(QByteArrayView head) {
  constexpr std::array<QByteArrayView, 13> kBrands = {"heic", "heix", "hevc", "hevx", "heim", "heis", "hevm",
                                                      "hevs", "mif1", "mif2", "msf1", "avif", "avis"};
  if (head.size() < 16 || head.sliced(4, 4) != QByteArrayView("ftyp")) return false;
  const qsizetype boxEnd = std::min<qsizetype>(qFromBigEndian<quint32>(head.data()), head.size());
  for (qsizetype at = 8; at + 4 <= boxEnd; at += 4) {
    if (at == 12) continue;  // the minor version
    if (std::find(kBrands.begin(), kBrands.end(), head.sliced(at, 4)) != kBrands.end()) return true;
  }
  return false;
}

template <ImageCodec... Codecs>
constexpr std::array<ImageCodec, sizeof...(Codecs)> kInOrder = {Codecs...};

}  // namespace

std::optional<ImageFormat> sniffImageFormat(QByteArrayView head) {
  const auto startsWith = [head](QByteArrayView magic) { return head.startsWith(magic); };
  if (startsWith("\xff\xd8")) return ImageFormat::jpeg;  // junk may follow
  if (startsWith("\x89PNG\r\n\x1a\n")) return ImageFormat::png;
  if (startsWith("GIF87a") || startsWith("GIF89a")) return ImageFormat::gif;
  if (startsWith("RIFF") && head.size() >= 12 && head.sliced(8, 4) == QByteArrayView("WEBP")) return ImageFormat::webp;
  if (startsWith(QByteArrayView("II*\0", 4)) || startsWith(QByteArrayView("MM\0*", 4)) ||
      startsWith(QByteArrayView("II+\0", 4)) || startsWith(QByteArrayView("MM\0+", 4))) {
    return ImageFormat::tiff;
  }
  // "BM" alone is too little: the size of the header that follows (12 to 124 bytes) decides.
  if ((startsWith("BM") || startsWith("BA")) && head.size() >= 32) {
    const auto headerSize = qFromLittleEndian<quint32>(head.data() + (startsWith("BA") ? 28 : 14));
    if (headerSize >= 12 && headerSize <= 124) return ImageFormat::bmp;
  }
  if (hasHeifBrand(head)) return ImageFormat::heif;
  return std::nullopt;
}

std::span<const ImageCodec> codecsFor(ImageFormat format) {
  switch (format) {
    case ImageFormat::jpeg:
      return kInOrder<decodeJpeg>;
    case ImageFormat::png:
      return kInOrder<decodePng>;
    case ImageFormat::gif:
      return kInOrder<decodeGif>;
    case ImageFormat::webp:
      return kInOrder<decodeWebp>;
    case ImageFormat::bmp:
      return kInOrder<decodeBmp>;
    case ImageFormat::tiff:
      return kInOrder<decodeTiff>;
    case ImageFormat::heif:
      return kInOrder<decodeHeif>;
  }
  return {};
}

}  // namespace lumagrid
