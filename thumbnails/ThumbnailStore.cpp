#include "ThumbnailStore.h"

#include <QByteArray>
#include <atomic>
#include <condition_variable>
#include <mutex>
#include <set>

#include "ImageDecoder.h"
#include "MemoryBudget.h"
#include "MemoryCache.h"

namespace lumagrid::ThumbnailStore {

namespace {

std::atomic<ImageDecoder*> s_decoder = nullptr;

MemoryCache<QByteArray, QImage>& cache() {
  static MemoryCache<QByteArray, QImage> cache(keptThumbnailBytes());
  return cache;
}

QByteArray cacheKey(const FileUrl& file, std::int64_t bound) {
  return file.path() + '#' + QByteArray::number(bound);
}

// While it lives, no other thread makes the thumbnail of `key`: whoever wants to waits in the constructor.
class ThumbnailLock {
 public:
  explicit ThumbnailLock(const QByteArray& key) : m_key(key) {
    std::unique_lock lock(s_mutex);
    s_ended.wait(lock, [&] { return s_keys.insert(m_key).second; });
  }
  ThumbnailLock(const ThumbnailLock&) = delete;
  ThumbnailLock& operator=(const ThumbnailLock&) = delete;
  ~ThumbnailLock() {
    {
      const std::scoped_lock lock(s_mutex);
      s_keys.erase(m_key);
    }
    s_ended.notify_all();
  }

 private:
  static inline std::mutex s_mutex;  // guards s_keys
  static inline std::condition_variable s_ended;
  static inline std::set<QByteArray> s_keys;

  QByteArray m_key;
};

}  // namespace

void setDecoder(ImageDecoder& decoder) {
  s_decoder = &decoder;
}

QImage cachedThumbnail(const FileUrl& file, double maxPixelSize) {
  return cache().object(cacheKey(file, static_cast<std::int64_t>(maxPixelSize))).value_or(QImage());
}

QImage thumbnail(const FileUrl& file, double maxPixelSize) {
  const auto bound = static_cast<std::int64_t>(maxPixelSize);
  const QByteArray key = cacheKey(file, bound);
  if (const auto cached = cache().object(key)) return *cached;
  const ThumbnailLock lock(key);
  if (const auto cached = cache().object(key)) return *cached;
  ImageDecoder* const decoder = s_decoder;
  if (!decoder) return {};
  const DecodedImage decoded = decoder->decodeBounded(file, bound);
  if (decoded.pixels.isNull()) return {};
  cache().setObject(key, decoded.pixels, static_cast<std::size_t>(decoded.pixels.sizeInBytes()));
  return decoded.pixels;
}

}  // namespace lumagrid::ThumbnailStore
