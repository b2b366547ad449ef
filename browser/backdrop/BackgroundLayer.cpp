#include "BackgroundLayer.h"

#include <QQuickWindow>
#include <QSGImageNode>

#include "Backdrop.h"
#include "Palette.h"

namespace lumagrid {

namespace {

struct BackdropNode : QSGNode {
  QSGImageNode* image = nullptr;
  Backdrop backdrop;  // that the picture shows
};

}  // namespace

BackgroundLayer::BackgroundLayer(QQuickItem* parent) : PictureItem(parent) {
  connect(Palette::instance(), &Palette::changed, this, &QQuickItem::update);
}

QSGNode* BackgroundLayer::updatePaintNode(QSGNode* oldNode, UpdatePaintNodeData* /*data*/) {
  const double ratio = window()->effectiveDevicePixelRatio();
  const QSize pixels = (size() * ratio).toSize();
  if (pixels.isEmpty()) {
    delete oldNode;
    return nullptr;
  }
  auto* node = static_cast<BackdropNode*>(oldNode);
  if (!node) {
    node = new BackdropNode;
    node->image = window()->createImageNode();
    node->image->setOwnsTexture(true);
    node->image->setFiltering(QSGTexture::Nearest);
    node->appendChildNode(node->image);
  }
  const Backdrop backdrop{size(), ratio, Palette::instance()->isDark() ? ColorScheme::dark : ColorScheme::light,
                          m_card};
  if (node->backdrop == backdrop) return node;
  node->backdrop = backdrop;
  const QImage image = backdropImage(backdrop, QRect(QPoint(), pixels));
  node->image->setTexture(window()->createTextureFromImage(image, QQuickWindow::TextureIsOpaque));
  node->image->setSourceRect(QRectF(QPointF(), pixels));
  node->image->setRect(QRectF(QPointF(), QSizeF(pixels) / ratio));
  return node;
}

}  // namespace lumagrid
