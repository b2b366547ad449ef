#pragma once

#include <QImage>

#include "FileUrl.h"

namespace lumagrid {

// Why a picture could not be had.
enum class ImageError {
  none,
  missing,      // no such file
  denied,       // no permission
  unsupported,  // not a regular file, or not one of the formats that are opened
  damaged,      // its data cannot be decoded
  tooLarge,     // it asks for more memory than is sane
};

inline constexpr ImageError kLastImageError = ImageError::tooLarge;

// Of a file that the system does not open, from errno; EINVAL stands for what is no regular file.
[[nodiscard]] ImageError errorOfOpening(int systemError);

// A decoded picture: upright, sRGB, square pixels. `pixels` is RGBA8888_Premultiplied or, when opaque, RGBX8888; null
// exactly when `error` is not none.
struct DecodedImage {
  QImage pixels;
  ImageError error = ImageError::none;
};

// Makes pictures of image files, by content, never by name; the first frame of animations. Thread-safe; blocks the
// caller while it reads and decodes. Never throws.
class ImageDecoder {
 public:
  virtual ~ImageDecoder() = default;

  // The whole picture.
  [[nodiscard]] virtual DecodedImage decode(const FileUrl& file) = 0;

  // The file is likely to be asked for soon. Returns at once.
  virtual void willNeed(const FileUrl& file) { (void)file; }

  // The picture scaled down, aspect ratio kept, so that its longer side has `maxPixelSize` pixels (>= 1); at its own
  // size when that is smaller. A thumbnail that the file carries is never used.
  [[nodiscard]] virtual DecodedImage decodeBounded(const FileUrl& file, std::int64_t maxPixelSize) = 0;
};

}  // namespace lumagrid
