#include "MemoryLimit.h"

#include <unistd.h>

#include <algorithm>
#include <limits>

namespace lumagrid {
namespace {

constexpr std::int64_t kLargestLimit = std::int64_t{4} << 30;
constexpr std::int64_t kLimitOfUnknownMachine = std::int64_t{1} << 30;
constexpr std::int64_t kBytesPerPixel = 4;

std::int64_t limitOfThisMachine() {
  const std::int64_t pages = sysconf(_SC_PHYS_PAGES);
  const std::int64_t pageSize = sysconf(_SC_PAGESIZE);
  std::int64_t physical = 0;
  if (pages <= 0 || pageSize <= 0 || __builtin_mul_overflow(pages, pageSize, &physical)) return kLimitOfUnknownMachine;
  return std::min(physical / 4, kLargestLimit);
}

}  // namespace

std::int64_t pictureByteLimit() {
  static const std::int64_t limit = limitOfThisMachine();
  return limit;
}

bool isPictureSizeSane(std::int64_t width, std::int64_t height) {
  constexpr std::int64_t kLongestSide = std::numeric_limits<std::int32_t>::max() / kBytesPerPixel - 1;
  if (width < 1 || height < 1 || width > kLongestSide || height > kLongestSide) return false;
  return width * height <= pictureByteLimit() / kBytesPerPixel;
}

bool isPictureSizeCredible(std::int64_t width, std::int64_t height, std::int64_t fileBytes) {
  constexpr std::int64_t kPixelsGivenOnTrust = std::int64_t{16} << 20;
  constexpr std::int64_t kPixelsPerByte = 4096;
  const std::int64_t pixels = width * height;
  return pixels <= kPixelsGivenOnTrust || pixels / kPixelsPerByte <= fileBytes;
}

}  // namespace lumagrid
