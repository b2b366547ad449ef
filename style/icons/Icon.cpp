#include "Icon.h"

#include <cmath>

#include "IconImage.h"
#include "NinePatchNode.h"
#include "PixelGrid.h"

namespace lumagrid {

namespace {

IconWeight iconWeight(int fontWeight) {
  if (fontWeight >= QFont::Bold) return IconWeight::bold;
  return fontWeight >= QFont::DemiBold ? IconWeight::semibold : IconWeight::medium;
}

}  // namespace

Icon::Icon(QQuickItem* parent) : PictureItem(parent) {
  connect(this, &Icon::changed, this, &Icon::updateImplicitSize);
  updateImplicitSize();
}

QSGNode* Icon::updatePaintNode(QSGNode* old, UpdatePaintNodeData*) {
  auto* node = old ? static_cast<NinePatchNode*>(old) : new NinePatchNode;
  const double ratio = window()->effectiveDevicePixelRatio();
  const QImage image = iconImage(iconNamed(m_name), m_size, iconWeight(m_weight), m_color.rgb(), ratio, m_blur);
  const double side = iconSide(m_size);
  // Nothing of it is stretched.
  const NinePatch patch{.image = image,
                        .border = {image.width(), image.height(), 0, 0},
                        .outset = (image.width() - int(std::lround(side * ratio))) / 2};
  QRectF square(0, 0, side, side);
  square.moveCenter(boundingRect().center());
  node->setPatch(window(), patch, square.translated(offsetToPixelGrid(*this, square.topLeft())), ratio);
  node->setOpacity(m_color.alphaF());
  return node;
}

void Icon::updateImplicitSize() {
  const double side = iconSide(m_size);
  setImplicitSize(side, side);
}

}  // namespace lumagrid
