#include "NinePatchNode.h"

#include <QQuickWindow>
#include <QSGGeometryNode>
#include <QSGImageNode>
#include <QSGRendererInterface>
#include <QSGTextureMaterial>
#include <cmath>
#include <map>
#include <mutex>
#include <vector>

namespace lumagrid {

namespace {

// A third of the patch along one axis, its first border, its middle or its last border: where it lies in the item
// (points) and in the picture (pixels).
struct Span {
  double start;
  double end;
  double imageStart;
  double imageEnd;
  bool isStretched;
};

std::vector<Span> spans(double start, double end, int imageLength, int first, int last, double pixel) {
  const double edges[] = {start, start + first * pixel, end - last * pixel, end};
  const double imageEdges[] = {0, double(first), double(imageLength - last), double(imageLength)};
  std::vector<Span> result;
  for (int i = 0; i < 3; ++i) {
    if (imageEdges[i + 1] > imageEdges[i]) {
      const bool isPixel = imageEdges[i + 1] - imageEdges[i] == 1;  // what is larger is drawn as it is, as an icon is
      result.push_back({edges[i], edges[i + 1], imageEdges[i], imageEdges[i + 1], i == 1 && isPixel});
    }
  }
  return result;
}

struct Spans {
  std::vector<Span> columns;
  std::vector<Span> rows;
  bool middleIsEmpty;

