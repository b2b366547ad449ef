#pragma once

#include <QByteArrayView>
#include <optional>
#include <span>

#include "ImageDecoder.h"

namespace lumagrid {

// The families of files that are opened (base/files/PictureFormats.def), told apart by their first bytes alone.
enum class ImageFormat {
#define LUMAGRID_FORMAT(identifier, ...) identifier,
#include "PictureFormats.def"
};

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

// The functions that the table of formats names: whether a file that begins with `head` is of the format, and the
// codecs. Each is defined by its codec's own source.
using FormatTest = bool(QByteArrayView head);
using CodecFunction = DecodedImage(const CodecRequest& request);
#define LUMAGRID_FORMAT(identifier, names, extensions, mimeTypes, test, ...) \
  FormatTest test;                                                           \
  CodecFunction __VA_ARGS__;
#include "PictureFormats.def"

}  // namespace lumagrid
