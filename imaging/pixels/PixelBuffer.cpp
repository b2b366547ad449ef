#include "PixelBuffer.h"

#include "MemoryLimit.h"
#include "PictureMemory.h"

namespace lumagrid {

QImage unsetPixels(QSize size, QImage::Format format) {
  constexpr qsizetype kLarge = qsizetype{4} << 20;
  if (!isPictureSizeSane(size.width(), size.height())) return {};
  const qsizetype stride = QImage::toPixelFormat(format).bitsPerPixel() / 8 * qsizetype{size.width()};
  const qsizetype bytes = stride * size.height();
  if (stride % 4 != 0 || bytes < kLarge) return QImage(size, format);
  void* const memory = pictureMemory().allocate(static_cast<std::size_t>(bytes));
  if (memory == nullptr) return {};
  const auto release = [](void* allocated) { pictureMemory().release(allocated); };
  return QImage(static_cast<uchar*>(memory), size.width(), size.height(), stride, format, release, memory);
}

}  // namespace lumagrid
