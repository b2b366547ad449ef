#include "PixelBuffer.h"

#include <cstdlib>
#include <memory>
#include <mutex>
#include <utility>

#include "MemoryLimit.h"

namespace lumagrid {

namespace {

// The pixels of one large picture.
struct Buffer {
  void* memory;
  std::size_t bytes;
};

struct FreeBuffer {
  void operator()(Buffer* buffer) const {
    std::free(buffer->memory);
    delete buffer;
  }
};

std::mutex spareMutex;  // guards the two below
int reuseCount = 0;
std::unique_ptr<Buffer, FreeBuffer> spare;

void release(void* info) {
  std::unique_ptr<Buffer, FreeBuffer> buffer(static_cast<Buffer*>(info));
  const std::scoped_lock lock(spareMutex);
  if (reuseCount > 0) spare.swap(buffer);
}

std::unique_ptr<Buffer, FreeBuffer> takeSpare(std::size_t bytes) {
  const std::scoped_lock lock(spareMutex);
  return spare && spare->bytes == bytes ? std::exchange(spare, nullptr) : nullptr;
}

std::unique_ptr<Buffer, FreeBuffer> newBuffer(std::size_t bytes, std::size_t alignment) {
  void* const memory = std::aligned_alloc(alignment, bytes);
  if (memory == nullptr) return nullptr;
  return std::unique_ptr<Buffer, FreeBuffer>(new Buffer{memory, bytes});
}

}  // namespace

QImage unsetPixels(QSize size, QImage::Format format) {
  constexpr qsizetype kHugePage = qsizetype{2} << 20;
  if (!isPictureSizeSane(size.width(), size.height())) return {};
  const qsizetype bytesPerPixel = QImage::toPixelFormat(format).bitsPerPixel() / 8;
  const qsizetype bytes = bytesPerPixel * size.width() * size.height();
  if (bytesPerPixel < 4 || bytes < 2 * kHugePage) return QImage(size, format);
  const auto wholePages = static_cast<std::size_t>((bytes + kHugePage - 1) / kHugePage * kHugePage);
  auto buffer = takeSpare(wholePages);
  if (!buffer) buffer = newBuffer(wholePages, kHugePage);
  if (!buffer) return {};
  auto* const memory = static_cast<uchar*>(buffer->memory);
  return QImage(memory, size.width(), size.height(), bytesPerPixel * size.width(), format, &release, buffer.release());
}

PixelReuse::PixelReuse() {
  const std::scoped_lock lock(spareMutex);
  ++reuseCount;
}

PixelReuse::~PixelReuse() {
  const std::scoped_lock lock(spareMutex);
  if (--reuseCount == 0) spare.reset();
}

}  // namespace lumagrid
