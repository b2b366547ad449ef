#include "ShapeImage.h"

#include <QHashFunctions>
#include <QPainter>
#include <algorithm>
#include <cmath>

#include "ContinuousPath.h"
#include "GaussianBlur.h"
#include "MemoryCache.h"

namespace lumagrid {

namespace {

constexpr std::size_t kShapeCacheBytes = 8 << 20;  // some hundred corners; a window needs about twenty

// Everything that a picture depends on, in device pixels.
struct PixelShape {
  Shape shape;
  QSize size;

  friend bool operator==(const PixelShape&, const PixelShape&) = default;
};

struct PixelShapeHash {
  std::size_t operator()(const PixelShape& key) const {
    return qHashMulti(0, int(key.shape.part), key.shape.radius, key.shape.lineWidth, key.shape.blur, key.shape.color,
                      key.shape.isHollow, key.size.width(), key.size.height());
  }
};

QImage draw(const PixelShape& key, int outset) {
  QImage image(key.size + QSize(2 * outset, 2 * outset), QImage::Format_ARGB32_Premultiplied);
  image.fill(Qt::transparent);
  const QPainterPath path =
      continuousRectanglePath(QRectF(QPointF(outset, outset), QSizeF(key.size)), key.shape.radius);
  QPainter painter(&image);
  painter.setRenderHint(QPainter::Antialiasing);
  if (key.shape.part == Shape::Part::stroke) {
    QPen pen(QColor(key.shape.color), key.shape.lineWidth, Qt::SolidLine, Qt::FlatCap, Qt::MiterJoin);
    pen.setMiterLimit(10);
    painter.strokePath(path, pen);
  } else {
    painter.fillPath(path, QColor(key.shape.color));
  }
  painter.end();
  if (key.shape.part == Shape::Part::shadow && outset > 0) {
    return blurredShadow(image, key.shape.blur / 2, key.shape.color);
  }
  return image;
}

// The length of a picture's shape along one axis, and the pixels at both its ends that are never stretched.
struct Axis {
  int length;
  int first;
  int last;
};

Axis axisFor(int length, int depth) {
  if (length > 2 * depth + 1) return {2 * depth + 1, depth, depth};
  return {length, length - length / 2, length / 2};
}

}  // namespace

NinePatch shapeImage(const Shape& shape, QSizeF size, double devicePixelRatio) {
  static MemoryCache<PixelShape, NinePatch, PixelShapeHash> cache(kShapeCacheBytes);

  const QSize pixels(std::max(1, int(std::lround(size.width() * devicePixelRatio))),
                     std::max(1, int(std::lround(size.height() * devicePixelRatio))));
  PixelShape key{.shape = shape, .size = {}};
  key.shape.radius = std::clamp(shape.radius * devicePixelRatio, 0.0, std::min(pixels.width(), pixels.height()) / 2.0);
  key.shape.lineWidth = shape.lineWidth * devicePixelRatio;
  key.shape.blur = shape.blur * devicePixelRatio;
  key.shape.color = shape.color | 0xff000000;

  const int corner = int(std::ceil(cornerReach(pixels, key.shape.radius) * key.shape.radius - 1e-6));
  int outset = 0;
  int depth = corner;
  if (shape.part == Shape::Part::stroke) {
    outset = int(std::ceil(key.shape.lineWidth / 2 - 1e-6));
    depth = std::max(corner, outset);
  } else if (shape.part == Shape::Part::shadow) {
    outset = blurReach(key.shape.blur / 2);
    depth = corner + outset;
  }
  const Axis horizontal = axisFor(pixels.width(), depth);
  const Axis vertical = axisFor(pixels.height(), depth);
  key.size = {horizontal.length, vertical.length};
  if (auto found = cache.object(key)) return *found;

  NinePatch patch;
  patch.image = draw(key, outset);
  patch.border = {outset + horizontal.first, outset + vertical.first, outset + horizontal.last, outset + vertical.last};
  patch.outset = outset;
  patch.middle =
      shape.part == Shape::Part::stroke || shape.isHollow ? NinePatch::Middle::empty : NinePatch::Middle::drawn;
  cache.setObject(key, patch, std::size_t(patch.image.sizeInBytes()));
  return patch;
}

}  // namespace lumagrid
