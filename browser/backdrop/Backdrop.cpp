#include "Backdrop.h"
#include "WorkerPool.h"

#include <QtEndian>
#include <algorithm>
#include <array>
#include <cmath>
#include <vector>

namespace lumagrid {

namespace {

using Rgb = std::array<float, 3>;  // 0 to 255

// One row of pixels, a vector for each component, which the compiler can work on many at a time.
using Row = std::array<std::vector<float>, 3>;

constexpr double kDiscRadius = 210;
constexpr double kEdgeSigmas = 4;  // beyond which a disc has ended to the eye and to eight bits

struct Disc {
  QPointF center;
  double sigma;
  Rgb color;
  float opacity;
};

struct CardColor {
  Rgb color;
  float opacity;
};

struct Colors {
  Rgb top;
  Rgb bottom;
  float warmOpacity;
  float tealOpacity;
  CardColor cardFirst;   // at the card's top left corner
  CardColor cardSecond;  // at its bottom right corner
};

constexpr Colors kLight = {
    .top = {251, 246, 238},
    .bottom = {241, 224, 197},
    .warmOpacity = 0.24F,
    .tealOpacity = 0.18F,
    .cardFirst = {{255, 255, 255}, 0.86F},
    .cardSecond = {{238, 226, 208}, 0.96F},
};
constexpr Colors kDark = {
    .top = {26, 23, 20},
    .bottom = {36, 31, 26},
    .warmOpacity = 0.12F,
    .tealOpacity = 0.22F,
    .cardFirst = {{44, 40, 36}, 0.92F},
    .cardSecond = {{35, 31, 27}, 0.98F},
};

class BlurredDisc {
 public:
  BlurredDisc(const Disc& disc, double devicePixelRatio)
      : m_center(disc.center * devicePixelRatio), m_color(disc.color) {
    const double sigma = disc.sigma * devicePixelRatio;
    const double radius = kDiscRadius * devicePixelRatio;
    m_reach = radius + kEdgeSigmas * sigma;
    m_coverage.resize(static_cast<std::size_t>(m_reach) + 2);
    for (std::size_t distance = 0; distance < m_coverage.size(); ++distance) {
      const double fromEdge = static_cast<double>(distance) - radius + sigma * sigma / (2 * radius);
      m_coverage[distance] = disc.opacity * static_cast<float>(std::erfc(fromEdge / (sigma * M_SQRT2)) / 2);
    }
  }

  // Blends the disc over a row of pixels whose first has its center at (x, y).
  void blend(Row& row, double x, double y) const {
    const double dy = y - m_center.y();
    const double half = m_reach * m_reach - dy * dy;
    if (half <= 0) return;
    const double halfWidth = std::sqrt(half);
    const auto count = static_cast<double>(row[0].size());
    const auto first = static_cast<std::size_t>(std::clamp(std::ceil(m_center.x() - halfWidth - x), 0.0, count));
    const auto last = static_cast<std::size_t>(std::clamp(std::floor(m_center.x() + halfWidth - x) + 1, 0.0, count));
    for (std::size_t i = first; i < last; ++i) {
      const double dx = x + static_cast<double>(i) - m_center.x();
      const auto distance = static_cast<float>(std::sqrt(dx * dx + dy * dy));
      const auto whole = static_cast<std::size_t>(distance);
      const float fraction = distance - static_cast<float>(whole);
      const float alpha = m_coverage[whole] + (m_coverage[whole + 1] - m_coverage[whole]) * fraction;
      for (std::size_t c = 0; c < 3; ++c) row[c][i] += (m_color[c] - row[c][i]) * alpha;
    }
  }

 private:
  QPointF m_center;
  Rgb m_color;
  double m_reach = 0;
  std::vector<float> m_coverage;  // by distance from the center, in pixels
};

// The card's gradient: premultiplied color and opacity are affine functions of the progress along the diagonal.
class Card {
 public:
  Card(const Backdrop& backdrop, const Colors& colors)
      : m_first(colors.cardFirst),
        m_second(colors.cardSecond),
        m_topLeft(backdrop.card.topLeft() * backdrop.devicePixelRatio),
        m_size(backdrop.card.size() * backdrop.devicePixelRatio) {}

