#include "ThumbnailStore.h"

#include <QByteArray>
#include <atomic>
#include <condition_variable>
#include <mutex>
#include <set>
#include <vector>

#include "ImageCache.h"
#include "ImageDecoder.h"

namespace lumagrid::ThumbnailStore {

namespace {

std::atomic<ImageDecoder*> s_decoder = nullptr;

// The bounds that thumbnails were last made with, newest first. Thread-safe.
class RecentBounds {
 public:
  void add(std::int64_t bound) {
    constexpr std::size_t kMost = 12;
    const std::scoped_lock lock(m_mutex);
    std::erase(m_bounds, bound);
    m_bounds.insert(m_bounds.begin(), bound);
    if (m_bounds.size() > kMost) m_bounds.pop_back();
  }
  [[nodiscard]] std::vector<std::int64_t> all() const {
    const std::scoped_lock lock(m_mutex);
    return m_bounds;
  }

 private:
  mutable std::mutex m_mutex;
  std::vector<std::int64_t> m_bounds;
};

RecentBounds& recentBounds() {
  static RecentBounds bounds;
  return bounds;
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
  (void)imageCache();  // so that it goes after whatever is made later
}

QImage cachedThumbnail(const FileUrl& file, double maxPixelSize) {
  return imageCache().object(cacheKey(file, static_cast<std::int64_t>(maxPixelSize))).value_or(QImage());
}

QImage standIn(const FileUrl& file) {
  for (const std::int64_t bound : recentBounds().all()) {
    if (const auto cached = imageCache().object(cacheKey(file, bound))) return *cached;
  }
  return {};
}

QImage thumbnail(const FileUrl& file, double maxPixelSize) {
  const auto bound = static_cast<std::int64_t>(maxPixelSize);
  const QByteArray key = cacheKey(file, bound);
  if (const auto cached = imageCache().object(key)) return *cached;
  const ThumbnailLock lock(key);
  if (const auto cached = imageCache().object(key)) return *cached;
  ImageDecoder* const decoder = s_decoder;
  if (!decoder) return {};
  const DecodedImage decoded = decoder->decodeBounded(file, bound);
  if (decoded.pixels.isNull()) return {};
  keepImage(key, decoded.pixels);
  recentBounds().add(bound);
  return decoded.pixels;
}

}  // namespace lumagrid::ThumbnailStore
