#pragma once

#include <QByteArrayView>
#include <optional>
#include <span>

#include "ImageDecoder.h"

namespace lumagrid {

// The families of files that are opened, told apart by their first bytes alone.
enum class ImageFormat { jpeg, png, gif, webp, bmp, tiff, heif };

// Nothing for any other content, vector graphics and documents included.
[[nodiscard]] std::optional<ImageFormat> sniffImageFormat(QByteArrayView head);

// One picture to decode: the whole file, and the length in pixels of the longer side of what is wanted; 0 asks for the
// whole picture.
struct CodecRequest {
  QByteArrayView bytes;
  std::int64_t bound = 0;
};

// Turns a file into the finished picture (see DecodedImage). Pure: any thread, no state, no type of a codec library in
// sight, so that a codec can move into another process. Answers `unsupported` to leave the file to the next codec of
// its format. May throw std::bad_alloc.
using ImageCodec = DecodedImage (*)(const CodecRequest& request);

// The codecs of a format, in the order in which they are tried. A codec for special cases stands before the general
// one.
[[nodiscard]] std::span<const ImageCodec> codecsFor(ImageFormat format);

DecodedImage decodeJpeg(const CodecRequest& request);
DecodedImage decodePng(const CodecRequest& request);
DecodedImage decodeGif(const CodecRequest& request);
DecodedImage decodeWebp(const CodecRequest& request);
DecodedImage decodeBmp(const CodecRequest& request);
DecodedImage decodeTiff(const CodecRequest& request);
DecodedImage decodeHeif(const CodecRequest& request);

}  // namespace lumagrid