  // Blends the card over a row of pixels whose first has its center at (x, y).
  void blend(Row& row, double x, double y) const {
    const double left = m_topLeft.x() - x;
    const double below = y - m_topLeft.y();
    if (below < 0 || below >= m_size.height()) return;
    const auto count = static_cast<double>(row[0].size());
    const auto first = static_cast<std::size_t>(std::clamp(std::ceil(left), 0.0, count));
    const auto last = static_cast<std::size_t>(std::clamp(std::ceil(left + m_size.width()), 0.0, count));
    const double squaredDiagonal = m_size.width() * m_size.width() + m_size.height() * m_size.height();
    const auto progress = static_cast<float>((below * m_size.height() - left * m_size.width()) / squaredDiagonal);
    const auto step = static_cast<float>(m_size.width() / squaredDiagonal);
    for (std::size_t c = 0; c < 3; ++c) {
      const float from = m_first.color[c] * m_first.opacity;
      const float change = m_second.color[c] * m_second.opacity - from;
      float* const value = row[c].data();
      for (std::size_t i = first; i < last; ++i) {
        const float t = progress + step * static_cast<float>(static_cast<int>(i));
        const float opacity = m_first.opacity + (m_second.opacity - m_first.opacity) * t;
        value[i] += from + change * t - value[i] * opacity;
      }
    }
  }

 private:
  CardColor m_first;
  CardColor m_second;
  QPointF m_topLeft;
  QSizeF m_size;
};

// As bytes of red, green, blue and 255.
void writePixels(const Row& row, uchar* pixels) {
  constexpr float kHalf = 0.5F;
  const float* const red = row[0].data();
  const float* const green = row[1].data();
  const float* const blue = row[2].data();
  for (std::size_t i = 0; i < row[0].size(); ++i) {
    const int pixel = static_cast<int>(red[i] + kHalf) | static_cast<int>(green[i] + kHalf) << 8 |
                      static_cast<int>(blue[i] + kHalf) << 16;
    qToLittleEndian(static_cast<quint32>(pixel) | 0xff000000, pixels + 4 * i);
  }
}

}  // namespace

QImage backdropImage(const Backdrop& backdrop, QRect part) {
  const Colors& colors = backdrop.colorScheme == ColorScheme::dark ? kDark : kLight;
  const double ratio = backdrop.devicePixelRatio;
  const QSizeF size = backdrop.size;
  const BlurredDisc warm({{110, 80}, 16, {228, 179, 107}, colors.warmOpacity}, ratio);
  const BlurredDisc teal({{size.width() - 90, size.height() - 60}, 24, {31, 111, 95}, colors.tealOpacity}, ratio);
  const Card card(backdrop, colors);
  QImage image(part.size(), QImage::Format_RGBX8888);
  constexpr int kRowsPerBand = 64;  // half a millisecond
  uchar* const bits = image.bits();
  parallelFor((part.height() + kRowsPerBand - 1) / kRowsPerBand, [&](int band) {
    Row row;
    for (auto& component : row) component.resize(static_cast<std::size_t>(part.width()));
    for (int y = band * kRowsPerBand; y < std::min((band + 1) * kRowsPerBand, part.height()); ++y) {
      const double centerY = part.top() + y + 0.5;
      const auto progress = static_cast<float>(centerY / (size.height() * ratio));
      for (std::size_t c = 0; c < 3; ++c) {
        std::fill(row[c].begin(), row[c].end(), colors.top[c] + (colors.bottom[c] - colors.top[c]) * progress);
      }
      warm.blend(row, part.left() + 0.5, centerY);
      teal.blend(row, part.left() + 0.5, centerY);
      card.blend(row, part.left() + 0.5, centerY);
      writePixels(row, bits + y * image.bytesPerLine());
    }
  });
  image.setDevicePixelRatio(ratio);
  return image;
}

}  // namespace lumagrid
