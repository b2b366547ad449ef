#include <QLinearGradient>
#include <QPainter>
#include <QPainterPath>
#include <QRadialGradient>
#include <cmath>

#include "Scenes.h"

namespace lumagrid::samples {

namespace {

void paintSky(QPainter& painter, const QRectF& area, const Hour& hour) {
  QLinearGradient gradient(area.topLeft(), area.bottomLeft());
  gradient.setColorAt(0, hour.zenith);
  gradient.setColorAt(0.55, hour.sky);
  gradient.setColorAt(1, hour.horizon);
  painter.fillRect(area, gradient);
}

void paintSun(QPainter& painter, const QPointF& centre, double radius, const QColor& light) {
  QRadialGradient glow(centre, radius * 7);
  QColor halo = light;
  halo.setAlphaF(0.55F);
  glow.setColorAt(0, halo);
  halo.setAlphaF(0.16F);
  glow.setColorAt(0.35, halo);
  halo.setAlphaF(0);
  glow.setColorAt(1, halo);
  painter.setPen(Qt::NoPen);
  painter.setBrush(glow);
  painter.drawEllipse(centre, radius * 7, radius * 7);
  painter.setBrush(mix(light, Qt::white, 0.45));
  painter.drawEllipse(centre, radius, radius);
}

struct Ridge {
  double base = 0;       // pixels from the top
  double height = 0;     // pixels up and down from the base
  double hills = 0;      // widest hills across the picture
  double roughness = 0;  // see HillLine::at
};

QPainterPath ridgePath(const QSizeF& size, const Ridge& ridge, Random& random) {
  const HillLine line(random);
  const double start = random.between(0, 200);
  QPainterPath path(QPointF(0, size.height()));
  for (int x = 0; x <= size.width() + 2; x += 2) {
    path.lineTo(x, ridge.base - ridge.height * line.at(start + x / size.width() * ridge.hills, ridge.roughness));
  }
  path.lineTo(size.width() + 2, size.height());
  path.closeSubpath();
  return path;
}

void fillRidge(QPainter& painter, const QPainterPath& path, const QColor& top, const QColor& bottom) {
  QLinearGradient gradient(0, path.boundingRect().top(), 0, path.boundingRect().bottom());
  gradient.setColorAt(0, top);
  gradient.setColorAt(1, bottom);
  painter.fillPath(path, gradient);
}

void paintRanges(QPainter& painter, const QSizeF& size, const Hour& hour, Random& random, int ranges) {
  for (int i = 0; i < ranges; ++i) {
    const double depth = ranges > 1 ? static_cast<double>(i) / (ranges - 1) : 1.0;  // 0 far, 1 near
    const Ridge ridge{size.height() * (0.5 + 0.36 * depth), size.height() * (0.17 - 0.05 * depth), 2.0 + 1.5 * depth,
                      0.52 - 0.06 * depth};
    const QColor top = mix(hour.far, hour.near, depth);
    fillRidge(painter, ridgePath(size, ridge, random), top, mix(top, hour.horizon, 0.45 * (1 - depth)));
  }
}

void paintPine(QPainter& painter, const QPointF& foot, double height, const QColor& colour) {
  QPainterPath tree;
  constexpr int kStoreys = 6;
  const double half = height * 0.2;
  for (int i = 0; i < kStoreys; ++i) {
    const double top = foot.y() - height + height * 0.145 * i;
    const double bottom = top + height * 0.28;
    const double reach = half * (0.28 + 0.72 * i / (kStoreys - 1));
    tree.moveTo(foot.x(), top);
    tree.quadTo(foot.x() + reach * 0.25, top + height * 0.16, foot.x() + reach, bottom);
    tree.quadTo(foot.x(), bottom - height * 0.04, foot.x() - reach, bottom);
    tree.quadTo(foot.x() - reach * 0.25, top + height * 0.16, foot.x(), top);
  }
  tree.setFillRule(Qt::WindingFill);
  painter.fillPath(tree, colour);
}

void paintWater(QPainter& painter, const QRectF& water, const QPointF& sun, const Hour& hour, Random& random) {
  QLinearGradient depth(water.topLeft(), water.bottomLeft());
  depth.setColorAt(0, mix(hour.horizon, hour.far, 0.35));
  depth.setColorAt(1, mix(hour.near, hour.zenith, 0.35));
  painter.fillRect(water, depth);
  painter.setPen(Qt::NoPen);
  constexpr int kRipples = 1500;
  for (int i = 0; i < kRipples; ++i) {
    const double share = std::pow(random.between(0, 1), 1.6);  // ripples crowd towards the horizon
    const double y = water.top() + share * water.height();
    const double spread = water.width() * (0.03 + 0.2 * share);
    const bool shining = random.between(0, 1) < 0.5;
    const double x = shining ? sun.x() + random.aroundZero() * spread : random.between(0, water.width());
    QColor colour = shining ? mix(hour.light, Qt::white, 0.3) : mix(hour.zenith, hour.near, 0.5);
    colour.setAlphaF(static_cast<float>(shining ? 0.5 : 0.16));
    painter.setBrush(colour);
    painter.drawEllipse(QPointF(x, y), water.width() * (0.004 + 0.03 * share),
                        water.height() * (0.002 + 0.006 * share));
  }
}

void paintBalloon(QPainter& painter, const QPointF& centre, double radius, const Hour& hour, Random& random) {
  const QColor first = QColor::fromHsvF(static_cast<float>(random.between(0, 1)), 0.68F, 0.92F);
  const QColor second = mix(hour.light, Qt::white, 0.35);
  QPainterPath hull;
  hull.moveTo(centre.x() - radius * 0.22, centre.y() + radius * 1.35);
  hull.cubicTo(centre.x() - radius * 0.5, centre.y() + radius * 0.85, centre.x() - radius, centre.y() + radius * 0.5,
               centre.x() - radius, centre.y());
  hull.arcTo(QRectF(centre.x() - radius, centre.y() - radius, radius * 2, radius * 2), 180, -180);
  hull.cubicTo(centre.x() + radius, centre.y() + radius * 0.5, centre.x() + radius * 0.5, centre.y() + radius * 0.85,
               centre.x() + radius * 0.22, centre.y() + radius * 1.35);
  hull.closeSubpath();
  painter.save();
  painter.fillPath(hull, first);
  painter.setClipPath(hull);
  painter.setPen(Qt::NoPen);
  painter.setBrush(second);
  for (const double share : {-0.62, 0.0, 0.62}) {
    painter.drawEllipse(centre + QPointF(radius * share, radius * 0.2), radius * 0.16, radius * 1.6);
  }
  QLinearGradient shade(centre - QPointF(radius, 0), centre + QPointF(radius, 0));
  shade.setColorAt(0, QColor(255, 255, 255, 70));
  shade.setColorAt(0.5, QColor(255, 255, 255, 0));
  shade.setColorAt(1, QColor(20, 10, 40, 110));
  painter.fillRect(hull.boundingRect(), shade);
  painter.restore();
  painter.setPen(QPen(mix(hour.near, Qt::black, 0.3), radius * 0.03));
  painter.drawLine(centre + QPointF(-radius * 0.2, radius * 1.35), centre + QPointF(-radius * 0.12, radius * 1.7));
  painter.drawLine(centre + QPointF(radius * 0.2, radius * 1.35), centre + QPointF(radius * 0.12, radius * 1.7));
  painter.fillRect(QRectF(centre.x() - radius * 0.14, centre.y() + radius * 1.68, radius * 0.28, radius * 0.2),
                   mix(hour.near, QColor(120, 80, 40), 0.5));
}

}  // namespace

void paintMountains(QImage& picture, const Hour& hour, Random& random) {
  QPainter painter(&picture);
  painter.setRenderHint(QPainter::Antialiasing);
  const QSizeF size = picture.size();
  paintSky(painter, QRectF(0, 0, size.width(), size.height() * 0.72), hour);
  const QPointF sun(size.width() * random.between(0.2, 0.8), size.height() * random.between(0.2, 0.42));
  paintSun(painter, sun, size.height() * 0.05, hour.light);
  paintRanges(painter, size, hour, random, 6);
}

void paintForest(QImage& picture, const Hour& hour, Random& random) {
  QPainter painter(&picture);
  painter.setRenderHint(QPainter::Antialiasing);
  const QSizeF size = picture.size();
  paintSky(painter, QRectF(QPointF(0, 0), size), hour);
  paintSun(painter, QPointF(size.width() * random.between(0.25, 0.75), size.height() * 0.28), size.height() * 0.045,
           hour.light);
  constexpr int kRows = 6;
  for (int row = 0; row < kRows; ++row) {
    const double depth = static_cast<double>(row) / (kRows - 1);
    const QColor colour = mix(hour.far, hour.near, depth);
    const HillLine line(random);
    const double base = size.height() * (0.6 + 0.44 * depth);
    const double tree = size.height() * (0.12 + 0.26 * depth);
    painter.fillRect(QRectF(0, base - tree * 0.1, size.width(), size.height()), mix(colour, Qt::black, 0.08));
    double x = -tree;
    while (x < size.width() + tree) {
      const double foot = base - size.height() * 0.06 * line.at(x / size.width() * 2 + row, 0.4);
      paintPine(painter, QPointF(x, foot), tree * random.between(0.6, 1.1),
                mix(colour, Qt::black, random.between(0, 0.12)));
      x += tree * random.between(0.1, 0.24);
    }
    QLinearGradient mist(0, base - tree * 0.4, 0, size.height());
    QColor haze = mix(hour.horizon, colour, 0.35);
    haze.setAlphaF(0);
    mist.setColorAt(0, haze);
    haze.setAlphaF(static_cast<float>(0.85 * (1 - depth)));
    mist.setColorAt(0.5, haze);
    painter.fillRect(QRectF(0, base - tree * 0.4, size.width(), size.height()), mist);
  }
}

void paintDunes(QImage& picture, const Hour& hour, Random& random) {
  QPainter painter(&picture);
  painter.setRenderHint(QPainter::Antialiasing);
  const QSizeF size = picture.size();
  paintSky(painter, QRectF(0, 0, size.width(), size.height() * 0.62), hour);
  paintSun(painter, QPointF(size.width() * random.between(0.15, 0.85), size.height() * 0.26), size.height() * 0.06,
           hour.light);
  const QColor sand = mix(QColor(226, 164, 104), hour.far, 0.4);
  constexpr int kDunes = 6;
  for (int i = 0; i < kDunes; ++i) {
    const double depth = static_cast<double>(i) / (kDunes - 1);
    const Ridge ridge{size.height() * (0.56 + 0.36 * depth), size.height() * (0.06 + 0.07 * depth), 1.6, 0.16};
    const QPainterPath path = ridgePath(size, ridge, random);
    const QColor shaded = mix(sand, hour.near, 0.25 + 0.5 * depth);
    fillRidge(painter, path, mix(sand, hour.light, 0.5 * (1 - 0.5 * depth)), shaded);
    painter.save();
    painter.setClipPath(path);
    const double slip = size.width() * random.between(0.04, 0.14);
    fillRidge(painter, path.translated(slip, size.height() * 0.07), mix(shaded, sand, 0.35),
              mix(shaded, hour.near, 0.45));
    painter.restore();
  }
}

void paintSea(QImage& picture, const Hour& hour, Random& random) {
  QPainter painter(&picture);
  painter.setRenderHint(QPainter::Antialiasing);
  const QSizeF size = picture.size();
  const double shore = size.height() * random.between(0.5, 0.62);
  const QPointF sun(size.width() * random.between(0.3, 0.7), shore - size.height() * random.between(0.0, 0.16));
  paintSky(painter, QRectF(0, 0, size.width(), shore), hour);
  paintSun(painter, sun, size.height() * 0.075, hour.light);
  paintWater(painter, QRectF(0, shore, size.width(), size.height() - shore), sun, hour, random);
  const Ridge coast{size.height() * 1.02, size.height() * 0.1, 2.2, 0.5};
  fillRidge(painter, ridgePath(size, coast, random), mix(hour.near, Qt::black, 0.25), mix(hour.near, Qt::black, 0.5));
}

void paintBalloons(QImage& picture, const Hour& hour, Random& random) {
  QPainter painter(&picture);
  painter.setRenderHint(QPainter::Antialiasing);
  const QSizeF size = picture.size();
  paintSky(painter, QRectF(0, 0, size.width(), size.height() * 0.8), hour);
  paintRanges(painter, size, hour, random, 4);
  constexpr int kBalloons = 7;
  for (int i = 0; i < kBalloons; ++i) {
    const double radius = size.height() * (0.02 + 0.085 * i / (kBalloons - 1));
    const double lane = (i * 3 % kBalloons + 0.5) / kBalloons;
    const QPointF centre(size.width() * lane + random.aroundZero() * radius, size.height() * random.between(0.14, 0.5));
    paintBalloon(painter, centre, radius, hour, random);
  }
}

void paintMeadow(QImage& picture, const Hour& hour, Random& random) {
  QPainter painter(&picture);
  painter.setRenderHint(QPainter::Antialiasing);
  const QSizeF size = picture.size();
  paintSky(painter, QRectF(0, 0, size.width(), size.height() * 0.6), hour);
  paintSun(painter, QPointF(size.width() * random.between(0.2, 0.8), size.height() * 0.2), size.height() * 0.05,
           hour.light);
  const QColor grass = mix(QColor(96, 150, 72), hour.near, 0.3);
  for (int i = 0; i < 4; ++i) {
    const double depth = i / 3.0;
    const Ridge ridge{size.height() * (0.5 + 0.14 * depth), size.height() * 0.07, 1.5, 0.2};
    const QColor top = mix(mix(hour.far, grass, 0.4 + 0.6 * depth), hour.light, 0.2);
    fillRidge(painter, ridgePath(size, ridge, random), top, mix(grass, hour.near, 0.6 * depth));
  }
  painter.setPen(Qt::NoPen);
  const float petals = static_cast<float>(random.between(0, 1));
  for (int i = 0; i < 1400; ++i) {
    const double share = i / 1400.0;
    const QPointF centre(random.between(0, size.width()), size.height() * (0.66 + 0.36 * share * share));
    const double radius = size.height() * (0.002 + 0.013 * share * share) * random.between(0.6, 1.2);
    const double hue = petals + random.aroundZero() * 0.09 + 1;
    painter.setBrush(QColor::fromHsvF(static_cast<float>(hue - std::floor(hue)), 0.6F, 0.97F));
    for (int petal = 0; petal < 5; ++petal) {
      const double angle = petal * 1.2566 + i;
      painter.drawEllipse(centre + QPointF(std::cos(angle), std::sin(angle) * 0.8) * radius, radius * 0.7,
                          radius * 0.6);
    }
    painter.setBrush(QColor(255, 226, 120));
    painter.drawEllipse(centre, radius * 0.5, radius * 0.45);
  }
}

void paintSinkingSun(QImage& picture, const Hour& hour, double progress) {
  Random random(7);
  QPainter painter(&picture);
  painter.setRenderHint(QPainter::Antialiasing);
  const QSizeF size = picture.size();
  const double shore = size.height() * 0.6;
  const QPointF sun(size.width() * 0.5, shore - size.height() * 0.3 * (1 - progress));
  paintSky(painter, QRectF(0, 0, size.width(), shore), hour);
  paintSun(painter, sun, size.height() * 0.09, hour.light);
  paintWater(painter, QRectF(0, shore, size.width(), size.height() - shore), sun, hour, random);
}

}  // namespace lumagrid::samples
