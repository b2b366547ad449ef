#include "PhotoViewGeometry.h"

#include <algorithm>
#include <cmath>

namespace lumagrid {

QRectF fittedRect(QSizeF stage, QSize photo) {
  if (photo.isEmpty()) {
    return {};
  }
  const QSizeF box(std::max(180.0, stage.width() - 150), std::max(180.0, stage.height() - 116));
  const double factor = std::min(box.width() / photo.width(), box.height() / photo.height());
  const QSizeF size(photo.width() * factor, photo.height() * factor);
  return {QPointF((stage.width() - size.width()) / 2, (stage.height() - size.height()) / 2), size};
}

QRectF pixelAligned(const QRectF& rect, QPointF origin, double devicePixelRatio) {
  const double width = std::max(1.0, std::round(rect.width() * devicePixelRatio));
  const double height = std::max(1.0, std::round(rect.height() * devicePixelRatio));
  const QPointF corner = (rect.topLeft() + origin) * devicePixelRatio;
  const QPointF aligned(std::round(corner.x()), std::round(corner.y()));
  return {aligned / devicePixelRatio - origin, QSizeF(width, height) / devicePixelRatio};
}

QRectF PhotoStage::fittedBox(QSize photo) const {
  return pixelAligned(fittedRect(size, photo), origin, devicePixelRatio);
}

QSize PhotoStage::fittedPixels(QSize photo) const {
  const QSize device = (fittedBox(photo).size() * devicePixelRatio).toSize();
  return device.width() >= photo.width() && device.height() >= photo.height() ? photo : device.boundedTo(photo);
}

QRectF zoomedRect(const QRectF& fitted, QSizeF stage, const ZoomState& zoom) {
  const QPointF center(stage.width() / 2, stage.height() / 2);
  return {(fitted.topLeft() - center) * zoom.scale + center + zoom.offset, fitted.size() * zoom.scale};
}

int levelFor(double photoPixelsPerDevicePixel, int levelCount) {
  int level = 0;
  for (double density = photoPixelsPerDevicePixel; density >= 2 && level + 1 < levelCount; density /= 2) {
    ++level;
  }
  return level;
}

QRectF PhotoBlock::photoRect(QSize photo) const {
  const double side = std::ldexp(kSide, level);
  return QRectF(column * side, row * side, side, side).intersected(QRectF(QPointF(), QSizeF(photo)));
}

QRect PhotoBlock::texels(QSize levelSize) const {
  return QRect(column * kSide, row * kSide, kSide, kSide)
      .adjusted(-1, -1, 1, 1)
      .intersected(QRect(QPoint(), levelSize));
}

QRectF PhotoBlock::sourceRect(const QRectF& part) const {
  const double texel = std::ldexp(1.0, level);
  const QPointF uploaded(std::max(0, column * kSide - 1), std::max(0, row * kSide - 1));
  return {part.topLeft() / texel - uploaded, part.size() / texel};
}

QRect blocksTouching(const QRectF& visible, QSize photo, int level) {
  const QRectF seen = visible.intersected(QRectF(QPointF(), QSizeF(photo)));
  if (seen.isEmpty()) {
    return {};
  }
  const double side = std::ldexp(PhotoBlock::kSide, level);
  const QPoint first(static_cast<int>(seen.left() / side), static_cast<int>(seen.top() / side));
  const QPoint last(static_cast<int>(std::ceil(seen.right() / side)) - 1,
                    static_cast<int>(std::ceil(seen.bottom() / side)) - 1);
  return {first, last};
}

}  // namespace lumagrid
