#pragma once

#include <QByteArray>
#include <QImage>

#include "MemoryCache.h"

namespace lumagrid {

struct IsShownImage {
  bool operator()(const QImage& image) const { return !image.isDetached(); }
};

// Pictures by a text that says what they are of.
using ImageCache = MemoryCache<QByteArray, QImage, std::hash<QByteArray>, IsShownImage>;

// All pictures that the process keeps so that they need not be made again (whole photos, photos fitted to a stage,
// thumbnails), within keptBytes(). Thread-safe.
[[nodiscard]] ImageCache& imageCache();

// As setObject() with what the picture takes.
inline void keepImage(const QByteArray& key, const QImage& image) {
  imageCache().setObject(key, image, static_cast<std::size_t>(image.sizeInBytes()));
}

}  // namespace lumagrid
