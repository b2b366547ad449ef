#include "Sandbox.h"

#include <linux/landlock.h>
#include <sched.h>
#include <seccomp.h>
#include <sys/mman.h>
#include <sys/prctl.h>
#include <sys/resource.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <initializer_list>
#include <memory>

#include "Messages.h"

namespace lumagrid {

namespace {

// Every right that this system's version of Landlock knows is handled, and none is given. The oldest system that this
// builds on has headers that know the first two versions alone.
bool restrictFiles() {
  struct {
    std::uint64_t files;
    std::uint64_t network;
    std::uint64_t scopes;
  } rules{};
  const long version = ::syscall(SYS_landlock_create_ruleset, nullptr, 0, LANDLOCK_CREATE_RULESET_VERSION);
  if (version < 1) return false;
  const int fileRights = version >= 5 ? 16 : version >= 3 ? 15 : version >= 2 ? 14 : 13;
  rules.files = (std::uint64_t{1} << fileRights) - 1;
  rules.network = version >= 4 ? 3 : 0;  // to bind and to connect
  rules.scopes = version >= 6 ? 3 : 0;   // abstract sockets and signals
  const std::size_t size = (version >= 6 ? 3 : version >= 4 ? 2 : 1) * sizeof rules.files;
  const FileDescriptor ruleset =
      FileDescriptor::from([&] { return static_cast<int>(::syscall(SYS_landlock_create_ruleset, &rules, size, 0)); });
  return ruleset.isOpen() && ::syscall(SYS_landlock_restrict_self, ruleset.number(), 0) == 0;
}

bool limitResources(const DecoderLimits& limits) {
  constexpr rlim_t kProcessorSeconds = 3600;  // the window replaces it long before
  constexpr rlim_t kDescriptors = 64;
  const std::int64_t space = usedAddressSpace();
  const struct {
    __rlimit_resource resource;
    rlimit limit;
  } all[] = {
      {RLIMIT_AS, {static_cast<rlim_t>(space + limits.freeMemory), static_cast<rlim_t>(space + limits.mostMemory)}},
      {RLIMIT_CPU, {kProcessorSeconds, kProcessorSeconds}},
      {RLIMIT_NOFILE, {kDescriptors, kDescriptors}},
      {RLIMIT_FSIZE, {0, 0}},
      {RLIMIT_CORE, {0, 0}},
  };
  bool areSet = space > 0;
  for (const auto& [resource, wanted] : all) {
    rlimit limit{};
    areSet = ::getrlimit(resource, &limit) == 0 && areSet;
    limit.rlim_max = std::min(limit.rlim_max, wanted.rlim_max);  // a narrower one that is in force stays
    limit.rlim_cur = std::min(limit.rlim_max, wanted.rlim_cur);
    areSet = ::setrlimit(resource, &limit) == 0 && areSet;
  }
  return areSet;
}

bool filterCalls(int socket) {
  const std::unique_ptr<void, decltype(&seccomp_release)> filter(seccomp_init(SCMP_ACT_ERRNO(EPERM)), &seccomp_release);
  if (!filter) return false;
  bool isWhole = true;
  const auto allow = [&](int call, std::initializer_list<scmp_arg_cmp> conditions = {}) {
    isWhole = seccomp_rule_add_array(filter.get(), SCMP_ACT_ALLOW, call, static_cast<unsigned>(conditions.size()),
                                     conditions.begin()) == 0 &&
              isWhole;
  };
  for (const int call : {
         // Memory, but for mmap() and mprotect().
         SCMP_SYS(brk), SCMP_SYS(munmap), SCMP_SYS(mremap), SCMP_SYS(madvise),
             // What is open, and what the toolkit's threads wake each other with.
             SCMP_SYS(eventfd2), SCMP_SYS(write), SCMP_SYS(read), SCMP_SYS(pread64), SCMP_SYS(lseek), SCMP_SYS(close),
             SCMP_SYS(poll), SCMP_SYS(ppoll),
             // Threads, but for clone().
             SCMP_SYS(futex), SCMP_SYS(set_robust_list), SCMP_SYS(rseq), SCMP_SYS(sched_yield),
             SCMP_SYS(sched_getaffinity), SCMP_SYS(gettid), SCMP_SYS(getpid), SCMP_SYS(membarrier),
             SCMP_SYS(rt_sigprocmask), SCMP_SYS(rt_sigaction), SCMP_SYS(rt_sigreturn), SCMP_SYS(sigaltstack),
             SCMP_SYS(restart_syscall), SCMP_SYS(exit), SCMP_SYS(exit_group),
#if defined(__SANITIZE_ADDRESS__)
             // How a sanitizer asks whether memory can be read.
             SCMP_SYS(pipe), SCMP_SYS(pipe2),
#endif
             // Time, and what is random.
             SCMP_SYS(clock_gettime), SCMP_SYS(clock_nanosleep), SCMP_SYS(nanosleep), SCMP_SYS(gettimeofday),
             SCMP_SYS(getrandom), SCMP_SYS(getrusage), SCMP_SYS(sysinfo),
       }) {
    allow(call);
  }
  for (const int call : {SCMP_SYS(mmap), SCMP_SYS(mprotect)}) {
    allow(call, {SCMP_A2(SCMP_CMP_MASKED_EQ, PROT_EXEC, 0)});
  }
  for (const int call : {SCMP_SYS(recvmsg), SCMP_SYS(sendmsg)}) {
    allow(call, {SCMP_A0(SCMP_CMP_EQ, static_cast<scmp_datum_t>(socket))});
  }
  constexpr scmp_datum_t kThread = CLONE_THREAD | CLONE_VM | CLONE_SIGHAND;
  allow(SCMP_SYS(clone), {SCMP_A0(SCMP_CMP_MASKED_EQ, kThread, kThread)});
  // A filter cannot see the flags of clone3(); told that there is none, the C library takes clone().
  isWhole = isWhole && seccomp_rule_add(filter.get(), SCMP_ACT_ERRNO(ENOSYS), SCMP_SYS(clone3), 0) == 0;
  return isWhole && seccomp_load(filter.get()) == 0;
}

}  // namespace

std::int64_t usedAddressSpace() {
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
  return std::int64_t{1} << 47;  // a sanitizer reserves whatever it likes
#else
  constexpr std::int64_t kThreads = std::int64_t{128} << 20;    // their stacks
  constexpr std::int64_t kLeftovers = std::int64_t{192} << 20;  // what the C library keeps of pictures before
  long long pages = 0;
  std::FILE* const statistics = std::fopen("/proc/self/statm", "re");
  if (statistics == nullptr) return 0;
  if (std::fscanf(statistics, "%lld", &pages) != 1) pages = 0;
  std::fclose(statistics);
  return pages > 0 ? pages * ::sysconf(_SC_PAGESIZE) + kThreads + kLeftovers : 0;
#endif
}

std::uint32_t lockIn(int socket, const DecoderLimits& limits, std::uint32_t unwanted) {
  std::uint32_t missing = 0;
  const auto put = [&](Protection protection, const auto& inForce) {
    const auto bit = static_cast<std::uint32_t>(protection);
    if ((unwanted & bit) != 0 || !inForce()) missing |= bit;
  };
  put(Protection::limits, [&] { return limitResources(limits); });
  ::prctl(PR_SET_DUMPABLE, 0, 0, 0, 0);
  ::prctl(PR_SET_NO_NEW_PRIVS, 1, 0, 0, 0);
  put(Protection::landlock, &restrictFiles);
  put(Protection::seccomp, [&] { return filterCalls(socket); });
  return missing;
}

}  // namespace lumagrid
