#include "ParallelFor.h"

#include <algorithm>
#include <atomic>
#include <system_error>
#include <thread>
#include <vector>

namespace lumagrid {

int coreCount() {
  return std::max(1, static_cast<int>(std::thread::hardware_concurrency()));
}

void parallelFor(int count, const std::function<void(int)>& work, int threads) {
  std::atomic<int> next = 0;
  const auto workOff = [&] {
    for (int index = next++; index < count; index = next++) work(index);
  };
  std::vector<std::jthread> helpers;
  try {
    for (int helper = 1; helper < std::min(count, threads); ++helper) helpers.emplace_back(workOff);
  } catch (const std::system_error&) {
    // No more threads: their share falls to the others.
  }
  workOff();
}

}  // namespace lumagrid
