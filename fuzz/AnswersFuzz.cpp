// What a decoder says to the window: the picture that comes of it lies within memory that both share. The first byte is
// the bound, the rest messages; buffers count from the first that the decoder has.
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <numeric>

#include "DecoderLauncher.h"
#include "DecoderProcess.h"

using namespace lumagrid;

namespace {

// It has ended, and its number stays its own.
pid_t decoderProcess() {
  const pid_t child = ::fork();
  if (child == 0) ::_exit(0);
  siginfo_t end;
  ::waitid(P_PID, static_cast<id_t>(child), &end, WEXITED | WNOWAIT);
  return child;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using namespace std::chrono_literals;
  static const pid_t process = decoderProcess();
  static DecoderLauncher launcher("/bin/true");
  static const auto pixels = std::make_shared<SharedPixels>();
  static MemoryClaims claims(64 << 20);
  if (size == 0) return 0;
  const auto firstBuffer = static_cast<std::uint32_t>(SharedBuffer::make(1)->number() + 1);
  SocketPair sockets = socketPair();
  DecoderAnswer answer;
  answer.kind = DecoderAnswer::Kind::ready;
  answer.process = process;
  (void)sendMessage(sockets.theirs.number(), answer);
  for (std::size_t at = 1; at < size; at += sizeof answer) {
    const std::size_t bytes = std::min(sizeof answer, size - at);
    std::memcpy(&answer, data + at, bytes);
    answer.buffer = static_cast<std::int32_t>(static_cast<std::uint32_t>(answer.buffer) + firstBuffer);
    (void)::send(sockets.theirs.number(), &answer, bytes, MSG_NOSIGNAL | MSG_DONTWAIT);
  }
  ::shutdown(sockets.theirs.number(), SHUT_WR);
  DecoderProcess decoder({launcher, *pixels, claims, 8 << 20, 64 << 20}, std::move(sockets.ours));
  DecoderProcess::Outcome outcome;
  do {
    outcome = decoder.decode({STDERR_FILENO, 1, data[0], MemoryClaims::Urgency::ordinary, 1s, 1s, 1s});
    const auto& [image, error] = outcome.image;
    if (image.isNull() != (error != ImageError::none)) std::abort();
    if (data[0] > 0 && std::max(image.width(), image.height()) > data[0]) std::abort();
    const auto sum = std::accumulate(image.constBits(), image.constBits() + image.sizeInBytes(), 0U);
    if (sum > 0 && image.isNull()) std::abort();
  } while (outcome.end == DecoderProcess::End::answered);
  return 0;
}
