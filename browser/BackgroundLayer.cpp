#include "BackgroundLayer.h"

#include <QQuickWindow>
#include <QSGImageNode>

#include "Backdrop.h"
#include "Palette.h"

namespace lumagrid {

namespace {

// What the picture was made for.
struct BackdropNode : QSGNode {
  QSGImageNode* image = nullptr;
  QSizeF size;
  double devicePixelRatio = 0;
  bool isDark = false;
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
  const bool isDark = Palette::instance()->isDark();
  if (node->size == size() && node->devicePixelRatio == ratio && node->isDark == isDark) return node;
  node->size = size();
  node->devicePixelRatio = ratio;
  node->isDark = isDark;
  const QImage image =
      backdropImage(size(), ratio, isDark ? ColorScheme::dark : ColorScheme::light, QRect(QPoint(), pixels));
  node->image->setTexture(window()->createTextureFromImage(image, QQuickWindow::TextureIsOpaque));
  node->image->setSourceRect(QRectF(QPointF(), pixels));
  node->image->setRect(QRectF(QPointF(), QSizeF(pixels) / ratio));
  return node;
}

}  // namespace lumagrid
