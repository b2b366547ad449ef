#include "ThumbnailStore.h"

#include <QByteArray>

#include "FileImageDecoder.h"
#include "MemoryCache.h"

namespace lumagrid::ThumbnailStore {

namespace {

// Some 400 thumbnails of a grid of four columns: a dozen screens, so that scrolling back decodes nothing.
constexpr std::size_t kCacheBytes = 96U << 20;

MemoryCache<QByteArray, QImage>& cache() {
  static MemoryCache<QByteArray, QImage> cache(kCacheBytes);
  return cache;
}

QByteArray cacheKey(const FileUrl& file, std::int64_t bound) {
  return file.path() + '#' + QByteArray::number(bound);
}

}  // namespace

QImage cachedThumbnail(const FileUrl& file, double maxPixelSize) {
  return cache().object(cacheKey(file, static_cast<std::int64_t>(maxPixelSize))).value_or(QImage());
}

QImage thumbnail(const FileUrl& file, double maxPixelSize) {
  const auto bound = static_cast<std::int64_t>(maxPixelSize);
  const QByteArray key = cacheKey(file, bound);
  if (const auto cached = cache().object(key)) return *cached;
  FileImageDecoder decoder;
  DecodedImage decoded = decoder.decodeBounded(file, bound);
  // What cannot be decoded at the bound may still open as a whole.
  if (decoded.error == ImageError::damaged) decoded = decoder.decode(file);
  if (decoded.pixels.isNull()) return {};
  cache().setObject(key, decoded.pixels, static_cast<std::size_t>(decoded.pixels.sizeInBytes()));
  return decoded.pixels;
}

}  // namespace lumagrid::ThumbnailStore
