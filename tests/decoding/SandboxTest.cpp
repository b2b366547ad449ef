#include "Sandbox.h"

#include <arpa/inet.h>
#include <fcntl.h>
#include <sys/mman.h>
#include <sys/ptrace.h>
#include <sys/resource.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <sys/uio.h>
#include <sys/wait.h>
#include <unistd.h>

#include <QTest>
#include <csignal>
#include <functional>
#include <thread>

#include "Messages.h"
#include "Table.h"

using namespace lumagrid;

namespace {

constexpr std::uint32_t kNone = 0;
constexpr auto kLandlock = static_cast<std::uint32_t>(Protection::landlock);
constexpr auto kSeccomp = static_cast<std::uint32_t>(Protection::seccomp);

const DecoderLimits kLimits{std::int64_t{64} << 20, std::int64_t{256} << 20};

using Attempt = std::function<bool(pid_t parent)>;

// Whether the attempt succeeds in a process of its own that is locked in but for `unwanted`.
bool succeeds(const Attempt& attempt, std::uint32_t unwanted) {
  const pid_t parent = ::getpid();
  const pid_t child = ::fork();
  if (child == 0) {
    const rlimit narrow{48, 48};
    ::setrlimit(RLIMIT_NOFILE, &narrow);  // as a user may have: it is no protection that is missing
    const SocketPair sockets = socketPair();
    const std::uint32_t missing = lockIn(sockets.ours.number(), kLimits, unwanted);
    ::_exit(missing != unwanted ? 2 : attempt(parent) ? 1 : 0);
  }
  int status = 0;
  ::waitpid(child, &status, 0);
  if (!WIFEXITED(status) || WEXITSTATUS(status) > 1) qFatal("The attempt ended with %d", status);
  return WEXITSTATUS(status) == 1;
}

bool opens(const char* path, int flags) {
  return ::open(path, flags, 0600) >= 0;
}

bool forks() {
  const pid_t child = ::fork();
  if (child == 0) ::_exit(0);
  return child > 0;
}

bool maps(std::size_t bytes, int protection) {
  return ::mmap(nullptr, bytes, protection, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0) != MAP_FAILED;
}

bool readsMemoryOf(pid_t other) {
  int value = 0;
  iovec here{&value, sizeof value};
  iovec there = here;  // the same address, as a fork has it
  return ::process_vm_readv(other, &here, 1, &there, 1, 0) > 0;
}

bool makesCode() {
  alignas(4096) static char page[4096];
  return ::mprotect(page, sizeof page, PROT_READ | PROT_EXEC) == 0;
}

bool raisesItsLimit() {
  rlimit limit{};
  ::getrlimit(RLIMIT_AS, &limit);
  limit.rlim_cur = limit.rlim_max;
  return ::setrlimit(RLIMIT_AS, &limit) == 0;
}

bool runsThreads() {
  int sum = 0;
  std::thread([&sum] { sum = 1; }).join();
  return sum == 1;
}

}  // namespace

// What a decoder that has been taken over can do.
class SandboxTest : public QObject {
  Q_OBJECT

 private Q_SLOTS:
  void stops_data() {
    addRows<std::pair<Attempt, std::uint32_t>>({
      {"reading a file", {[](pid_t) { return opens("/etc/passwd", O_RDONLY); }, kSeccomp}},
          {"writing a file", {[](pid_t) { return opens("/tmp/lumagrid-escaped", O_WRONLY | O_CREAT); }, kSeccomp}},
          {"listing a folder", {[](pid_t) { return opens("/", O_RDONLY | O_DIRECTORY); }, kSeccomp}},
          {"making a folder", {[](pid_t) { return ::mkdir("/tmp/lumagrid-folder", 0700) == 0; }, kSeccomp}},
          {"a program", {[](pid_t) { return ::execl("/bin/true", "true", nullptr) == 0; }, kSeccomp}},
          {"asking whether a file is there", {[](pid_t) { return ::access("/etc/passwd", F_OK) == 0; }, kNone}},
          {"the network", {[](pid_t) { return ::socket(AF_INET, SOCK_STREAM, 0) >= 0; }, kNone}},
          {"a local socket", {[](pid_t) { return ::socket(AF_UNIX, SOCK_STREAM, 0) >= 0; }, kNone}},
          {"a process", {[](pid_t) { return forks(); }, kNone}},
          {"a signal to the parent", {[](pid_t parent) { return ::kill(parent, 0) == 0; }, kNone}},
          {"a signal to one of its threads",
           {[](pid_t parent) { return ::syscall(SYS_tgkill, parent, parent, 0) == 0; }, kNone}},
          {"tracing the parent",
           {[](pid_t parent) { return ::ptrace(PTRACE_SEIZE, parent, nullptr, nullptr) == 0; }, kNone}},
          {"the parent's memory", {[](pid_t parent) { return readsMemoryOf(parent); }, kNone}},
          {"code in memory", {[](pid_t) { return maps(4096, PROT_READ | PROT_EXEC); }, kNone}},
          {"memory made code", {[](pid_t) { return makesCode(); }, kNone}},
#if !defined(__SANITIZE_ADDRESS__)
          {"memory past the limit", {[](pid_t) { return maps(std::size_t{1} << 30, PROT_READ | PROT_WRITE); }, kNone}},
#endif
          {"a higher limit", {[](pid_t) { return raisesItsLimit(); }, kNone}},
          {"another file's descriptor",
           {[](pid_t parent) { return ::syscall(SYS_pidfd_getfd, ::syscall(SYS_pidfd_open, parent, 0), 0, 0) >= 0; },
            kNone}},
          {"a change of user", {[](pid_t) { return ::setuid(65534) == 0; }, kNone}},
          {"a ring of calls",
           {[](pid_t) { return ::syscall(SYS_io_uring_setup, 1, nullptr) >= 0 || errno == EFAULT; }, kNone}},
    });
  }

  // Each with all protection, without Landlock, and without what the row says.
  void stops() {
    const auto [attempt, other] = fetchedRow<std::pair<Attempt, std::uint32_t>>();
    for (const std::uint32_t unwanted : {kNone, kLandlock, other}) QVERIFY(!succeeds(attempt, unwanted));
  }

  void allowsWhatDecodingNeeds() {
    for (const Attempt& need : {Attempt([](pid_t) { return runsThreads(); }),
                                Attempt([](pid_t) { return maps(std::size_t{32} << 20, PROT_READ | PROT_WRITE); }),
                                Attempt([](pid_t) { return ::close(STDIN_FILENO) == 0; })}) {
      QVERIFY(succeeds(need, kNone));
    }
  }
};

QTEST_GUILESS_MAIN(SandboxTest)
#include "SandboxTest.moc"
