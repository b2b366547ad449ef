#pragma once

#include <cstdint>

namespace lumagrid {

// How much memory one decoded picture may take, in bytes: a quarter of the machine's memory, and never above 4 GiB.
// What a file says of its size is measured against it before any memory is taken. Any thread.
[[nodiscard]] std::int64_t pictureByteLimit();

// True when a picture of this size (in pixels, 4 bytes each) is neither empty nor above the limit. Any values may be
// asked, negative ones and those that overflow included.
[[nodiscard]] bool isPictureSizeSane(std::int64_t width, std::int64_t height);

}  // namespace lumagrid
