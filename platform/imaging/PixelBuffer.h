#pragma once

#include <QImage>
#include <QSize>
#include <cstddef>

namespace lumagrid {

// A picture whose pixels are not set yet; null when memory is short. Large ones lie on huge pages where the system has
// them: touching 96 MB for the first time took 9 ms instead of 335 on a virtual machine, more than the decoding itself.
[[nodiscard]] QImage unsetPixels(QSize size, QImage::Format format);

// While one lives, the memory of the large picture that was freed last waits for the next of its size: memory that was
// used before costs nothing to touch. Any thread.
class PixelReuse {
 public:
  PixelReuse();
  PixelReuse(const PixelReuse&) = delete;
  PixelReuse& operator=(const PixelReuse&) = delete;
  ~PixelReuse();
};

// Wishes for huge pages under memory that is about to be written for the first time; nothing depends on it.
void preferHugePages(void* memory, std::size_t bytes);

}  // namespace lumagrid
