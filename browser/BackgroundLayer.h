#pragma once

#include <QQuickItem>

namespace lumagrid {

// The backdrop of the window, behind everything: it fills the item, light or dark as the palette is. Main thread.
class BackgroundLayer : public QQuickItem {
  Q_OBJECT
  QML_ELEMENT

 public:
  explicit BackgroundLayer(QQuickItem* parent = nullptr);

 protected:
  QSGNode* updatePaintNode(QSGNode* oldNode, UpdatePaintNodeData* data) override;
  void itemChange(ItemChange change, const ItemChangeData& data) override;
};

}  // namespace lumagrid
