#pragma once

#include "PictureItem.h"

namespace lumagrid {

// The backdrop of the window, behind everything: it fills the item, light or dark as the palette is. Main thread.
class BackgroundLayer : public lumagrid::PictureItem {
  Q_OBJECT
  QML_ELEMENT

 public:
  explicit BackgroundLayer(QQuickItem* parent = nullptr);

 protected:
  QSGNode* updatePaintNode(QSGNode* oldNode, UpdatePaintNodeData* data) override;
};

}  // namespace lumagrid
