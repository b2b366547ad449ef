#pragma once

#include <QByteArray>
#include <cstdint>
#include <mutex>
#include <optional>

#include "FileDescriptor.h"
#include "Messages.h"

namespace lumagrid {

// Starts decoders: one process of the decoder's program, which has loaded all codecs and reads no file, forks them. It
// is started at once, again when it is gone, and ends with this. Thread-safe.
class DecoderLauncher {
 public:
  // `program`: the path of lumagrid-decoder.
  explicit DecoderLauncher(QByteArray program);
  DecoderLauncher(const DecoderLauncher&) = delete;
  DecoderLauncher& operator=(const DecoderLauncher&) = delete;
  ~DecoderLauncher();

  struct Limits {
    std::int32_t niceness;    // on top of this process's
    std::int64_t freeMemory;  // bytes that a decoder may use unasked
    std::int64_t mostMemory;  // and with whatever it is granted
  };
  // A new decoder's socket, at once: it answers when it is ready, or closes it when it cannot be had.
  [[nodiscard]] std::optional<FileDescriptor> fork(const Limits& limits);

  // Waits for the end of a decoder that has ended or is about to. Its status as from waitpid(); nothing when nobody
  // knows.
  [[nodiscard]] std::optional<int> reap(std::int32_t process);

  // The reason why the program could not be started, from errno; 0 when it could.
  [[nodiscard]] int startError() const;

 private:
  [[nodiscard]] bool start();
  void end();
  [[nodiscard]] bool send(const ForkRequest& request, int descriptor);

  const QByteArray m_program;
  mutable std::mutex m_mutex;  // guards all below
  std::optional<FileDescriptor> m_socket;
  int m_process = -1;
  int m_startError = 0;
};

}  // namespace lumagrid
