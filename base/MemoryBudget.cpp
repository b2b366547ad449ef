#include "MemoryBudget.h"

#include <unistd.h>

#include <algorithm>
#include <cinttypes>
#include <cstdio>
#include <fstream>
#include <string>

namespace lumagrid {

std::optional<std::int64_t> machineMemory() {
  const std::int64_t pages = sysconf(_SC_PHYS_PAGES);
  const std::int64_t pageSize = sysconf(_SC_PAGESIZE);
  std::int64_t bytes = 0;
  if (pages <= 0 || pageSize <= 0 || __builtin_mul_overflow(pages, pageSize, &bytes)) return std::nullopt;
  return bytes;
}

std::optional<std::int64_t> availableMemory() {
  std::ifstream file("/proc/meminfo");
  for (std::string line; std::getline(file, line);) {
    std::int64_t kilobytes = 0;
    if (std::sscanf(line.c_str(), "MemAvailable: %" SCNd64, &kilobytes) == 1) return kilobytes << 10;
  }
  return std::nullopt;
}

std::size_t keptBytes() {
  constexpr std::int64_t kMost = std::int64_t{296} << 20;
  static const std::int64_t bytes = std::min(machineMemory().value_or(0) / 8, kMost);
  return static_cast<std::size_t>(bytes);
}

DecodingBudget decodingBudget(int decoders) {
  constexpr std::int64_t kMost = std::int64_t{8} << 30;
  constexpr std::int64_t kMostUnasked = std::int64_t{192} << 20;  // a photo of 24 megapixels, and its coefficients
  const std::int64_t bytes = std::min(machineMemory().value_or(0) / 4, kMost) - static_cast<std::int64_t>(keptBytes());
  const std::int64_t unasked = std::min(kMostUnasked, bytes / 2 / decoders);
  return {unasked, bytes - decoders * unasked};
}

}  // namespace lumagrid
