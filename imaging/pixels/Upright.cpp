#include "Upright.h"

#include <algorithm>

#include "PixelBuffer.h"

namespace lumagrid {
namespace {

enum class Mirror : unsigned char { no, yes };

// The rows of the result are the columns of the source; then mirrored. Walks in squares whose columns stay in the
// cache.
QImage transposed(const QImage& source, Mirror horizontal, Mirror vertical) {
  constexpr int kBlock = 32;
  QImage result = unsetPixels(source.size().transposed(), source.format());
  if (result.isNull()) return result;
  const auto* from = reinterpret_cast<const std::uint32_t*>(source.constBits());
  auto* to = reinterpret_cast<std::uint32_t*>(result.bits());
  const qsizetype fromStride = source.bytesPerLine() / 4;
  const qsizetype toStride = result.bytesPerLine() / 4;
  const int width = result.width();
  const int height = result.height();
  for (int top = 0; top < height; top += kBlock) {
    const int bottom = std::min(top + kBlock, height);
    for (int left = 0; left < width; left += kBlock) {
      const int right = std::min(left + kBlock, width);
      for (int y = top; y < bottom; ++y) {
        std::uint32_t* line = to + y * toStride;
        const std::uint32_t* column = from + (vertical == Mirror::yes ? height - 1 - y : y);
        for (int x = left; x < right; ++x) {
          line[x] = column[(horizontal == Mirror::yes ? width - 1 - x : x) * fromStride];
        }
      }
    }
  }
  return result;
}

// In place, whoever owns the buffer: QImage's own mirroring copies what it has not allocated.
QImage mirrored(QImage pixels, Mirror horizontal, Mirror vertical) {
  const int width = pixels.width();
  const int height = pixels.height();
  const auto row = [&pixels](int y) { return reinterpret_cast<std::uint32_t*>(pixels.scanLine(y)); };
  if (vertical == Mirror::yes) {
    for (int y = 0; y < height / 2; ++y) std::swap_ranges(row(y), row(y) + width, row(height - 1 - y));
  }
  if (horizontal == Mirror::yes) {
    for (int y = 0; y < height; ++y) std::reverse(row(y), row(y) + width);
  }
  return pixels;
}

}  // namespace

QImage upright(QImage pixels, int orientation) {
  switch (orientation) {
    case 2:
      return mirrored(std::move(pixels), Mirror::yes, Mirror::no);
    case 3:
      return mirrored(std::move(pixels), Mirror::yes, Mirror::yes);
    case 4:
      return mirrored(std::move(pixels), Mirror::no, Mirror::yes);
    case 5:
      return transposed(pixels, Mirror::no, Mirror::no);
    case 6:
      return transposed(pixels, Mirror::yes, Mirror::no);
    case 7:
      return transposed(pixels, Mirror::yes, Mirror::yes);
    case 8:
      return transposed(pixels, Mirror::no, Mirror::yes);
    default:
      return pixels;
  }
}

}  // namespace lumagrid
