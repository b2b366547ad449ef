#include "WorkerPool.h"

#include <malloc.h>
#include <sys/resource.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <memory>
#include <thread>

#include "ThreadHandOver.h"

namespace lumagrid {

namespace {

// One call of parallelFor(). A helper may begin after the call has returned: it then finds nothing left to do, and
// touches nothing but this.
struct Loop {
  const std::function<void(int)>& work;
  const int count;
  std::atomic<int> next = 0;
  std::atomic<int> ended = 0;

  Loop(const std::function<void(int)>& itsWork, int itsCount) : work(itsWork), count(itsCount) {}

  void workOff() {
    for (int index = next++; index < count; index = next++) {
      work(index);
      if (++ended == count) ended.notify_all();
    }
  }
  void waitForEnd() const {
    for (int seen = ended; seen < count; seen = ended) ended.wait(seen);
  }
};

// What a thread of the pool does when it begins and when it ends.
struct Worker {
  Worker() {
    constexpr int kNiceness = 10;
    // It begins with the niceness of the thread that started it, which may be another worker.
    ::setpriority(PRIO_PROCESS, static_cast<id_t>(::gettid()),
                  ::getpriority(PRIO_PROCESS, static_cast<id_t>(::getpid())) + kNiceness);
  }
  Worker(const Worker&) = delete;
  Worker& operator=(const Worker&) = delete;
  // The C library keeps what was freed in between: tens of megabytes that decoders took.
  ~Worker() { ::malloc_trim(0); }
};

}  // namespace

int coreCount() {
  return std::max(1, static_cast<int>(std::thread::hardware_concurrency()));
}

QThreadPool& workerPool() {
  struct Pool : QThreadPool {
    Pool() {
      constexpr int kIdleMs = 3000;
      setMaxThreadCount(std::max(2, coreCount()));
      setExpiryTimeout(kIdleMs);
    }
  };
  static Pool pool;
  return pool;
}

void startWork(std::function<void()> work, int priority) {
  workerPool().start(
      [handed = HandedOver(std::move(work))]() mutable {
        const auto work = handed.take();
        enterWorker();
        work();
      },
      priority);
}

void enterWorker() {
  thread_local const Worker worker;
  (void)worker;
}

void parallelFor(int count, const std::function<void(int)>& work) {
  const auto loop = std::make_shared<Loop>(work, count);
  for (int helper = 1; helper < std::min(count, coreCount()); ++helper) {
    startWork([loop] { loop->workOff(); }, kUrgentWork);
  }
  loop->workOff();
  loop->waitForEnd();
}

}  // namespace lumagrid
