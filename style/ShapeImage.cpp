#include "ShapeImage.h"

#include <QHashFunctions>
#include <QPainter>
#include <algorithm>
#include <cmath>
#include <vector>

#include "ContinuousPath.h"
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
    return qHashMulti(0, int(key.shape.part), key.shape.radius, key.shape.extent, key.shape.color, key.shape.isHollow,
                      key.size.width(), key.size.height());
  }
};

std::vector<float> gaussianKernel(double sigma, int reach) {
  std::vector<float> kernel(std::size_t(reach) + 1);
  float sum = 0;
  for (int i = 0; i <= reach; ++i) {
    kernel[i] = float(std::exp(-i * i / (2 * sigma * sigma)));
    sum += i == 0 ? kernel[i] : 2 * kernel[i];
  }
  for (float& value : kernel) value /= sum;
  return kernel;
}

// Convolves each row of `source`, and writes it as a column of the result.
std::vector<float> blurredAndTransposed(const std::vector<float>& source, int width, int height,
                                        const std::vector<float>& kernel) {
  const int reach = int(kernel.size()) - 1;
  std::vector<float> result(source.size());
  for (int y = 0; y < height; ++y) {
    const float* row = source.data() + std::size_t(y) * width;
    for (int x = 0; x < width; ++x) {
      float sum = 0;
      for (int i = std::max(-reach, -x); i <= std::min(reach, width - 1 - x); ++i) {
        sum += row[x + i] * kernel[std::abs(i)];
      }
      result[std::size_t(x) * height + y] = sum;
    }
  }
  return result;
}

QImage blurred(const QImage& image, double sigma, int reach, QRgb color) {
  const int width = image.width();
  const int height = image.height();
  std::vector<float> alpha(std::size_t(width) * height);
  for (int y = 0; y < height; ++y) {
    const auto* line = reinterpret_cast<const QRgb*>(image.constScanLine(y));
    for (int x = 0; x < width; ++x) alpha[std::size_t(y) * width + x] = float(qAlpha(line[x]));
  }
  const auto kernel = gaussianKernel(sigma, reach);
  alpha = blurredAndTransposed(alpha, width, height, kernel);
  alpha = blurredAndTransposed(alpha, height, width, kernel);
  QImage result(image.size(), QImage::Format_ARGB32_Premultiplied);
  for (int y = 0; y < height; ++y) {
    auto* line = reinterpret_cast<QRgb*>(result.scanLine(y));
    for (int x = 0; x < width; ++x) {
      const int a = std::clamp(int(std::lround(alpha[std::size_t(y) * width + x])), 0, 255);
      line[x] = qPremultiply(qRgba(qRed(color), qGreen(color), qBlue(color), a));
    }
  }
  return result;
}

QImage draw(const PixelShape& key, int outset) {
  QImage image(key.size + QSize(2 * outset, 2 * outset), QImage::Format_ARGB32_Premultiplied);
  image.fill(Qt::transparent);
  const QPainterPath path =
      continuousRectanglePath(QRectF(QPointF(outset, outset), QSizeF(key.size)), key.shape.radius);
  QPainter painter(&image);
  painter.setRenderHint(QPainter::Antialiasing);
  if (key.shape.part == Shape::Part::stroke) {
    QPen pen(QColor(key.shape.color), key.shape.extent, Qt::SolidLine, Qt::FlatCap, Qt::MiterJoin);
    pen.setMiterLimit(10);
    painter.strokePath(path, pen);
  } else {
    painter.fillPath(path, QColor(key.shape.color));
  }
  painter.end();
  if (key.shape.part == Shape::Part::shadow && outset > 0) {
    return blurred(image, key.shape.extent / 2, outset, key.shape.color);
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
  key.shape.extent = shape.extent * devicePixelRatio;
  key.shape.color = shape.color | 0xff000000;

  const int corner = int(std::ceil(cornerReach(pixels, key.shape.radius) * key.shape.radius - 1e-6));
  int outset = 0;
  int depth = corner;
  if (shape.part == Shape::Part::stroke) {
    outset = int(std::ceil(key.shape.extent / 2 - 1e-6));
    depth = std::max(corner, outset);
  } else if (shape.part == Shape::Part::shadow) {
    outset = int(std::ceil(3 * key.shape.extent / 2 - 1e-6));
    depth = corner + outset;
  }
  const Axis horizontal = axisFor(pixels.width(), depth);
  const Axis vertical = axisFor(pixels.height(), depth);
  key.size = {horizontal.length, vertical.length};
  if (auto found = cache.object(key)) return *found;

  NinePatch patch;
  patch.image = draw(key, outset);
  patch.fixed = {outset + horizontal.first, outset + vertical.first, outset + horizontal.last, outset + vertical.last};
  patch.outset = outset;
  patch.middle =
      shape.part == Shape::Part::stroke || shape.isHollow ? NinePatch::Middle::empty : NinePatch::Middle::drawn;
  cache.setObject(key, patch, std::size_t(patch.image.sizeInBytes()));
  return patch;
}

}  // namespace lumagrid
