#include "StageCorners.h"

#include <QPainter>
#include <QQuickWindow>
#include <QSGImageNode>
#include <cmath>

#include "Backdrop.h"
#include "ContinuousPath.h"
#include "Palette.h"

namespace lumagrid {

StageCorners::StageCorners(QQuickItem* parent) : PictureItem(parent) {
  connect(Palette::instance(), &Palette::changed, this, &QQuickItem::update);
}

// The backdrop in `corner` (points of the item), where it lies outside of the rounded shape.
QImage StageCorners::coverImage(QRectF corner, double devicePixelRatio) const {
  const QRect part(((m_backdropOrigin + corner.topLeft()) * devicePixelRatio).toPoint(),
                   (corner.size() * devicePixelRatio).toSize());
  const ColorScheme colorScheme = Palette::instance()->isDark() ? ColorScheme::dark : ColorScheme::light;
  QImage cover = backdropImage({m_backdropSize, devicePixelRatio, colorScheme}, part)
                     .convertToFormat(QImage::Format_ARGB32_Premultiplied);
  cover.setDevicePixelRatio(1);
  QPainter painter(&cover);
  painter.setRenderHint(QPainter::Antialiasing);
  painter.setCompositionMode(QPainter::CompositionMode_DestinationOut);
  painter.scale(devicePixelRatio, devicePixelRatio);
  painter.translate(-corner.topLeft());
  painter.fillPath(continuousRectanglePath(boundingRect(), m_radius), Qt::black);
  painter.end();
  return cover;
}

QSGNode* StageCorners::updatePaintNode(QSGNode* oldNode, UpdatePaintNodeData* /*data*/) {
  delete oldNode;
  const double ratio = window()->effectiveDevicePixelRatio();
  // Whole pixels at every ratio, so that the covers meet the pixels of the backdrop.
  const double side = std::ceil(std::ceil(m_radius * kContinuousCornerReach) * ratio) / ratio;
  if (width() < 2 * side || height() < 2 * side) return nullptr;
  const double right = std::round((width() - side) * ratio) / ratio;
  const double bottom = std::round((height() - side) * ratio) / ratio;
  auto* node = new QSGNode;
  for (const QPointF topLeft : {QPointF(0, 0), QPointF(right, 0), QPointF(0, bottom), QPointF(right, bottom)}) {
    const QRectF corner(topLeft, QSizeF(side, side));
    QSGImageNode* image = window()->createImageNode();
    image->setOwnsTexture(true);
    image->setFiltering(QSGTexture::Nearest);
    const QImage cover = coverImage(corner, ratio);
    image->setTexture(window()->createTextureFromImage(cover));
    image->setSourceRect(QRectF(QPointF(), cover.size()));
    image->setRect(corner);
    node->appendChildNode(image);
  }
  return node;
}

}  // namespace lumagrid
