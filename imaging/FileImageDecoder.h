#pragma once

#include "ImageDecoder.h"

namespace lumagrid {

// Decodes files of this machine with the codecs of this folder: JPEG, PNG, GIF, WebP, BMP, TIFF, HEIF, HEIC and AVIF.
// A symbolic link is followed. Without state of its own; the first one made sets the process-wide allocation limit of
// QImageReader from the machine's memory.
class FileImageDecoder : public ImageDecoder {
 public:
  FileImageDecoder();

  [[nodiscard]] DecodedImage decode(const FileUrl& file) override;
  // A bound below 1 counts as 1.
  [[nodiscard]] DecodedImage decodeBounded(const FileUrl& file, std::int64_t maxPixelSize) override;

  // A regular file of `size` bytes, open at its beginning; `bound` as in CodecRequest.
  [[nodiscard]] static DecodedImage decodeOpenFile(int descriptor, std::int64_t size, std::int64_t bound);
};

// Loads what codecs load at their first use, for a process that cannot open files later.
void prepareCodecs();

}  // namespace lumagrid
