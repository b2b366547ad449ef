#include "PhotoPyramid.h"
#include "WorkerPool.h"

#include <algorithm>
#include <cmath>
#include <cstdint>

namespace lumagrid {

namespace {

QImage inTextureFormat(QImage photo) {
  if (photo.format() == QImage::Format_RGBX8888 || photo.format() == QImage::Format_RGBA8888_Premultiplied) {
    return photo;
  }
  return std::move(photo).convertToFormat(photo.hasAlphaChannel() ? QImage::Format_RGBA8888_Premultiplied
                                                                  : QImage::Format_RGBX8888);
}

QSize halvedSize(QSize size) {
  return {(size.width() + 1) / 2, (size.height() + 1) / 2};
}

// The source pixels that make one target pixel, with weights that add up to 256.
struct Span {
  int first = 0;
  int count = 0;
  std::size_t weights = 0;  // index of the first weight
};

struct Filter {
  std::vector<Span> spans;
  std::vector<std::uint16_t> weights;
};

Filter areaFilter(int source, int target) {
  Filter filter;
  const double ratio = static_cast<double>(source) / target;
  for (int i = 0; i < target; ++i) {
    const double begin = i * ratio;
    const double end = std::min((i + 1) * ratio, static_cast<double>(source));
    const int first = std::min(static_cast<int>(begin), source - 1);
    const int last = std::clamp(static_cast<int>(std::ceil(end)) - 1, first, source - 1);
    filter.spans.push_back({first, last - first + 1, filter.weights.size()});
    // Rounding the running sum instead of each weight keeps the total exact, so that white stays white.
    long given = 0;
    for (int j = first; j <= last; ++j) {
      const double covered = j == last ? 1.0 : (j + 1 - begin) / (end - begin);
      const long sum = std::lround(256 * covered);
      filter.weights.push_back(static_cast<std::uint16_t>(sum - given));
      given = sum;
    }
  }
  return filter;
}

// sums[i] = the weighted sum of the span's rows at byte i: at most 255 * 256, which fits.
void sumRows(const QImage& image, const Span& span, const std::uint16_t* weights, std::vector<std::uint16_t>& sums) {
  constexpr int kRowsAtOnce = 4;  // fewer passes over the sums
  const std::size_t bytes = sums.size();
  for (int start = 0; start < span.count; start += kRowsAtOnce) {
    const std::uint8_t* rows[kRowsAtOnce];
    std::uint16_t w[kRowsAtOnce];
    for (int k = 0; k < kRowsAtOnce; ++k) {
      const bool inside = start + k < span.count;
      rows[k] = image.constScanLine(span.first + (inside ? start + k : start));
      w[k] = inside ? weights[start + k] : std::uint16_t{0};
    }
    std::uint16_t* const out = sums.data();
    const auto weighted = [&rows, &w](std::size_t i) {
      return static_cast<std::uint16_t>(rows[0][i] * w[0] + rows[1][i] * w[1] + rows[2][i] * w[2] + rows[3][i] * w[3]);
    };
    if (start == 0) {
      for (std::size_t i = 0; i < bytes; ++i) {
        out[i] = weighted(i);
      }
    } else {
      for (std::size_t i = 0; i < bytes; ++i) {
        out[i] = static_cast<std::uint16_t>(out[i] + weighted(i));
      }
    }
  }
}

void sumColumns(const std::vector<std::uint16_t>& sums, const Filter& columns, std::uint8_t* out) {
  for (const Span& span : columns.spans) {
    const std::uint16_t* texel = sums.data() + 4 * static_cast<std::size_t>(span.first);
    const std::uint16_t* weight = columns.weights.data() + span.weights;
    std::uint32_t total[4] = {};
    for (int k = 0; k < span.count; ++k, texel += 4) {
      for (int c = 0; c < 4; ++c) {
        total[c] += static_cast<std::uint32_t>(texel[c]) * weight[k];
      }
    }
    for (int c = 0; c < 4; ++c) {
      *out++ = static_cast<std::uint8_t>((total[c] + 0x8000) >> 16);
    }
  }
}

}  // namespace

PhotoPyramid::PhotoPyramid(QImage photo) : m_photo(inTextureFormat(std::move(photo))) {
  int levels = 1;
  for (QSize size = m_photo.size(); std::max(size.width(), size.height()) > kCoarsestSide; size = halvedSize(size)) {
    ++levels;
  }
  m_levels.resize(static_cast<std::size_t>(levels));
  m_levels[0] = m_photo;
}

QImage PhotoPyramid::level(int level) const {
  const std::scoped_lock lock(m_mutex);
  return m_levels.at(static_cast<std::size_t>(level));
}

bool PhotoPyramid::buildNextLevel(const std::stop_token& stop) {
  QImage finer;
  std::size_t next = 0;
  {
    const std::scoped_lock lock(m_mutex);
    while (next < m_levels.size() && !m_levels[next].isNull()) {
      ++next;
    }
    if (next == m_levels.size()) {
      return false;
    }
    finer = m_levels[next - 1];
  }
  QImage built = halved(finer, stop);
  if (built.isNull()) {
    return false;
  }
  const std::scoped_lock lock(m_mutex);
  m_levels[next] = std::move(built);
  return true;
}

QImage PhotoPyramid::fitted(QSize pixels) const {
  QImage source = m_photo;
  {
    const std::scoped_lock lock(m_mutex);
    for (const QImage& level : m_levels) {
      if (level.width() >= 2 * pixels.width() && level.height() >= 2 * pixels.height()) {
        source = level;
      }
    }
  }
  if (source.size() == pixels) {
    return source;
  }
  return areaScaled(source, pixels);
}

QImage halved(const QImage& image, const std::stop_token& stop) {
  QImage result(halvedSize(image.size()), image.format());
  // Two channels at a time in one word: four bytes and the rounding need ten bits each.
  constexpr std::uint32_t kEven = 0x00ff00ff;
  constexpr std::uint32_t kRounding = 0x00020002;
  const auto average = [](std::uint32_t a, std::uint32_t b, std::uint32_t c, std::uint32_t d) {
    const std::uint32_t even = ((a & kEven) + (b & kEven) + (c & kEven) + (d & kEven) + kRounding) >> 2 & kEven;
    const std::uint32_t odd =
        (((a >> 8 & kEven) + (b >> 8 & kEven) + (c >> 8 & kEven) + (d >> 8 & kEven) + kRounding) >> 2) & kEven;
    return even | odd << 8;
  };
  const std::size_t pairs = static_cast<std::size_t>(image.width()) / 2;
  for (int y = 0; y < result.height(); ++y) {
    if (stop.stop_requested()) {
      return {};
    }
    const auto* upper = reinterpret_cast<const std::uint32_t*>(image.constScanLine(2 * y));
    const auto* lower =
        reinterpret_cast<const std::uint32_t*>(image.constScanLine(std::min(2 * y + 1, image.height() - 1)));
    auto* out = reinterpret_cast<std::uint32_t*>(result.scanLine(y));
    for (std::size_t x = 0; x < pairs; ++x) {
      out[x] = average(upper[2 * x], upper[2 * x + 1], lower[2 * x], lower[2 * x + 1]);
    }
    if (image.width() % 2 != 0) {
      out[pairs] = average(upper[2 * pairs], upper[2 * pairs], lower[2 * pairs], lower[2 * pairs]);
    }
  }
  return result;
}

QImage areaScaled(const QImage& image, QSize size) {
  constexpr int kRowsPerBand = 16;  // small enough that no thread waits long for another's last band
  QImage result(size, image.format());
  const Filter rows = areaFilter(image.height(), size.height());
  const Filter columns = areaFilter(image.width(), size.width());
  std::uint8_t* const bits = result.bits();
  const qsizetype bytesPerLine = result.bytesPerLine();
  parallelFor((size.height() + kRowsPerBand - 1) / kRowsPerBand, [&](int band) {
    std::vector<std::uint16_t> sums(4 * static_cast<std::size_t>(image.width()));
    const int end = std::min((band + 1) * kRowsPerBand, size.height());
    for (int y = band * kRowsPerBand; y < end; ++y) {
      const Span& span = rows.spans[static_cast<std::size_t>(y)];
      sumRows(image, span, rows.weights.data() + span.weights, sums);
      sumColumns(sums, columns, bits + y * bytesPerLine);
    }
  });
  return result;
}

}  // namespace lumagrid
