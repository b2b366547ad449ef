#include "PixelBuffer.h"

#include <sys/mman.h>

#include <cstdlib>

#include "MemoryLimit.h"

namespace lumagrid {

QImage unsetPixels(QSize size, QImage::Format format) {
  constexpr qsizetype kHugePage = qsizetype{2} << 20;
  if (!isPictureSizeSane(size.width(), size.height())) return {};
  const qsizetype bytesPerPixel = QImage::toPixelFormat(format).bitsPerPixel() / 8;
  const qsizetype bytes = bytesPerPixel * size.width() * size.height();
  if (bytesPerPixel < 4 || bytes < 2 * kHugePage) return QImage(size, format);
  const qsizetype wholePages = (bytes + kHugePage - 1) / kHugePage * kHugePage;
  void* const buffer = std::aligned_alloc(static_cast<size_t>(kHugePage), static_cast<size_t>(wholePages));
  if (buffer == nullptr) return {};
#ifdef MADV_HUGEPAGE
  ::madvise(buffer, static_cast<size_t>(wholePages), MADV_HUGEPAGE);  // a wish: nothing depends on it
#endif
  return QImage(static_cast<uchar*>(buffer), size.width(), size.height(), bytesPerPixel * size.width(), format,
                &std::free, buffer);
}

}  // namespace lumagrid
