#include "Backdrop.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <vector>

namespace lumagrid {

namespace {

using Rgb = std::array<float, 3>;  // 0 to 255

constexpr double kDiscRadius = 210;
constexpr double kEdgeSigmas = 4;  // beyond which a disc has ended to the eye and to eight bits

struct Disc {
  QPointF center;
  double sigma;
  Rgb color;
  float opacity;
};

struct Look {
  Rgb top;
  Rgb bottom;
  float warmOpacity;
  float tealOpacity;
};

constexpr Look kLight = {{251, 246, 238}, {241, 224, 197}, 0.24F, 0.18F};
constexpr Look kDark = {{26, 23, 20}, {36, 31, 26}, 0.12F, 0.22F};

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

  // Blends the disc over a row of pixels whose first has its centre at (x, y).
  void blend(std::vector<Rgb>& row, double x, double y) const {
    const double dy = y - m_center.y();
    const double half = m_reach * m_reach - dy * dy;
    if (half <= 0) return;
    const double halfWidth = std::sqrt(half);
    const auto count = static_cast<double>(row.size());
    const auto first = static_cast<std::size_t>(std::clamp(std::ceil(m_center.x() - halfWidth - x), 0.0, count));
    const auto last = static_cast<std::size_t>(std::clamp(std::floor(m_center.x() + halfWidth - x) + 1, 0.0, count));
    for (std::size_t i = first; i < last; ++i) {
      const double dx = x + static_cast<double>(i) - m_center.x();
      const auto distance = static_cast<float>(std::sqrt(dx * dx + dy * dy));
      const auto whole = static_cast<std::size_t>(distance);
      const float fraction = distance - static_cast<float>(whole);
      const float alpha = m_coverage[whole] + (m_coverage[whole + 1] - m_coverage[whole]) * fraction;
      for (std::size_t c = 0; c < 3; ++c) row[i][c] += (m_color[c] - row[i][c]) * alpha;
    }
  }

 private:
  QPointF m_center;
  Rgb m_color;
  double m_reach = 0;
  std::vector<float> m_coverage;  // by distance from the centre, in pixels
};

}  // namespace

QImage backdropImage(QSizeF size, double devicePixelRatio, ColorScheme colorScheme, QRect part) {
  const Look& look = colorScheme == ColorScheme::dark ? kDark : kLight;
  const BlurredDisc warm({{110, 80}, 16, {228, 179, 107}, look.warmOpacity}, devicePixelRatio);
  const BlurredDisc teal({{size.width() - 90, size.height() - 60}, 24, {31, 111, 95}, look.tealOpacity},
                         devicePixelRatio);
  QImage image(part.size(), QImage::Format_RGBX8888);
  std::vector<Rgb> row(static_cast<std::size_t>(part.width()));
  for (int y = 0; y < part.height(); ++y) {
    const double centerY = part.top() + y + 0.5;
    const auto progress = static_cast<float>(centerY / (size.height() * devicePixelRatio));
    Rgb color;
    for (std::size_t c = 0; c < 3; ++c) color[c] = look.top[c] + (look.bottom[c] - look.top[c]) * progress;
    std::fill(row.begin(), row.end(), color);
    warm.blend(row, part.left() + 0.5, centerY);
    teal.blend(row, part.left() + 0.5, centerY);
    uchar* pixel = image.scanLine(y);
    for (const Rgb& value : row) {
      for (const float component : value) *pixel++ = static_cast<uchar>(qRound(component));
      *pixel++ = 255;
    }
  }
  image.setDevicePixelRatio(devicePixelRatio);
  return image;
}

}  // namespace lumagrid
