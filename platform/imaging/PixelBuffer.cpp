#include "PixelBuffer.h"

#include <sys/mman.h>

#include <cstdint>
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
  preferHugePages(buffer, static_cast<size_t>(wholePages));
  return QImage(static_cast<uchar*>(buffer), size.width(), size.height(), bytesPerPixel * size.width(), format,
                &std::free, buffer);
}

void preferHugePages(void* memory, std::size_t bytes) {
  // The system takes whole pages only.
  constexpr std::uintptr_t kPage = 4096;
  const auto begin = (reinterpret_cast<std::uintptr_t>(memory) + kPage - 1) / kPage * kPage;
  const auto end = (reinterpret_cast<std::uintptr_t>(memory) + bytes) / kPage * kPage;
  if (end > begin) ::madvise(reinterpret_cast<void*>(begin), end - begin, MADV_HUGEPAGE);
}

}  // namespace lumagrid
