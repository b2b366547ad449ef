#include "WorkerPool.h"

#include <sys/resource.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <memory>
#include <thread>

namespace lumagrid {

namespace {

// One call of parallelFor(). A helper may begin after the call has returned: it then finds nothing left to do, and
// touches nothing but this.
struct Loop {
  const std::function<void(int)>& work;
  const int count;
  std::atomic<int> next = 0;
  std::atomic<int> ended = 0;

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

}  // namespace

int coreCount() {
  return std::max(1, static_cast<int>(std::thread::hardware_concurrency()));
}

QThreadPool& workerPool() {
  struct Pool : QThreadPool {
    Pool() { setMaxThreadCount(std::max(2, coreCount())); }
  };
  static Pool pool;
  return pool;
}

void startWork(std::function<void()> work, int priority) {
  workerPool().start(
      [work = std::move(work)] {
        lowerPriorityOfWorker();
        work();
      },
      priority);
}

void lowerPriorityOfWorker() {
  constexpr int kNiceness = 10;
  thread_local bool isLowered = false;
  if (std::exchange(isLowered, true)) return;
  // A thread begins with the niceness of the one that started it, which may be another worker.
  ::setpriority(PRIO_PROCESS, static_cast<id_t>(::gettid()),
                ::getpriority(PRIO_PROCESS, static_cast<id_t>(::getpid())) + kNiceness);
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
