#pragma once

#include <QColor>

#include "PictureItem.h"

namespace lumagrid {

// A rectangle with continuous corners (ContinuousPath.h), filled and then stroked on its path: half of the stroke lies
// outside of the item's bounds. Lengths in points. Changing a color's opacity costs no new picture. Main thread.
class ContinuousRectangle : public lumagrid::PictureItem {
  Q_OBJECT
  QML_ELEMENT
  Q_PROPERTY(double radius MEMBER m_radius NOTIFY changed FINAL)
  Q_PROPERTY(QColor color MEMBER m_color NOTIFY changed FINAL)
  Q_PROPERTY(QColor strokeColor MEMBER m_strokeColor NOTIFY changed FINAL)
  Q_PROPERTY(double strokeWidth MEMBER m_strokeWidth NOTIFY changed FINAL)

 public:
  using PictureItem::PictureItem;

 protected:
  QSGNode* updatePaintNode(QSGNode* old, UpdatePaintNodeData*) override;

 private:
  double m_radius = 0;
  QColor m_color = Qt::transparent;
  QColor m_strokeColor = Qt::transparent;
  double m_strokeWidth = 0;
};

}  // namespace lumagrid
