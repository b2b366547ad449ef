#pragma once

#include <QImage>

#include "FileUrl.h"

namespace lumagrid {
class ImageDecoder;
}

// NOLINTNEXTLINE(readability-identifier-naming): a service without state of its own, named like a type
namespace lumagrid::ThumbnailStore {

// What thumbnails are made by; it outlives them. Without one, no file can be read.
void setDecoder(ImageDecoder& decoder);

// The picture in `file`, its longer side bounded by `maxPixelSize` pixels (finite, >= 1; its fraction is cut off), from
// the process's cache or made now; null when the file cannot be read as a picture, which is tried again at the next
// call. The cache knows paths and bounds only: a file that was replaced keeps its first thumbnail while that stays in
// the cache, which is bounded in bytes (least recently used goes first). Any thread; blocks while it, or another thread
// for the same thumbnail, reads and decodes.
[[nodiscard]] QImage thumbnail(const FileUrl& file, double maxPixelSize);

// The same, only if the cache has it. Any thread; never blocks on a file.
[[nodiscard]] QImage cachedThumbnail(const FileUrl& file, double maxPixelSize);

// A thumbnail of the file at some other bound that the cache has, which can stand in while the right one is made; null
// when it has none. Any thread; never blocks on a file.
[[nodiscard]] QImage standIn(const FileUrl& file);

}  // namespace lumagrid::ThumbnailStore
