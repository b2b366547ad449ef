#pragma once

#include "PictureItem.h"

namespace lumagrid {

// The card under a stage's content: a gradient from the top left to the bottom right corner, light or dark as the
// palette is. Its corners are square; StageCorners rounds them together with the content. Main thread.
class StageCard : public lumagrid::PictureItem {
  Q_OBJECT
  QML_ELEMENT

 public:
  explicit StageCard(QQuickItem* parent = nullptr);

 protected:
  QSGNode* updatePaintNode(QSGNode* oldNode, UpdatePaintNodeData* data) override;
};

}  // namespace lumagrid
