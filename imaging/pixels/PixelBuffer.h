#pragma once

#include <QImage>
#include <QSize>

namespace lumagrid {

// A picture whose pixels are not set yet; null when memory is short. Large ones begin and end with a huge page, for
// systems that give these.
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
