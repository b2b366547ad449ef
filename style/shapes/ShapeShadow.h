#pragma once

#include <QColor>

#include "PictureItem.h"

namespace lumagrid {

// The shadow of a shape that has the item's bounds: black under a Gaussian of sigma blur / 2, moved down by offsetY.
// It lies beneath the shape, so it is drawn inside of it too. Lengths in points. Main thread.
class ShapeShadow : public lumagrid::PictureItem {
  Q_OBJECT
  QML_ELEMENT
  Q_PROPERTY(double radius MEMBER m_radius NOTIFY changed FINAL)  // of continuous corners; 0: square ones
  Q_PROPERTY(double blur MEMBER m_blur NOTIFY changed FINAL)
  Q_PROPERTY(double offsetY MEMBER m_offsetY NOTIFY changed FINAL)
  Q_PROPERTY(QColor color MEMBER m_color NOTIFY changed FINAL)

 public:
  using PictureItem::PictureItem;

 protected:
  QSGNode* updatePaintNode(QSGNode* old, UpdatePaintNodeData*) override;

 private:
  double m_radius = 0;
  double m_blur = 0;
  double m_offsetY = 0;
  QColor m_color = Qt::black;
};

}  // namespace lumagrid
