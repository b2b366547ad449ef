#include <QBuffer>
#include <QImageReader>
#include <QtEndian>
#include <algorithm>

#include "GifCanvas.h"
#include "ImageCodec.h"
#include "MemoryLimit.h"
#include "PictureFinishing.h"
#include "PictureMemory.h"
#include "WebpFile.h"

namespace lumagrid {
namespace {

// One file through the reader of one named format: it never looks at the content to choose another. The canvas is
// checked; it takes `buffers` times its pixels, the finished picture included.
DecodedImage readWith(const char* format, int buffers, QByteArrayView file) {
  QByteArray bytes = QByteArray::fromRawData(file.data(), file.size());
  QBuffer buffer(&bytes);
  buffer.open(QIODevice::ReadOnly);
  QImageReader reader(&buffer, format);
  reader.setDecideFormatFromContent(false);
  reader.setAutoDetectImageFormat(false);
  const QSize size = reader.size();
  if (size.isValid()) {
    constexpr std::int64_t kPixelBytes = 4;
    if (!isPictureSizeSane(size.width(), size.height())) return {{}, ImageError::tooLarge};
    const std::int64_t pixels = std::int64_t{size.width()} * size.height();
    if (!claimMemory(file.size() + pixels * kPixelBytes * buffers)) return {{}, ImageError::tooLarge};
  }
  QImage pixels;
  if (!reader.read(&pixels)) return {{}, ImageError::damaged};
  return {pixels, ImageError::none};
}

// Whether a GIF file can hold so many pixels: a code of 12 bits gives 4095 at most, but only those of a single colour
// throughout come near. Up to 16 megapixels are given on trust, so that files cut short are shown.
bool isGifCredible(QByteArrayView file, const GifFrame& frame) {
  constexpr std::int64_t kPixelsOnTrust = std::int64_t{16} << 20;
  constexpr std::int64_t kPixelsPerByte = 2048;
  const auto side = [file](qsizetype at) { return std::int64_t{qFromLittleEndian<std::uint16_t>(file.data() + at)}; };
  const std::int64_t pixels = std::max(side(6) * side(8), std::int64_t{frame.place.width()} * frame.place.height());
  return pixels <= kPixelsOnTrust || pixels / kPixelsPerByte <= frame.end;
}

}  // namespace

bool isGif(QByteArrayView head) {
  return head.startsWith("GIF87a") || head.startsWith("GIF89a");
}

DecodedImage decodeGif(const CodecRequest& request) {
  const auto frame = gifFirstFrame(request.bytes);
  if (!frame || !isGifCredible(request.bytes, *frame)) return {{}, ImageError::damaged};
  // Without what follows: the reader goes on where the first frame lacks pixels, and fills the canvas for each frame.
  DecodedImage canvas = readWith("gif", 3, request.bytes.first(frame->end));
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
  if (!isWebpCredible(request.bytes)) return {{}, ImageError::damaged};
  DecodedImage canvas = readWith("webp", 3, request.bytes);
  if (canvas.error != ImageError::none) return canvas;
  RawPicture picture;
  picture.pixels = std::move(canvas.pixels);
  picture.metadata = webpMetadata(request.bytes);
  return finishedPicture(std::move(picture), request.bound);
}

}  // namespace lumagrid
