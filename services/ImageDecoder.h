#pragma once

#include <QImage>
#include <functional>
#include <vector>

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
  unavailable,  // the system is short of something, or does not reach the file: another time it may open
};

inline constexpr ImageError kLastImageError = ImageError::unavailable;

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

  // The same, behind everything that somebody waits for.
  [[nodiscard]] virtual DecodedImage decodeInBackground(const FileUrl& file) { return decode(file); }

  // These files are likely to be asked for whole, the likeliest first; what was said before holds no more. Returns at
  // once, with how many of them, from the first on, are made ready so that decode() need not wait. `ready` is called
  // for each of those once it is, on any thread, with its picture, or a null one where there is none; not after the
  // next call.
  using Ready = std::function<void(const FileUrl& file, const QImage& picture)>;
  virtual std::size_t prepare(const std::vector<FileUrl>& files, const Ready& ready) {
    (void)files, (void)ready;
    return 0;
  }

  // No whole picture is likely to be asked for soon: memory that is kept for it goes back to the system.
  virtual void giveMemoryBack() {}

  // The picture scaled down, aspect ratio kept, so that its longer side has `maxPixelSize` pixels (>= 1); at its own
  // size when that is smaller. A thumbnail that the file carries is never used.
  [[nodiscard]] virtual DecodedImage decodeBounded(const FileUrl& file, std::int64_t maxPixelSize) = 0;
};

}  // namespace lumagrid
