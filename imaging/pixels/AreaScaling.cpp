#include "AreaScaling.h"

#include <algorithm>
#include <cmath>
#include <vector>

namespace lumagrid {
namespace {

constexpr std::uint32_t kOne = 1 << 16;  // weights of one target pixel add up to it

// The source pixels that one target pixel covers, and how much of each.
struct Span {
  int first = 0;
  int count = 0;
  size_t weights = 0;  // index of the first of `count` weights
};

struct Coverage {
  std::vector<Span> spans;
  std::vector<std::uint16_t> weights;  // kOne - 1 stands for the whole of kOne
};

Coverage coverage(int source, int target) {
  Coverage result;
  result.spans.reserve(static_cast<size_t>(target));
  for (std::int64_t index = 0; index < target; ++index) {
    // In units of 1/target of a source pixel, so that all edges are integers.
    const std::int64_t begin = index * source;
    const std::int64_t end = begin + source;
    Span span;
    span.first = static_cast<int>(begin / target);
    span.count = static_cast<int>((end + target - 1) / target) - span.first;
    span.weights = result.weights.size();
    std::uint32_t used = 0;
    for (int step = 0; step < span.count; ++step) {
      const std::int64_t pixelBegin = std::int64_t{span.first + step} * target;
      const std::int64_t covered = std::min(end, pixelBegin + target) - begin;
      // Rounding the sum so far, not each part, keeps the total exact.
      const auto sum = static_cast<std::uint32_t>((covered * kOne + source / 2) / source);
      result.weights.push_back(static_cast<std::uint16_t>(std::min(sum - used, kOne - 1)));
      used = sum;
    }
    result.spans.push_back(span);
  }
  return result;
}

void addRow(std::uint32_t* __restrict sums, const uchar* __restrict row, qsizetype count, std::uint16_t weight) {
  for (qsizetype at = 0; at < count; ++at) sums[at] += static_cast<std::uint32_t>(row[at] * weight);
}

QImage shrunk(const QImage& source, QSize size) {
  QImage result(size, source.format());
  if (result.isNull()) return result;
  const Coverage columns = coverage(source.width(), size.width());
  const Coverage rows = coverage(source.height(), size.height());
  const qsizetype channels = qsizetype{source.width()} * 4;
  std::vector<std::uint32_t> sums(static_cast<size_t>(channels));
  for (int y = 0; y < size.height(); ++y) {
    const Span& span = rows.spans[static_cast<size_t>(y)];
    std::fill(sums.begin(), sums.end(), 0);
    for (int step = 0; step < span.count; ++step) {
      addRow(sums.data(), source.constScanLine(span.first + step), channels,
             rows.weights[span.weights + static_cast<size_t>(step)]);
    }
    uchar* target = result.scanLine(y);
    for (const Span& column : columns.spans) {
      std::uint32_t means[4] = {kOne * 128, kOne * 128, kOne * 128, kOne * 128};  // half of the last shift
      const std::uint32_t* sum = sums.data() + qsizetype{column.first} * 4;
      for (int step = 0; step < column.count; ++step, sum += 4) {
        const std::uint32_t weight = columns.weights[column.weights + static_cast<size_t>(step)];
        for (int channel = 0; channel < 4; ++channel) means[channel] += (sum[channel] >> 8) * weight;
      }
      for (const std::uint32_t mean : means) *target++ = static_cast<uchar>(mean >> 24);
    }
  }
  return result;
}

}  // namespace

QSize shownSize(QSize size, double pixelAspect, std::int64_t bound) {
  double width = size.width();
  double height = size.height();
  if (pixelAspect > 1) {
    height = std::round(height * pixelAspect);
  } else {
    width = std::round(width / pixelAspect);
  }
  const double longer = std::max(width, height);
  if (bound > 0 && longer > static_cast<double>(bound)) {
    const double scale = static_cast<double>(bound) / longer;
    width = std::max(1.0, std::round(width * scale));
    height = std::max(1.0, std::round(height * scale));
  }
  return {static_cast<int>(width), static_cast<int>(height)};
}

QImage scaledTo(QImage pixels, QSize size) {
  if (pixels.size() == size) return pixels;
  if (size.width() <= pixels.width() && size.height() <= pixels.height()) return shrunk(pixels, size);
  return pixels.scaled(size, Qt::IgnoreAspectRatio, Qt::SmoothTransformation);
}

}  // namespace lumagrid
