#pragma once

#include <QThreadPool>
#include <functional>
#include <limits>

namespace lumagrid {

[[nodiscard]] int coreCount();

// The process's only pool of threads: one for each core, two at least, which end when nothing was to do for some
// seconds. What waits in it goes by priority, equal ones in the order of asking; no work waits for other work that has
// not begun. Thread-safe.
[[nodiscard]] QThreadPool& workerPool();

// What the window waits for goes before everything else.
inline constexpr int kUrgentWork = std::numeric_limits<int>::max();

// Runs `work` in the pool.
void startWork(std::function<void()> work, int priority);

// To be called at the begin of work that startWork() does not run: puts the thread below the main thread, since the
// toolkit's pool knows no priority that this system heeds, and has it give freed memory back to the system when it
// ends.
void enterWorker();

// Calls work(0) to work(count - 1), each once and in this order but side by side: on the calling thread and on those of
// the pool that are free. Returns when all have ended. `work` must not throw. Any thread.
void parallelFor(int count, const std::function<void(int)>& work);

}  // namespace lumagrid
