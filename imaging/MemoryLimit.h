#pragma once

#include <cstdint>

namespace lumagrid {

// How much memory one decoded picture may take, in bytes: a quarter of the machine's memory, and never above 4 GiB.
// What a file says of its size is measured against it before any memory is taken. Any thread.
[[nodiscard]] std::int64_t pictureByteLimit();

// True when a picture of this size (in pixels, 4 bytes each) is neither empty nor above the limit. Any values may be
// asked, negative ones and those that overflow included.
[[nodiscard]] bool isPictureSizeSane(std::int64_t width, std::int64_t height);

// True when a file of `fileBytes` can hold that many pixels in a packing that takes at least one bit for a block of 64
// of them, or one byte for 4096: JPEG and GIF. Up to 16 megapixels are given on trust, so that files cut short are
// shown.
[[nodiscard]] bool isPictureSizeCredible(std::int64_t width, std::int64_t height, std::int64_t fileBytes);

}  // namespace lumagrid
