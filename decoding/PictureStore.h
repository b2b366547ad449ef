#pragma once

#include <QByteArray>
#include <atomic>
#include <condition_variable>
#include <functional>
#include <memory>
#include <mutex>
#include <vector>

#include "ImageDecoder.h"

namespace lumagrid {

// Keeps the last whole pictures that were decoded, among all that the process keeps, so that going back to the photo
// just left decodes nothing; and decodes those ahead that are likely to be asked for. Before it answers it asks the
// system whether the file is still the same (device, number, size, date). Thread-safe.
class PictureStore : public ImageDecoder {
 public:
  // `decoder` outlives the store.
  explicit PictureStore(ImageDecoder& decoder) : m_decoder(decoder) {}
  // What was started ahead has ended by then.
  ~PictureStore() override;

  [[nodiscard]] DecodedImage decode(const FileUrl& file) override;
  [[nodiscard]] DecodedImage decodeBounded(const FileUrl& file, std::int64_t maxPixelSize) override;

  // One file for each core at a time, and none is begun while decode() works on another. As many as fit into the memory
  // that is kept, if they are as large as the last one.
  std::size_t prepare(const std::vector<FileUrl>& files, const Ready& ready) override;

  // Begins to decode the file on a thread of the pool as decode() does; decode() of the same file then waits for it,
  // or does it itself when no thread was free. `ready` gets the picture, there, before anybody who waits.
  void decodeAhead(const FileUrl& file, std::function<void(const QImage&)> ready);

 private:
  struct Job;

  [[nodiscard]] std::shared_ptr<Job> jobOf(const FileUrl& file) const;
  void begin(const std::shared_ptr<Job>& job, int priority);
  void beginAwaited();
  void run(const std::shared_ptr<Job>& job);
  void drop(const std::shared_ptr<Job>& job);
  [[nodiscard]] DecodedImage decodeAndKeep(const FileUrl& file, const QByteArray& wanted, bool isInBackground);

  ImageDecoder& m_decoder;
  std::atomic<std::size_t> m_lastBytes = 0;  // of the last picture that was asked for
  std::atomic<std::size_t> m_underWay = 0;   // pictures that are being decoded

  std::mutex m_mutex;  // guards all below
  std::condition_variable m_jobEnded;
  std::vector<std::shared_ptr<Job>> m_jobs;  // handed to the pool
  std::vector<FileUrl> m_awaited;            // to be prepared and not ready yet, in their order
  Ready m_ready;
  int m_asked = 0;  // calls of decode() under way that decode
};

}  // namespace lumagrid
