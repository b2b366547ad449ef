#include "Scenes.h"

#include <QLinearGradient>
#include <QPainter>
#include <QPainterPath>
#include <QRadialGradient>
#include <array>
#include <cmath>

namespace lumagrid::samples {

Hour hour(HourName name) {
  constexpr std::array<std::array<QRgb, 6>, 10> kHours{{
      {0x4860a0, 0xac96be, 0xfcceb0, 0xffe0b2, 0x9686ac, 0x282a4a},
      {0x246ec4, 0x70b2e8, 0xdef0fa, 0xfff8dc, 0x7ca0be, 0x1c3e46},
      {0x5c82a8, 0xeec482, 0xffe2a0, 0xffecaa, 0xce9660, 0x462c24},
      {0x3a2460, 0xda545c, 0xffb05c, 0xffce78, 0xa04664, 0x261234},
      {0x161c48, 0x54468c, 0xe88e96, 0xffd6be, 0x584a86, 0x12122e},
      {0x06081c, 0x121c44, 0x344a7c, 0xe8eeff, 0x24325c, 0x060816},
      {0xa06ea0, 0xf4aab4, 0xffded4, 0xfff0e2, 0xce829c, 0x5c264a},
      {0x1e6e80, 0x78c8be, 0xe2f6de, 0xfffcd6, 0x68aca4, 0x0e3c40},
      {0x60748c, 0xcebaa0, 0xfadeaa, 0xffce60, 0xd07034, 0x521e18},
      {0x345c8c, 0x94bedc, 0xecf6fc, 0xffffff, 0x96b8d0, 0x264264},
  }};
  const auto& colors = kHours.at(static_cast<std::size_t>(name));
  return {colors[0], colors[1], colors[2], colors[3], colors[4], colors[5]};
}

QColor mix(const QColor& from, const QColor& to, double share) {
  const auto blend = [share](int first, int second) {
    return static_cast<int>(std::lround(first + (second - first) * share));
  };
  return {blend(from.red(), to.red()), blend(from.green(), to.green()), blend(from.blue(), to.blue())};
}

namespace {

// The sky, with the sun or the moon at `sun`, over the whole picture.
void paintSky(QPainter& painter, const QSizeF& size, double horizon, const QPointF& sun, double radius,
              const Hour& hour) {
  QLinearGradient sky(0, 0, 0, horizon);
  sky.setColorAt(0, hour.zenith);
  sky.setColorAt(0.55, hour.sky);
  sky.setColorAt(1, hour.horizon);
  painter.fillRect(QRectF(QPointF(0, 0), size), sky);
  QRadialGradient glow(sun, radius * 7);
  for (const auto& [distance, opacity] : {std::pair(0.0, 0.55F), {0.35, 0.16F}, {1.0, 0.0F}}) {
    QColor halo = hour.light;
    halo.setAlphaF(opacity);
    glow.setColorAt(distance, halo);
  }
  painter.setPen(Qt::NoPen);
  painter.setBrush(glow);
  painter.drawEllipse(sun, radius * 7, radius * 7);
  painter.setBrush(mix(hour.light, Qt::white, 0.45));
  painter.drawEllipse(sun, radius, radius);
}

// A ridge of `hills` hills around `base`, up and down by `height`, from the left edge of the picture to the right.
void paintRidge(QPainter& painter, const QSizeF& size, double base, double height, double hills, const QColor& top,
                const QColor& bottom, Random& random) {
  constexpr double kRoughness = 0.53;
  const HillLine line(random);
  QPainterPath path(QPointF(0, size.height()));
  for (int x = 0; x <= size.width() + 2; x += 2) {
    path.lineTo(x, base - height * line.at(x / size.width() * hills, kRoughness));
  }
  path.lineTo(size.width() + 2, size.height());
  QLinearGradient gradient(0, base - height, 0, size.height());
  gradient.setColorAt(0, top);
  gradient.setColorAt(1, bottom);
  painter.fillPath(path, gradient);
}

void paintPine(QPainter& painter, const QPointF& foot, double height, const QColor& color) {
  QPainterPath tree;
  constexpr int kStoreys = 6;
  for (int i = 0; i < kStoreys; ++i) {
    const double top = foot.y() - height + height * 0.145 * i;
    const double bottom = top + height * 0.28;
    const double reach = height * (0.056 + 0.144 * i / (kStoreys - 1));
    tree.moveTo(foot.x(), top);
    tree.quadTo(foot.x() + reach * 0.25, top + height * 0.16, foot.x() + reach, bottom);
    tree.quadTo(foot.x(), bottom - height * 0.04, foot.x() - reach, bottom);
    tree.quadTo(foot.x() - reach * 0.25, top + height * 0.16, foot.x(), top);
  }
  tree.setFillRule(Qt::WindingFill);
  painter.fillPath(tree, color);
}

void paintWater(QPainter& painter, const QRectF& water, double sun, const Hour& hour, Random& random) {
  QLinearGradient depth(water.topLeft(), water.bottomLeft());
  depth.setColorAt(0, mix(hour.horizon, hour.far, 0.35));
  depth.setColorAt(1, mix(hour.near, hour.zenith, 0.35));
  painter.fillRect(water, depth);
  constexpr int kRipples = 1500;
  for (int i = 0; i < kRipples; ++i) {
    const double share = std::pow(random.between(0, 1), 1.6);  // ripples crowd towards the horizon
    const bool shines = i % 2 == 0;
    const double x =
        shines ? sun + random.aroundZero() * water.width() * (0.03 + 0.2 * share) : random.between(0, water.width());
    QColor color = shines ? mix(hour.light, Qt::white, 0.3) : mix(hour.zenith, hour.near, 0.5);
    color.setAlphaF(shines ? 0.5F : 0.16F);
    painter.setBrush(color);
    painter.drawEllipse(QPointF(x, water.top() + share * water.height()), water.width() * (0.004 + 0.03 * share),
                        water.height() * (0.002 + 0.006 * share));
  }
}

void paintTower(QPainter& painter, const QRectF& tower, const QColor& wall, const QColor& lamp, Random& random) {
  painter.fillRect(tower, wall);
  const double pane = tower.width() / 7;
  for (int row = 0; pane * (1 + 1.5 * row) < tower.height(); ++row) {
    const double y = tower.top() + pane * (1 + 1.5 * row);
    for (int column = 0; column < 6; ++column) {
      if (random.between(0, 1) > 0.42) continue;
      painter.fillRect(QRectF(tower.left() + pane * (column + 0.7), y, pane * 0.6, pane * 0.85),
                       mix(wall, lamp, random.between(0.35, 1)));
    }
  }
}

}  // namespace

void paintMountains(QImage& picture, const Hour& hour, Random& random) {
  QPainter painter(&picture);
  painter.setRenderHint(QPainter::Antialiasing);
  const QSizeF size = picture.size();
  const QPointF sun(size.width() * random.between(0.2, 0.8), size.height() * random.between(0.2, 0.42));
  paintSky(painter, size, size.height() * 0.72, sun, size.height() * 0.05, hour);
  constexpr int kRanges = 6;
  for (int i = 0; i < kRanges; ++i) {
    const double depth = static_cast<double>(i) / (kRanges - 1);  // 0 far, 1 near
    const QColor top = mix(hour.far, hour.near, depth);
    paintRidge(painter, size, size.height() * (0.5 + 0.36 * depth), size.height() * (0.17 - 0.05 * depth),
               1.2 + 1.0 * depth, top, mix(top, hour.horizon, 0.45 * (1 - depth)), random);
  }
}

void paintForest(QImage& picture, const Hour& hour, Random& random) {
  QPainter painter(&picture);
  painter.setRenderHint(QPainter::Antialiasing);
  const QSizeF size = picture.size();
  const QPointF sun(size.width() * random.between(0.25, 0.75), size.height() * 0.28);
  paintSky(painter, size, size.height(), sun, size.height() * 0.045, hour);
  constexpr int kRows = 6;
  for (int row = 0; row < kRows; ++row) {
    const double depth = static_cast<double>(row) / (kRows - 1);
    const QColor color = mix(hour.far, hour.near, depth);
    const HillLine line(random);
    const double base = size.height() * (0.6 + 0.44 * depth);
    const double tree = size.height() * (0.12 + 0.26 * depth);
    painter.fillRect(QRectF(0, base - tree * 0.1, size.width(), size.height()), mix(color, Qt::black, 0.08));
    double x = -tree;
    while (x < size.width() + tree) {
      const double foot = base - size.height() * 0.06 * line.at(x / size.width(), 0.4);
      paintPine(painter, QPointF(x, foot), tree * random.between(0.6, 1.1),
                mix(color, Qt::black, random.between(0, 0.12)));
      x += tree * random.between(0.1, 0.24);
    }
    QLinearGradient mist(0, base - tree * 0.4, 0, size.height());
    QColor haze = mix(hour.horizon, color, 0.35);
    haze.setAlphaF(0);
    mist.setColorAt(0, haze);
    haze.setAlphaF(static_cast<float>(0.85 * (1 - depth)));
    mist.setColorAt(0.5, haze);
    painter.fillRect(QRectF(0, base - tree * 0.4, size.width(), size.height()), mist);
  }
}

void paintSea(QImage& picture, const Hour& hour, Random& random) {
  QPainter painter(&picture);
  painter.setRenderHint(QPainter::Antialiasing);
  const QSizeF size = picture.size();
  const double shore = size.height() * random.between(0.5, 0.62);
  const QPointF sun(size.width() * random.between(0.3, 0.7), shore - size.height() * random.between(0.0, 0.16));
  paintSky(painter, size, shore, sun, size.height() * 0.075, hour);
  paintWater(painter, QRectF(0, shore, size.width(), size.height() - shore), sun.x(), hour, random);
  paintRidge(painter, size, size.height() * 1.02, size.height() * 0.1, 1.4, mix(hour.near, Qt::black, 0.25),
             mix(hour.near, Qt::black, 0.5), random);
}

void paintCity(QImage& picture, const Hour& hour, Random& random) {
  QPainter painter(&picture);
  painter.setRenderHint(QPainter::Antialiasing);
  const QSizeF size = picture.size();
  const QPointF moon(size.width() * random.between(0.2, 0.8), size.height() * 0.3);
  paintSky(painter, size, size.height() * 0.85, moon, size.height() * 0.09, hour);
  constexpr int kStreets = 4;
  for (int street = 0; street < kStreets; ++street) {
    const double depth = static_cast<double>(street) / (kStreets - 1);
    const QColor wall = mix(mix(hour.far, hour.horizon, 0.4 * (1 - depth)), hour.near, depth);
    double x = -size.height() * 0.05;
    while (x < size.width()) {
      const double width = size.height() * random.between(0.06, 0.12) * (0.7 + 0.6 * depth);
      const double top = size.height() * random.between(0.3 + 0.2 * depth, 0.62 + 0.2 * depth);
      paintTower(painter, QRectF(x, top, width, size.height() - top), wall, hour.light, random);
      x += width * random.between(1.0, 1.25);
    }
  }
}

}  // namespace lumagrid::samples
