#include "ShapeShadow.h"

#include "NinePatchNode.h"
#include "PixelGrid.h"

namespace lumagrid {

ShapeShadow::ShapeShadow(QQuickItem* parent) : QQuickItem(parent) {
  setFlag(ItemHasContents);
  connect(this, &ShapeShadow::changed, this, &QQuickItem::update);
}

QSGNode* ShapeShadow::updatePaintNode(QSGNode* old, UpdatePaintNodeData*) {
  auto* node = old ? static_cast<NinePatchNode*>(old) : new NinePatchNode;
  const QRectF bounds = boundingRect().translated(offsetToPixelGrid(*this) + QPointF(0, m_offsetY));
  node->setShape(window(), {.part = Shape::Part::shadow, .radius = m_radius, .extent = m_blur, .color = m_color.rgb()},
                 bounds);
  node->setOpacity(m_color.alphaF());
  return node;
}

void ShapeShadow::itemChange(ItemChange change, const ItemChangeData& data) {
  if (change == ItemDevicePixelRatioHasChanged) update();
  QQuickItem::itemChange(change, data);
}

}  // namespace lumagrid
