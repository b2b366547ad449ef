#pragma once

#include <QByteArray>
#include <QThreadPool>
#include <atomic>
#include <condition_variable>
#include <mutex>
#include <optional>

#include "ImageDecoder.h"
#include "MemoryCache.h"

namespace lumagrid {

// Keeps the last whole pictures that were decoded, bounded in bytes, so that going back to the photo just left decodes
// nothing. Before it answers it asks the system whether the file is still the same (device, number, size, date).
// Decoding can be started ahead of the request, and files can be read ahead. Thread-safe.
class PictureStore : public ImageDecoder {
 public:
  // `decoder` outlives the store.
  explicit PictureStore(ImageDecoder& decoder);
  // Waits for what was started ahead.
  ~PictureStore() override;

  [[nodiscard]] DecodedImage decode(const FileUrl& file) override;
  [[nodiscard]] DecodedImage decodeBounded(const FileUrl& file, std::int64_t maxPixelSize) override;
  void willNeed(const FileUrl& file) override;

  // Decodes the file on a thread of its own; decode() of the same file waits for it instead of doing it again.
  void decodeAhead(const FileUrl& file);

 private:
  ImageDecoder& m_decoder;
  MemoryCache<QByteArray, QImage> m_pictures;  // by path and what the system says of the file
  std::atomic<std::size_t> m_lastBytes = 0;

  std::mutex m_mutex;  // guards m_ahead
  std::condition_variable m_aheadEnded;
  std::optional<QByteArray> m_ahead;  // what is being decoded ahead

  QThreadPool m_thread;  // one thread; last, so that its work ends before the rest is gone
};

}  // namespace lumagrid
