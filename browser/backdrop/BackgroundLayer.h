#pragma once

#include "PictureItem.h"

namespace lumagrid {

// The backdrop of the window, behind everything, and on it the card of the stage: one opaque picture, since a card
// blended over it took a sixth of a frame without a GPU. It fills the item, light or dark as the palette is. Main
// thread.
class BackgroundLayer : public lumagrid::PictureItem {
  Q_OBJECT
  QML_ELEMENT
  Q_PROPERTY(QRectF card MEMBER m_card NOTIFY changed FINAL)  // in the item's points

 public:
  explicit BackgroundLayer(QQuickItem* parent = nullptr);

 protected:
  QSGNode* updatePaintNode(QSGNode* oldNode, UpdatePaintNodeData* data) override;

 private:
  QRectF m_card;
};

}  // namespace lumagrid
