// The process that decoders are forked from. The window starts it with a socket as its standard input, before it does
// anything else; it ends with the window. It loads all codecs once, reads no picture itself, and has one thread.

#include <fcntl.h>
#include <malloc.h>
#include <sys/prctl.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <map>

#include "DecoderServer.h"
#include "FileImageDecoder.h"
#include "Messages.h"

using namespace lumagrid;

namespace {

constexpr int kControl = 3;

// Leaves open what is needed, and nothing that came from who started this.
bool tidyDescriptors() {
  if (::dup3(STDIN_FILENO, kControl, O_CLOEXEC) < 0) return false;
  ::syscall(SYS_close_range, kControl + 1, ~0U, 0);
  const int nothing = ::open("/dev/null", O_RDWR | O_CLOEXEC);
  return nothing >= 0 && ::dup2(nothing, STDIN_FILENO) >= 0 && ::dup2(nothing, STDOUT_FILENO) >= 0;
}

[[noreturn]] void beDecoder(const ForkRequest& request, int socket) {
  ::close(kControl);
  ::prctl(PR_SET_PDEATHSIG, SIGKILL, 0, 0, 0);
  ::dup2(STDOUT_FILENO, STDERR_FILENO);  // codecs complain about files
  [[maybe_unused]] const int niceness = ::nice(request.niceness);
  serveWindow(socket, {request.freeMemory, request.mostMemory});
  std::_Exit(EXIT_SUCCESS);
}

// The decoders that have ended, with their status as from waitpid().
class Ended {
 public:
  void collect() {
    int status = 0;
    while (const pid_t process = ::waitpid(-1, &status, WNOHANG)) {
      if (process < 0) break;
      m_statuses[process] = status;
    }
  }
  int take(pid_t process) {
    collect();
    int status = 0;
    if (const auto known = m_statuses.extract(process)) return known.mapped();
    while (::waitpid(process, &status, 0) < 0 && errno == EINTR) continue;
    return status;
  }

 private:
  std::map<pid_t, int> m_statuses;
};

}  // namespace

int main() {
  if (!tidyDescriptors()) return EXIT_FAILURE;
  ::mallopt(M_ARENA_MAX, 1);  // each reserves more address space than most pictures take
  prepareCodecs();
  Ended ended;
  while (const auto received = receiveMessage<ForkRequest>(kControl)) {
    const ForkRequest& request = received->message;
    if (request.kind == ForkRequest::Kind::reap) {
      if (!sendMessage(kControl, ForkAnswer{ended.take(request.process)})) break;
      continue;
    }
    ended.collect();
    if (received->descriptor.isOpen() && ::fork() == 0) beDecoder(request, received->descriptor.number());
  }
  return EXIT_SUCCESS;
}
