#include <QLinearGradient>
#include <QPainter>
#include <QPainterPath>
#include <QRadialGradient>
#include <array>
#include <cmath>

#include "Scenes.h"

namespace lumagrid::samples {

namespace {

constexpr double kPi = 3.14159265358979323846;

QRgb rgb(int red, int green, int blue) {
  return qRgb(red, green, blue);
}

Hour makeHour(const std::array<QRgb, 6>& colours) {
  return {QColor(colours[0]), QColor(colours[1]), QColor(colours[2]),
          QColor(colours[3]), QColor(colours[4]), QColor(colours[5])};
}

void paintBackdrop(QPainter& painter, const QSizeF& size, const QColor& from, const QColor& to) {
  QLinearGradient gradient(0, 0, size.width() * 0.4, size.height());
  gradient.setColorAt(0, from);
  gradient.setColorAt(1, to);
  painter.fillRect(QRectF(QPointF(0, 0), size), gradient);
}

void paintLeaf(QPainter& painter, double length, const QColor& colour) {
  QPainterPath blade(QPointF(0, 0));
  blade.cubicTo(length * 0.2, -length * 0.32, length * 0.7, -length * 0.3, length, 0);
  blade.cubicTo(length * 0.7, length * 0.3, length * 0.2, length * 0.32, 0, 0);
  QLinearGradient shade(0, -length * 0.3, 0, length * 0.3);
  shade.setColorAt(0, mix(colour, Qt::white, 0.25));
  shade.setColorAt(0.5, colour);
  shade.setColorAt(1, mix(colour, Qt::black, 0.3));
  painter.fillPath(blade, shade);
  painter.setPen(QPen(mix(colour, Qt::black, 0.35), length * 0.012, Qt::SolidLine, Qt::RoundCap));
  painter.drawLine(QPointF(-length * 0.16, 0), QPointF(length * 0.94, 0));
  for (const double along : {0.2, 0.36, 0.52, 0.68}) {
    const double reach = length * 0.19 * std::sin(along * kPi);
    painter.drawLine(QPointF(length * along, 0), QPointF(length * (along + 0.14), reach));
    painter.drawLine(QPointF(length * along, 0), QPointF(length * (along + 0.14), -reach));
  }
}

void scatterLeaves(QPainter& painter, const QSizeF& size, const Hour& hour, Random& random, int count) {
  for (int i = 0; i < count; ++i) {
    const double share = static_cast<double>(i) / count;
    const double length = std::min(size.width(), size.height()) * (0.16 + 0.26 * share);
    painter.save();
    painter.translate(random.between(-0.05, 1.0) * size.width(), random.between(-0.05, 1.05) * size.height());
    painter.rotate(random.between(0, 360));
    const QColor tint = mix(hour.far, hour.light, random.between(0, 1));
    painter.save();
    painter.translate(length * 0.03, length * 0.06);
    painter.setOpacity(0.22);
    paintLeaf(painter, length, Qt::black);
    painter.restore();
    paintLeaf(painter, length, mix(mix(hour.near, tint, 0.25 + 0.75 * share), hour.horizon, random.between(0, 0.25)));
    painter.restore();
  }
}

void paintAurora(QPainter& painter, const QSizeF& size, Random& random) {
  painter.setCompositionMode(QPainter::CompositionMode_Screen);
  for (int curtain = 0; curtain < 3; ++curtain) {
    const HillLine line(random);
    const double base = size.height() * random.between(0.42, 0.62);
    const float hue = static_cast<float>(random.between(0.36, 0.52));
    for (int x = 0; x < size.width(); x += 3) {
      const double y = base - size.height() * 0.16 * line.at(x / size.width() * 2.5, 0.4);
      const double height = size.height() * (0.3 + 0.12 * line.at(x / size.width() * 9 + 50, 0.6));
      const double strength = 0.26 + 0.2 * line.at(x / size.width() * 16 + 90, 0.6);
      QLinearGradient ray(0, y - height, 0, y);
      ray.setColorAt(0, QColor(0, 0, 0, 0));
      ray.setColorAt(0.8, QColor::fromHsvF(hue, 0.75F, 1, static_cast<float>(std::max(0.02, strength))));
      ray.setColorAt(1, QColor(0, 0, 0, 0));
      painter.fillRect(QRectF(x, y - height, 3, height), ray);
    }
  }
  painter.setCompositionMode(QPainter::CompositionMode_SourceOver);
}

void paintTower(QPainter& painter, const QRectF& tower, const QColor& wall, const QColor& lamp, Random& random) {
  painter.fillRect(tower, wall);
  const double cell = tower.width() / 7;
  const int rows = static_cast<int>(tower.height() / (cell * 1.5));
  for (int row = 0; row < rows; ++row) {
    const double y = tower.top() + cell * (1 + 1.5 * row);
    for (int column = 0; column < 6; ++column) {
      if (random.between(0, 1) < 0.42) {
        const QRectF pane(tower.left() + cell * (column + 0.7), y, cell * 0.6, cell * 0.85);
        painter.fillRect(pane, mix(wall, lamp, random.between(0.35, 1)));
      }
    }
  }
}

}  // namespace

const Hour& hour(HourName name) {
  static const std::array<Hour, static_cast<std::size_t>(HourName::Count)> kHours{
      makeHour({rgb(72, 96, 160), rgb(172, 150, 190), rgb(252, 206, 176), rgb(255, 224, 178), rgb(150, 134, 172),
                rgb(40, 42, 74)}),
      makeHour({rgb(36, 110, 196), rgb(112, 178, 232), rgb(222, 240, 250), rgb(255, 248, 220), rgb(124, 160, 190),
                rgb(28, 62, 70)}),
      makeHour({rgb(92, 130, 168), rgb(238, 196, 130), rgb(255, 226, 160), rgb(255, 236, 170), rgb(206, 150, 96),
                rgb(70, 44, 36)}),
      makeHour({rgb(58, 36, 96), rgb(218, 84, 92), rgb(255, 176, 92), rgb(255, 206, 120), rgb(160, 70, 100),
                rgb(38, 18, 52)}),
      makeHour({rgb(22, 28, 72), rgb(84, 70, 140), rgb(232, 142, 150), rgb(255, 214, 190), rgb(88, 74, 134),
                rgb(18, 18, 46)}),
      makeHour({rgb(6, 8, 28), rgb(18, 28, 68), rgb(52, 74, 124), rgb(232, 238, 255), rgb(36, 50, 92), rgb(6, 8, 22)}),
      makeHour({rgb(160, 110, 160), rgb(244, 170, 180), rgb(255, 222, 212), rgb(255, 240, 226), rgb(206, 130, 156),
                rgb(92, 38, 74)}),
      makeHour({rgb(30, 110, 128), rgb(120, 200, 190), rgb(226, 246, 222), rgb(255, 252, 214), rgb(104, 172, 164),
                rgb(14, 60, 64)}),
      makeHour({rgb(96, 116, 140), rgb(206, 186, 160), rgb(250, 222, 170), rgb(255, 206, 96), rgb(208, 112, 52),
                rgb(82, 30, 24)}),
      makeHour({rgb(52, 92, 140), rgb(148, 190, 220), rgb(236, 246, 252), rgb(255, 255, 255), rgb(150, 184, 208),
                rgb(38, 66, 100)}),
  };
  return kHours.at(static_cast<std::size_t>(name));
}

QColor mix(const QColor& from, const QColor& to, double share) {
  const auto blend = [share](int first, int second) {
    return static_cast<int>(std::lround(first + (second - first) * share));
  };
  return {blend(from.red(), to.red()), blend(from.green(), to.green()), blend(from.blue(), to.blue())};
}

void paintNightSky(QImage& picture, const Hour& hour, Random& random) {
  QPainter painter(&picture);
  painter.setRenderHint(QPainter::Antialiasing);
  const QSizeF size = picture.size();
  paintBackdrop(painter, size, mix(hour.zenith, Qt::black, 0.6), mix(hour.sky, Qt::black, 0.35));
  painter.setPen(Qt::NoPen);
  for (int i = 0; i < 2600; ++i) {
    const bool inBand = i % 2 == 0;
    const double x = random.between(0, size.width());
    const double band = size.height() * (0.75 - 0.6 * x / size.width()) + random.aroundZero() * size.height() * 0.14;
    const double bright = std::pow(random.between(0, 1), 6);
    QColor colour = mix(hour.light, inBand ? QColor(170, 190, 255) : QColor(255, 236, 214), random.between(0, 1));
    colour.setAlphaF(static_cast<float>(0.25 + 0.75 * bright));
    painter.setBrush(colour);
    const double radius = size.height() * (0.0006 + 0.0022 * bright);
    painter.drawEllipse(QPointF(x, inBand ? band : random.between(0, size.height())), radius, radius);
  }
  paintAurora(painter, size, random);
  const HillLine line(random);
  QPainterPath ground(QPointF(0, size.height()));
  for (int x = 0; x <= size.width() + 2; x += 2) {
    ground.lineTo(x, size.height() * (0.84 - 0.1 * line.at(x / size.width() * 3, 0.5)));
  }
  ground.lineTo(size.width() + 2, size.height());
  painter.fillPath(ground, mix(hour.near, Qt::black, 0.7));
}

void paintLeaves(QImage& picture, const Hour& hour, Random& random) {
  QPainter painter(&picture);
  painter.setRenderHint(QPainter::Antialiasing);
  paintBackdrop(painter, picture.size(), mix(hour.near, hour.far, 0.35), mix(hour.near, Qt::black, 0.35));
  scatterLeaves(painter, picture.size(), hour, random, 130);
}

void paintLeavesOnNothing(QImage& picture, const Hour& hour, Random& random) {
  picture.fill(Qt::transparent);
  QPainter painter(&picture);
  painter.setRenderHint(QPainter::Antialiasing);
  scatterLeaves(painter, picture.size(), hour, random, 24);
}

void paintLights(QImage& picture, const Hour& hour, Random& random) {
  QPainter painter(&picture);
  painter.setRenderHint(QPainter::Antialiasing);
  const QSizeF size = picture.size();
  paintBackdrop(painter, size, mix(hour.zenith, Qt::black, 0.55), mix(hour.near, Qt::black, 0.35));
  painter.setCompositionMode(QPainter::CompositionMode_Screen);
  painter.setPen(Qt::NoPen);
  const std::array<QColor, 4> tints{hour.light, hour.horizon, hour.sky, hour.far};
  for (int i = 0; i < 90; ++i) {
    const QPointF centre(random.between(0, size.width()), size.height() * (0.5 + 0.26 * random.aroundZero()));
    const double radius = size.height() * random.between(0.02, 0.13);
    QColor tint = tints.at(static_cast<std::size_t>(random.index(4)));
    const float strength = static_cast<float>(random.between(0.15, 0.55));
    QRadialGradient disc(centre, radius);
    tint.setAlphaF(strength * 0.7F);
    disc.setColorAt(0, tint);
    disc.setColorAt(0.82, tint);
    tint.setAlphaF(strength);
    disc.setColorAt(0.93, tint);
    tint.setAlphaF(0);
    disc.setColorAt(1, tint);
    painter.setBrush(disc);
    painter.drawEllipse(centre, radius, radius);
  }
}

void paintCity(QImage& picture, const Hour& hour, Random& random) {
  QPainter painter(&picture);
  painter.setRenderHint(QPainter::Antialiasing);
  const QSizeF size = picture.size();
  QLinearGradient sky(0, 0, 0, size.height());
  sky.setColorAt(0, hour.zenith);
  sky.setColorAt(0.5, hour.sky);
  sky.setColorAt(0.85, hour.horizon);
  painter.fillRect(QRectF(QPointF(0, 0), size), sky);
  painter.setPen(Qt::NoPen);
  painter.setBrush(mix(hour.light, hour.horizon, 0.2));
  painter.drawEllipse(QPointF(size.width() * random.between(0.2, 0.8), size.height() * 0.3), size.height() * 0.09,
                      size.height() * 0.09);
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

void paintUpArrow(QImage& picture, int count) {
  Random random(static_cast<std::uint64_t>(count));
  paintMountains(picture, hour(static_cast<HourName>(count % 5)), random);
  QPainter painter(&picture);
  painter.setRenderHint(QPainter::Antialiasing);
  const double width = picture.width();
  const double height = picture.height();
  const QPointF top(width * 0.5, height * 0.12);
  const double reach = std::min(width, height) * 0.22;
  QPainterPath arrow(top);
  arrow.lineTo(top + QPointF(reach, reach * 1.2));
  arrow.lineTo(top + QPointF(reach * 0.4, reach * 1.2));
  arrow.lineTo(top + QPointF(reach * 0.4, height * 0.6));
  arrow.lineTo(top + QPointF(-reach * 0.4, height * 0.6));
  arrow.lineTo(top + QPointF(-reach * 0.4, reach * 1.2));
  arrow.lineTo(top + QPointF(-reach, reach * 1.2));
  arrow.closeSubpath();
  painter.fillPath(arrow, QColor(255, 255, 255, 225));
  painter.setPen(Qt::NoPen);
  painter.setBrush(Qt::white);
  const double dot = std::min(width, height) * 0.028;
  for (int i = 0; i < count; ++i) {
    painter.drawEllipse(QPointF(dot * (2 + 2.6 * i), height - dot * 2), dot, dot);
  }
}

}  // namespace lumagrid::samples
