#pragma once

#include <QThreadPool>
#include <functional>
#include <limits>

namespace lumagrid {

[[nodiscard]] int coreCount();

// The process's only pool of threads: one for each core, two at least. What waits in it goes by priority, equal ones in
// the order of asking; no work waits for other work that has not begun. Thread-safe.
[[nodiscard]] QThreadPool& workerPool();

// What the window waits for goes before everything else.
inline constexpr int kUrgentWork = std::numeric_limits<int>::max();

// Runs `work` in the pool.
void startWork(std::function<void()> work, int priority);

// Puts the calling thread of the pool below the main thread, once: the toolkit's pool leaves priorities to the system,
// which knows none for such threads. For work that startWork() does not run.
void lowerPriorityOfWorker();

// Calls work(0) to work(count - 1), each once and in this order but side by side: on the calling thread and on those of
// the pool that are free. Returns when all have ended. `work` must not throw. Any thread.
void parallelFor(int count, const std::function<void(int)>& work);

}  // namespace lumagrid
