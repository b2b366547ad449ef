// Stands where lumagrid-decoder stands, and behaves as the file says that it is to decode: by its first word.

#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <map>
#include <string>
#include <thread>

#include "MemoryBudget.h"
#include "Messages.h"
#include "WorkerPool.h"

using namespace lumagrid;

namespace {

DecoderAnswer picture(std::int32_t buffer, std::int32_t width, std::int32_t height) {
  DecoderAnswer answer;
  answer.buffer = buffer;
  answer.width = width;
  answer.height = height;
  return answer;
}

DecoderAnswer withError(std::uint32_t error) {
  DecoderAnswer answer;
  answer.error = error;
  return answer;
}

DecoderAnswer asking(DecoderAnswer::Kind kind, std::int64_t bytes) {
  DecoderAnswer answer;
  answer.kind = kind;
  answer.bytes = bytes;
  return answer;
}

void answer(const std::string& lie, int socket, std::int32_t small) {
  const auto say = [socket](const DecoderAnswer& said) { (void)sendMessage(socket, said); };
  const std::map<std::string, DecoderAnswer> answers{
      {"honest", picture(small, 2, 1)},
      {"large", picture(small, 2000, 2000)},
      {"huge", picture(small, 1 << 30, 1 << 30)},
      {"negative", picture(small, -2, -1)},
      {"longer than asked", picture(small, 1000, 1)},
      {"foreign", picture(9999, 1, 1)},
      {"error", withError(77)},
      {"kind", asking(static_cast<DecoderAnswer::Kind>(99), 0)},
      {"ready", asking(DecoderAnswer::Kind::ready, 0)},
  };
  if (const auto found = answers.find(lie); found != answers.end()) return say(found->second);
  if (lie == "short") {
    [[maybe_unused]] const auto written = ::write(socket, "x", 1);
  }
  if (lie == "ends") std::_Exit(0);
  if (lie == "crashes") ::raise(SIGSEGV);
  if (lie == "keeps all memory" || lie == "needs all memory") {
    say(asking(DecoderAnswer::Kind::memory, decodingBudget(coreCount() + 1).claimed));
    const auto granted = receiveMessage<DecoderRequest>(socket);
    if (lie == "keeps all memory" || !granted || granted->message.kind != DecoderRequest::Kind::memory) std::_Exit(0);
    return say(picture(small, 2, 1));
  }
  while (lie == "asks for ever") {
    say(asking(DecoderAnswer::Kind::memory, -1));
    (void)receiveMessage<DecoderRequest>(socket);
  }
  while (lie == "spins") continue;
  while (lie == "dawdles") std::this_thread::sleep_for(std::chrono::milliseconds(20));
  std::this_thread::sleep_for(std::chrono::hours(1));
}

[[noreturn]] void beDecoder(int socket) {
  DecoderAnswer ready = asking(DecoderAnswer::Kind::ready, std::int64_t{1} << 47);
  ready.process = ::getpid();
  (void)sendMessage(socket, ready);
  std::int32_t small = -1;
  while (const auto received = receiveMessage<DecoderRequest>(socket)) {
    const DecoderRequest& request = received->message;
    if (request.kind == DecoderRequest::Kind::pixels && small < 0) small = request.buffer;
    if (request.kind != DecoderRequest::Kind::decode) continue;
    std::string lie(static_cast<std::size_t>(request.bytes), '\0');
    [[maybe_unused]] const auto size = ::read(received->descriptor.number(), lie.data(), lie.size());
    answer(lie, socket, small);
  }
  std::_Exit(0);
}

}  // namespace

int main() {
  constexpr int kControl = STDIN_FILENO;
  while (const auto received = receiveMessage<ForkRequest>(kControl)) {
    if (received->message.kind == ForkRequest::Kind::reap) {
      ForkAnswer ended;
      ::waitpid(received->message.process, &ended.status, 0);
      (void)sendMessage(kControl, ended);
      continue;
    }
    if (::fork() == 0) {
      ::close(kControl);
      beDecoder(received->descriptor.number());
    }
  }
}
