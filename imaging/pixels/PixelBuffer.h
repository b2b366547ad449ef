#pragma once

#include <QImage>
#include <QSize>

namespace lumagrid {

// A picture whose pixels are not set yet; null when memory is short, or the size is above the limit for pictures. The
// memory of large ones begins at a multiple of 2 MB and has a multiple of that, so that systems with huge pages can
// give such pages for all of it, which costs far fewer page faults. Any thread.
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

}  // namespace lumagrid