  bool isDrawn(const Span& column, const Span& row) const {
    return !(middleIsEmpty && column.isStretched && row.isStretched);
  }
};

Spans spans(const QRectF& outer, const NinePatch& patch, double pixel) {
  return {spans(outer.left(), outer.right(), patch.image.width(), patch.border.left(), patch.border.right(), pixel),
          spans(outer.top(), outer.bottom(), patch.image.height(), patch.border.top(), patch.border.bottom(), pixel),
          patch.middle == NinePatch::Middle::empty};
}

}  // namespace

std::shared_ptr<QSGTexture> sharedTexture(QQuickWindow* window, const QImage& image) {
  // Windows may have a render thread each.
  static std::mutex mutex;
  static std::map<std::pair<QQuickWindow*, qint64>, std::weak_ptr<QSGTexture>> textures;

  const std::scoped_lock lock(mutex);
  auto& entry = textures[{window, image.cacheKey()}];
  if (auto texture = entry.lock()) return texture;
  // What is opaque is drawn first, and nothing behind it at all.
  const QQuickWindow::CreateTextureOptions options(
      {image.hasAlphaChannel() ? QQuickWindow::TextureHasAlphaChannel : QQuickWindow::TextureIsOpaque,
       QQuickWindow::TextureCanUseAtlas});
  std::shared_ptr<QSGTexture> texture(window->createTextureFromImage(image, options));
  entry = texture;
  std::erase_if(textures, [](const auto& other) { return other.second.expired(); });
  return texture;
}

NinePatchNode::NinePatchNode() = default;

NinePatchNode::~NinePatchNode() {
  clear();
}

void NinePatchNode::setShape(QQuickWindow* window, const Shape& shape, const QRectF& rect) {
  const double ratio = window->effectiveDevicePixelRatio();
  if (m_texture && shape == m_shape && rect == m_rect && ratio == m_devicePixelRatio) return;
  m_shape = shape;
  setPatch(window, shapeImage(shape, rect.size(), ratio), rect, ratio);
}

void NinePatchNode::setPatch(QQuickWindow* window, const NinePatch& patch, const QRectF& rect,
                             double devicePixelRatio) {
  if (rect.isEmpty() || patch.image.isNull()) return clear();
  if (m_texture && m_imageKey == patch.image.cacheKey() && rect == m_rect && devicePixelRatio == m_devicePixelRatio) {
    return;
  }
  // Asked for before the old one is let go: a node that only changes its size keeps its texture alive.
  auto texture = sharedTexture(window, patch.image);
  clear();
  m_texture = std::move(texture);
  m_imageKey = patch.image.cacheKey();
  m_rect = rect;
  m_devicePixelRatio = devicePixelRatio;

  const double pixel = 1 / devicePixelRatio;
  const QSizeF size(std::round(rect.width() * devicePixelRatio) * pixel,
                    std::round(rect.height() * devicePixelRatio) * pixel);
  const double outset = patch.outset * pixel;
  const QRectF outer = QRectF(rect.topLeft(), size).adjusted(-outset, -outset, outset, outset);
  if (window->rendererInterface()->graphicsApi() == QSGRendererInterface::Software) {
    buildImages(window, outer, patch);
  } else {
    buildGeometry(outer, patch);
  }
}

void NinePatchNode::clear() {
  // The children point at the texture: they go first.
  while (QSGNode* child = firstChild()) {
    removeChildNode(child);
    delete child;
  }
  m_texture.reset();
}

void NinePatchNode::buildGeometry(const QRectF& outer, const NinePatch& patch) {
  const Spans grid = spans(outer, patch, 1 / m_devicePixelRatio);
  int quads = 0;
  for (const Span& row : grid.rows) {
    for (const Span& column : grid.columns) quads += grid.isDrawn(column, row) ? 1 : 0;
  }
  auto geometry = std::make_unique<QSGGeometry>(QSGGeometry::defaultAttributes_TexturedPoint2D(), 4 * quads, 6 * quads);
  geometry->setDrawingMode(QSGGeometry::DrawTriangles);

  const QRectF within = m_texture->normalizedTextureSubRect();
  const double unitX = within.width() / patch.image.width();
  const double unitY = within.height() / patch.image.height();
  auto* vertex = geometry->vertexDataAsTexturedPoint2D();
  auto* index = geometry->indexDataAsUShort();
  quint16 base = 0;
  for (const Span& row : grid.rows) {
    for (const Span& column : grid.columns) {
      if (!grid.isDrawn(column, row)) continue;
      // What stretches samples the middle of its pixel alone, or the neighbors would bleed in.
      const double inX = column.isStretched ? 0.5 : 0;
      const double inY = row.isStretched ? 0.5 : 0;
      const float left = float(within.left() + (column.imageStart + inX) * unitX);
      const float right = float(within.left() + (column.imageEnd - inX) * unitX);
      const float top = float(within.top() + (row.imageStart + inY) * unitY);
      const float bottom = float(within.top() + (row.imageEnd - inY) * unitY);
      (vertex++)->set(float(column.start), float(row.start), left, top);
      (vertex++)->set(float(column.end), float(row.start), right, top);
      (vertex++)->set(float(column.start), float(row.end), left, bottom);
      (vertex++)->set(float(column.end), float(row.end), right, bottom);
      for (const int corner : {0, 1, 2, 2, 1, 3}) *index++ = quint16(base + corner);
      base += 4;
    }
  }

  auto node = std::make_unique<QSGGeometryNode>();
  node->setGeometry(geometry.release());
  auto material = std::make_unique<QSGTextureMaterial>();
  material->setTexture(m_texture.get());
  material->setFiltering(QSGTexture::Linear);
  node->setMaterial(material.release());
  node->setFlags(QSGNode::OwnsGeometry | QSGNode::OwnsMaterial);
  appendChildNode(node.release());
}

void NinePatchNode::buildImages(QQuickWindow* window, const QRectF& outer, const NinePatch& patch) {
  const Spans grid = spans(outer, patch, 1 / m_devicePixelRatio);
  for (const Span& row : grid.rows) {
    for (const Span& column : grid.columns) {
      if (!grid.isDrawn(column, row)) continue;
      QSGImageNode* node = window->createImageNode();
      node->setOwnsTexture(false);
      node->setTexture(m_texture.get());
      // What stretches repeats its one pixel: smoothing it would let the edges fade.
      node->setFiltering(column.isStretched || row.isStretched ? QSGTexture::Nearest : QSGTexture::Linear);
      node->setRect(column.start, row.start, column.end - column.start, row.end - row.start);
      node->setSourceRect(column.imageStart, row.imageStart, column.imageEnd - column.imageStart,
                          row.imageEnd - row.imageStart);
      appendChildNode(node);
    }
  }
}

}  // namespace lumagrid
