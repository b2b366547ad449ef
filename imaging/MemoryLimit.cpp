#include "MemoryLimit.h"

#include <algorithm>
#include <limits>

#include "MemoryBudget.h"

namespace lumagrid {
namespace {

constexpr std::int64_t kLargestLimit = std::int64_t{4} << 30;
constexpr std::int64_t kLimitOfUnknownMachine = std::int64_t{1} << 30;
constexpr std::int64_t kBytesPerPixel = 4;

}  // namespace

std::int64_t pictureByteLimit() {
  static const std::int64_t limit = std::min(machineMemory().value_or(4 * kLimitOfUnknownMachine) / 4, kLargestLimit);
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
