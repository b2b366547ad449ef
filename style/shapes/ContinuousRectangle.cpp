#include "ContinuousRectangle.h"

#include "NinePatchNode.h"
#include "PixelGrid.h"

namespace lumagrid {

QSGNode* ContinuousRectangle::updatePaintNode(QSGNode* old, UpdatePaintNodeData*) {
  auto* root = old;
  if (!root) {
    // The software renderer finds no place for the children of a plain node once their opacity alone changes.
    root = new QSGTransformNode;
    root->appendChildNode(new NinePatchNode);
    root->appendChildNode(new NinePatchNode);
  }
  auto* fill = static_cast<NinePatchNode*>(root->firstChild());
  auto* stroke = static_cast<NinePatchNode*>(root->lastChild());
  const QRectF bounds = boundingRect().translated(offsetToPixelGrid(*this));
  if (m_color.alpha() > 0) {
    fill->setShape(window(), {.part = Shape::Part::fill, .radius = m_radius, .color = m_color.rgb()}, bounds);
    fill->setOpacity(m_color.alphaF());
  } else {
    fill->clear();
  }
  if (m_strokeColor.alpha() > 0 && m_strokeWidth > 0) {
    stroke->setShape(
        window(),
        {.part = Shape::Part::stroke, .radius = m_radius, .lineWidth = m_strokeWidth, .color = m_strokeColor.rgb()},
        bounds);
    stroke->setOpacity(m_strokeColor.alphaF());
  } else {
    stroke->clear();
  }
  return root;
}

}  // namespace lumagrid
