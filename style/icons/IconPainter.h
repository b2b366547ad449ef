#pragma once

#include <QColor>
#include <QPainter>
#include <QPainterPath>
#include <QPolygonF>

#include "IconImage.h"

namespace lumagrid {

// The side of the grid that every icon is drawn on.
inline constexpr double kIconGrid = 24;

// Draws icons with a painter that is scaled to the grid and whose device starts out transparent: icons may erase what
// they drew before.
class IconPainter {
 public:
  IconPainter(QPainter& painter, QColor color, double strokeWidth);

  void draw(IconName name);

 private:
  void drawGrid();
  void drawFolder();
  void drawMagnifyingGlass();
  void drawArrows();
  void drawCheckedDisc();
  void drawTrash();
  void drawPhotos();

  void line(QPointF from, QPointF to);
  void stroke(const QPainterPath& path);
  void polyline(const QPolygonF& points) { m_painter.drawPolyline(points); }
  void setStrokeWidth(double width);
  // What is drawn next is cut out of what is there.
  void setErasing(bool erasing);

  QPainter& m_painter;
  QColor m_color;
  double m_strokeWidth;
};

}  // namespace lumagrid
