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
};

}  // namespace lumagrid
