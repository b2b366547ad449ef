#pragma once

#include "PictureItem.h"

namespace lumagrid {

// Rounds a stage: covers what lies outside of the item's continuous corners with the backdrop behind it. The backdrop
// is opaque and known to the pixel, so this equals a clip of card and content to the rounded shape, at the price of
// four small pictures instead of a layer of the whole stage. Lengths in points. Main thread.
class StageCorners : public lumagrid::PictureItem {
  Q_OBJECT
  QML_ELEMENT
  Q_PROPERTY(double radius MEMBER m_radius NOTIFY changed FINAL)
  Q_PROPERTY(QSizeF backdropSize MEMBER m_backdropSize NOTIFY changed FINAL)
  Q_PROPERTY(QPointF backdropOrigin MEMBER m_backdropOrigin NOTIFY changed FINAL)  // the item's place on the backdrop

 public:
  explicit StageCorners(QQuickItem* parent = nullptr);

 protected:
  QSGNode* updatePaintNode(QSGNode* oldNode, UpdatePaintNodeData* data) override;

 private:
  [[nodiscard]] QImage coverImage(QRectF corner, double devicePixelRatio) const;

  double m_radius = 0;
  QSizeF m_backdropSize;
  QPointF m_backdropOrigin;
};

}  // namespace lumagrid
