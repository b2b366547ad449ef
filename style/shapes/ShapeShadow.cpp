#include "ShapeShadow.h"

#include "NinePatchNode.h"
#include "PixelGrid.h"

namespace lumagrid {

QSGNode* ShapeShadow::updatePaintNode(QSGNode* old, UpdatePaintNodeData*) {
  auto* node = old ? static_cast<NinePatchNode*>(old) : new NinePatchNode;
  const QRectF bounds = boundingRect().translated(offsetToPixelGrid(*this) + QPointF(0, m_offsetY));
  node->setShape(window(), {.part = Shape::Part::shadow, .radius = m_radius, .blur = m_blur, .color = m_color.rgb()},
                 bounds);
  node->setOpacity(m_color.alphaF());
  return node;
}

}  // namespace lumagrid
