#pragma once

#include <cstddef>
#include <cstdint>

namespace lumagrid {

// Where the memory of large pictures comes from, and how much of it there is. Calls come from any thread.
class PictureMemory {
 public:
  virtual ~PictureMemory() = default;

  // Whether the picture that is being decoded may take `bytes` more. May wait for others to be done.
  [[nodiscard]] virtual bool claim(std::int64_t bytes) = 0;

  // Aligned to a page at least; null when there is none. Its content is not set.
  [[nodiscard]] virtual void* allocate(std::size_t bytes) = 0;
  virtual void release(void* memory) = 0;
};

// The heap, with pictureByteLimit() for each claim, unless another is set before the first picture is decoded.
[[nodiscard]] PictureMemory& pictureMemory();
void setPictureMemory(PictureMemory& memory);

// What a decoder asks once it knows from the headers what the file will cost, and before it spends it: the bytes of
// everything that it holds at its peak, file and finished picture included. Several claims of one decode add up.
[[nodiscard]] inline bool claimMemory(std::int64_t bytes) {
  return pictureMemory().claim(bytes);
}

}  // namespace lumagrid
