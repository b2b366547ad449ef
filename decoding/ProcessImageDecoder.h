#pragma once

#include <QByteArray>
#include <QString>
#include <chrono>
#include <condition_variable>
#include <deque>
#include <memory>
#include <mutex>
#include <optional>
#include <vector>

#include "DecoderLauncher.h"
#include "DecoderProcess.h"
#include "FileIdentity.h"
#include "ImageDecoder.h"
#include "MemoryClaims.h"
#include "SharedPixels.h"

namespace lumagrid {

// Decodes in processes that can do nothing but that: one for each core, and one for whole pictures, which are started
// at once. A file that ends its decoder, or takes too long, is damaged, and is not tried again for half a minute.
// Without a decoder to be had it is unavailable, and tried again whenever it is asked for.
class ProcessImageDecoder : public ImageDecoder {
 public:
  // What one picture may take.
  struct Patience {
    std::chrono::milliseconds thumbnailProcessorTime{10'000};
    std::chrono::milliseconds thumbnailIdleTime{15'000};  // without any processor time: its threads wait for each other
    std::chrono::milliseconds thumbnailTime{60'000};      // by the clock, waiting for memory apart
    std::chrono::milliseconds pictureTime{15'000};        // the same, of a whole picture
  };
  // `program`: the path of lumagrid-decoder.
  explicit ProcessImageDecoder(QByteArray program, const Patience& patience);
  explicit ProcessImageDecoder(QByteArray program) : ProcessImageDecoder(std::move(program), Patience()) {}
  ~ProcessImageDecoder() override;

  [[nodiscard]] DecodedImage decode(const FileUrl& file) override;
  // In a thumbnail's decoder.
  [[nodiscard]] DecodedImage decodeInBackground(const FileUrl& file) override;
  void giveMemoryBack() override { m_pixels->clear(); }
  [[nodiscard]] DecodedImage decodeBounded(const FileUrl& file, std::int64_t maxPixelSize) override;

  // Ends all decoders: what is being decoded comes to nothing at once, and all that is asked for later. Any thread.
  void stop();

  // What this system does not give of the protection, or of decoding itself, in a sentence; empty when nothing is
  // missing, or nobody knows yet.
  [[nodiscard]] QString missingProtection() const;

  // How many decoders have ended under a file so far, whatever ended them. Any thread.
  [[nodiscard]] std::uint64_t decoderDeaths() const;

 private:
  // One place for a decoder, which may have ended.
  struct Place {
    std::unique_ptr<DecoderProcess> decoder;
    bool isBusy = false;
  };
  struct Lane {
    std::int32_t niceness;
    MemoryClaims::Urgency urgency;
    std::vector<Place> places;
  };
  // What a task may take, as DecoderProcess::Task has it.
  struct Limits {
    std::chrono::milliseconds processorTime;
    std::chrono::milliseconds idleTime;
    std::chrono::milliseconds time;
  };
  enum class IfDamaged { refuseForAWhile, forget };
  struct Refused {
    FileIdentity file;
    std::chrono::steady_clock::time_point until;
  };

  [[nodiscard]] DecodedImage decode(const FileUrl& file, std::int64_t bound, Lane& lane, IfDamaged ifDamaged);
  [[nodiscard]] std::optional<DecoderProcess::Outcome> decodeOnce(const DecoderProcess::Task& task, Lane& lane);
  [[nodiscard]] std::unique_ptr<DecoderProcess> start(const Lane& lane);
  [[nodiscard]] bool isRefused(const FileIdentity& file);
  void report(const DecoderProcess& decoder);

  DecoderLauncher m_launcher;
  MemoryClaims m_claims;
  const std::shared_ptr<SharedPixels> m_pixels = std::make_shared<SharedPixels>();
  const DecoderProcess::Shared m_shared;

  const Limits m_thumbnailLimits;
  const Limits m_pictureLimits;

  mutable std::mutex m_mutex;  // guards all below, but for a decoder that is busy
  std::condition_variable m_isFree;
  Lane m_thumbnails;
  Lane m_pictures;
  std::deque<Refused> m_refused;
  QString m_missing;
  std::uint64_t m_deaths = 0;
  int m_wholeUnderWay = 0;  // tasks
  bool m_isStopped = false;
};

}  // namespace lumagrid
