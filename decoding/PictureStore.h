#pragma once

#include <QByteArray>
#include <atomic>
#include <memory>
#include <mutex>

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
  // What was started ahead has ended by then.
  ~PictureStore() override;

  [[nodiscard]] DecodedImage decode(const FileUrl& file) override;
  [[nodiscard]] DecodedImage decodeBounded(const FileUrl& file, std::int64_t maxPixelSize) override;
  void willNeed(const FileUrl& file) override;

  // Begins to decode the file on a thread of the pool; decode() of the same file then waits for it, or does it itself
  // when none was free. One file at a time: further ones are not begun.
  void decodeAhead(const FileUrl& file);

 private:
  struct Ahead;

  [[nodiscard]] std::shared_ptr<Ahead> takeAhead();
  [[nodiscard]] DecodedImage decodeAndKeep(const FileUrl& file, const QByteArray& wanted);

  ImageDecoder& m_decoder;
  MemoryCache<QByteArray, QImage> m_pictures;  // by path and what the system says of the file
  std::atomic<std::size_t> m_lastBytes = 0;

  std::mutex m_mutex;  // guards m_ahead
  std::shared_ptr<Ahead> m_ahead;
};

}  // namespace lumagrid
