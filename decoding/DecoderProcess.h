#pragma once

#include <QImage>
#include <atomic>
#include <chrono>
#include <cstdint>
#include <map>
#include <memory>
#include <optional>
#include <vector>

#include "FileDescriptor.h"
#include "ImageDecoder.h"
#include "MemoryClaims.h"
#include "Messages.h"
#include "SharedPixels.h"

namespace lumagrid {

class DecoderLauncher;

// The window's end of one decoder. What the decoder says is checked: it can give wrong pixels, and nothing else. One
// thread at a time, but for stop().
class DecoderProcess {
 public:
  // What all decoders have in common; all of it outlives them.
  struct Shared {
    DecoderLauncher& launcher;
    SharedPixels& pixels;
    MemoryClaims& claims;
    std::int64_t freeMemory;  // bytes that each may use unasked
    std::int64_t mostMemory;  // and with whatever it is granted, buffers included
  };
  DecoderProcess(const Shared& shared, FileDescriptor socket);
  DecoderProcess(const DecoderProcess&) = delete;
  DecoderProcess& operator=(const DecoderProcess&) = delete;
  ~DecoderProcess();

  struct Task {
    int descriptor;      // of a regular file, open for reading
    std::int64_t bytes;  // in the file
    std::int64_t bound;  // of the longer side, in pixels; 0: the whole picture
    MemoryClaims::Urgency urgency;
    std::chrono::milliseconds processorTime;  // the most that the decoder may take
    std::chrono::milliseconds idleTime;       // and go without any between two words of it
    std::chrono::milliseconds time;           // the most by the clock, waiting for memory apart
  };
  enum class End : unsigned char {
    answered,
    failed,  // it died of the file, took too long or answered nonsense
    killed,  // something else ended it: the file deserves another try
  };
  struct Outcome {
    End end = End::failed;
    DecodedImage image;
  };
  // After any end but `answered` this decoder is of no use any more.
  [[nodiscard]] Outcome decode(const Task& task);

  // Ends a decode() under way, and every further one. Any thread.
  void stop();

  // Whether it has worked so long that a new one should take its place.
  [[nodiscard]] bool isWorn() const;

  // A set of Protection that this system did not give; nothing before the first answer.
  [[nodiscard]] std::optional<std::uint32_t> missingProtections() const { return m_missingProtections; }

 private:
  // What one task holds, and when it has to end.
  struct Progress {
    const Task& task;
    std::chrono::steady_clock::time_point end;
    std::chrono::nanoseconds processorEnd;
    std::vector<std::shared_ptr<SharedBuffer>> buffers;
  };

  [[nodiscard]] bool becomeReady();
  [[nodiscard]] Outcome follow(Progress& progress);
  [[nodiscard]] std::optional<DecoderAnswer> nextAnswer(const Progress& progress) const;
  [[nodiscard]] bool grantMemory(Progress& progress, std::int64_t bytes);
  [[nodiscard]] bool grantPixels(Progress& progress, std::int64_t bytes);
  [[nodiscard]] bool share(const std::shared_ptr<SharedBuffer>& buffer);
  [[nodiscard]] std::optional<DecodedImage> imageOf(const DecoderAnswer& answer, Progress& progress);
  [[nodiscard]] bool refuse() const;
  void forgetLostBuffers();
  void limitMemory() const;
  [[nodiscard]] std::chrono::nanoseconds processorTime() const;
  [[nodiscard]] End end(std::chrono::milliseconds grace);
  [[nodiscard]] Outcome failed(End end);

  const Shared m_shared;
  const FileDescriptor m_socket;
  // What the decoder has mapped, until it is told to forget it.
  struct Mapping {
    std::weak_ptr<SharedBuffer> buffer;
    std::int64_t bytes;
  };
  std::map<std::int32_t, Mapping> m_mapped;  // by number
  std::shared_ptr<SharedBuffer> m_small;
  std::int32_t m_process = 0;                     // once it is ready
  std::optional<FileDescriptor> m_processHandle;  // stays its own, whatever becomes of the number
  std::int64_t m_addressSpace = 0;                // that it had then, in bytes
  std::int64_t m_claimed = 0;                     // for the task, in bytes
  std::optional<std::uint32_t> m_missingProtections;
  std::atomic<bool> m_isStopped = false;
};

}  // namespace lumagrid
