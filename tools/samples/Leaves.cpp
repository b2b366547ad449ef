#include <QLinearGradient>
#include <QPainter>
#include <QPainterPath>
#include <algorithm>
#include <cmath>

#include "Scenes.h"

namespace lumagrid::samples {

namespace {

void paintLeaf(QPainter& painter, double length, const QColor& color) {
  QPainterPath blade(QPointF(0, 0));
  blade.cubicTo(length * 0.2, -length * 0.32, length * 0.7, -length * 0.3, length, 0);
  blade.cubicTo(length * 0.7, length * 0.3, length * 0.2, length * 0.32, 0, 0);
  QLinearGradient shade(0, -length * 0.3, 0, length * 0.3);
  shade.setColorAt(0, mix(color, Qt::white, 0.25));
  shade.setColorAt(0.5, color);
  shade.setColorAt(1, mix(color, Qt::black, 0.3));
  painter.fillPath(blade, shade);
  painter.setPen(QPen(mix(color, Qt::black, 0.35), length * 0.012, Qt::SolidLine, Qt::RoundCap));
  painter.drawLine(QPointF(-length * 0.16, 0), QPointF(length * 0.94, 0));
  for (const double along : {0.2, 0.36, 0.52, 0.68}) {
    const double reach = length * 0.19 * std::sin(along * std::numbers::pi);
    for (const double side : {reach, -reach}) {
      painter.drawLine(QPointF(length * along, 0), QPointF(length * (along + 0.14), side));
    }
  }
}

void scatterLeaves(QPainter& painter, const QSizeF& size, const Hour& hour, Random& random, int count) {
  painter.setRenderHint(QPainter::Antialiasing);
  for (int i = 0; i < count; ++i) {
    const double share = static_cast<double>(i) / count;
    const double length = std::min(size.width(), size.height()) * (0.16 + 0.26 * share);
    const QColor tint = mix(hour.far, hour.light, random.between(0, 1));
    painter.save();
    painter.translate(random.between(-0.05, 1.0) * size.width(), random.between(-0.05, 1.05) * size.height());
    painter.rotate(random.between(0, 360));
    painter.translate(length * 0.03, length * 0.06);
    painter.setOpacity(0.22);
    paintLeaf(painter, length, Qt::black);  // its shadow
    painter.translate(-length * 0.03, -length * 0.06);
    painter.setOpacity(1);
    paintLeaf(painter, length, mix(mix(hour.near, tint, 0.25 + 0.75 * share), hour.horizon, random.between(0, 0.25)));
    painter.restore();
  }
}

}  // namespace

void paintLeaves(QImage& picture, const Hour& hour, Random& random) {
  picture.fill(mix(hour.near, Qt::black, 0.2));
  QPainter painter(&picture);
  scatterLeaves(painter, picture.size(), hour, random, 130);
}

void paintLeavesOnNothing(QImage& picture, const Hour& hour, Random& random) {
  picture.fill(Qt::transparent);
  QPainter painter(&picture);
  scatterLeaves(painter, picture.size(), hour, random, 24);
}

}  // namespace lumagrid::samples
