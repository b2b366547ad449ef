#include "IconPainter.h"

namespace lumagrid {

IconPainter::IconPainter(QPainter& painter, QColor color, double strokeWidth)
    : m_painter(painter), m_color(color), m_strokeWidth(strokeWidth) {
  m_painter.setBrush(Qt::NoBrush);
  setStrokeWidth(strokeWidth);
}

void IconPainter::draw(IconName name) {
  switch (name) {
    case IconName::none:
      return;
    case IconName::squareGrid3x3Fill:
      return drawGrid();
    case IconName::folderBadgePlus:
      return drawFolder();
    case IconName::minusMagnifyingGlass:
      drawMagnifyingGlass();
      return line({7.2, 10.3}, {13.4, 10.3});
    case IconName::plusMagnifyingGlass:
      drawMagnifyingGlass();
      line({7.2, 10.3}, {13.4, 10.3});
      return line({10.3, 7.2}, {10.3, 13.4});
    case IconName::arrowUpArrowDown:
      return drawArrows();
    case IconName::checkmark:
      return polyline({{4.2, 12.9}, {9.4, 18.4}, {19.8, 5.6}});
    case IconName::checkmarkCircleFill:
      return drawCheckedDisc();
    case IconName::trash:
      return drawTrash();
    // The tip weighs more than the open side: half a unit towards it centers the chevron to the eye.
    case IconName::chevronLeft:
      return polyline({{15, 4}, {7.2, 12}, {15, 20}});
    case IconName::chevronRight:
      return polyline({{9, 4}, {16.8, 12}, {9, 20}});
    case IconName::photoOnRectangleAngled:
      return drawPhotos();
  }
}

void IconPainter::drawGrid() {
  constexpr double kCell = 16.0 / 3;
  m_painter.setPen(Qt::NoPen);
  m_painter.setBrush(m_color);
  for (int row = 0; row < 3; ++row) {
    for (int column = 0; column < 3; ++column) {
      m_painter.drawRoundedRect(QRectF(2 + column * (kCell + 2), 2 + row * (kCell + 2), kCell, kCell), 1.3, 1.3);
    }
  }
}

void IconPainter::drawFolder() {
  QPainterPath path({11.8, 19.2});
  path.lineTo(4.6, 19.2);
  path.quadTo({2.4, 19.2}, {2.4, 17});
  path.lineTo(2.4, 6.4);
  path.quadTo({2.4, 4.2}, {4.6, 4.2});
  path.lineTo(8.2, 4.2);
  path.quadTo({9, 4.2}, {9.6, 4.8});
  path.lineTo(11.2, 6.4);
  path.quadTo({11.8, 7}, {12.6, 7});
  path.lineTo(18.2, 7);
  path.quadTo({20.4, 7}, {20.4, 9.2});
  path.lineTo(20.4, 11);
  stroke(path);
  line({18.8, 15.4}, {18.8, 21.8});
  line({15.6, 18.6}, {22, 18.6});
}

void IconPainter::drawMagnifyingGlass() {
  m_painter.drawEllipse(QPointF(10.3, 10.3), 7.6, 7.6);
  line({15.9, 15.9}, {21.4, 21.4});
}

void IconPainter::drawArrows() {
  line({7.2, 20.4}, {7.2, 3.8});
  polyline({{3, 8}, {7.2, 3.8}, {11.4, 8}});
  line({16.8, 3.6}, {16.8, 20.2});
  polyline({{12.6, 16}, {16.8, 20.2}, {21, 16}});
}

void IconPainter::drawCheckedDisc() {
  m_painter.save();
  m_painter.setPen(Qt::NoPen);
  m_painter.setBrush(m_color);
  m_painter.drawEllipse(QPointF(12, 12), 10, 10);
  m_painter.restore();
  setErasing(true);
  polyline({{7.4, 12.6}, {10.7, 16}, {16.6, 8.3}});
  setErasing(false);
}

void IconPainter::drawTrash() {
  line({3.4, 5.8}, {20.6, 5.8});
  QPainterPath handle({8.6, 5.4});
  handle.lineTo(8.9, 4);
  handle.quadTo({9.2, 2.6}, {10.6, 2.6});
  handle.lineTo(13.4, 2.6);
  handle.quadTo({14.8, 2.6}, {15.1, 4});
  handle.lineTo(15.4, 5.4);
  stroke(handle);
  QPainterPath can({5.4, 6});
  can.lineTo(6.2, 19.2);
  can.quadTo({6.4, 21.6}, {8.8, 21.6});
  can.lineTo(15.2, 21.6);
  can.quadTo({17.6, 21.6}, {17.8, 19.2});
  can.lineTo(18.6, 6);
  stroke(can);
  setStrokeWidth(m_strokeWidth * 0.75);
  line({9.9, 10}, {10.2, 17.4});
  line({14.1, 10}, {13.8, 17.4});
}

void IconPainter::drawPhotos() {
  m_painter.save();
  m_painter.translate(10, 9);
  m_painter.rotate(-10);
  m_painter.drawRoundedRect(QRectF(-7.8, -6, 15.6, 12), 2.2, 2.2);
  m_painter.restore();

  m_painter.translate(14, 14.6);
  m_painter.rotate(6);
  const QRectF front(-7.8, -6, 15.6, 12);
  setErasing(true);
  m_painter.fillRect(front, Qt::black);
  setStrokeWidth(3 * m_strokeWidth);
  m_painter.drawRoundedRect(front, 2.2, 2.2);
  setErasing(false);
  setStrokeWidth(m_strokeWidth);
  m_painter.drawRoundedRect(front, 2.2, 2.2);
  polyline({{-7.4, 3.4}, {-3.4, -0.6}, {1, 3.8}, {3.4, 1.6}, {7.4, 4.8}});
  m_painter.setPen(Qt::NoPen);
  m_painter.setBrush(m_color);
  m_painter.drawEllipse(QPointF(3.2, -2.4), 1.4, 1.4);
}

void IconPainter::line(QPointF from, QPointF to) {
  m_painter.drawLine(from, to);
}

void IconPainter::stroke(const QPainterPath& path) {
  m_painter.drawPath(path);
}

void IconPainter::setStrokeWidth(double width) {
  m_painter.setPen(QPen(m_color, width, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin));
}

void IconPainter::setErasing(bool erasing) {
  m_painter.setCompositionMode(erasing ? QPainter::CompositionMode_DestinationOut
                                       : QPainter::CompositionMode_SourceOver);
}

}  // namespace lumagrid
