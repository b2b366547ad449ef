#pragma once

#include <functional>

namespace lumagrid {

[[nodiscard]] int coreCount();

// Calls work(0) to work(count - 1), each once and in this order but side by side: on the calling thread and on helpers
// of its priority, `threads` in all, fewer when the system has no more. Returns when all have ended. `work` must not
// throw. Any thread.
void parallelFor(int count, const std::function<void(int)>& work, int threads = coreCount());

}  // namespace lumagrid
