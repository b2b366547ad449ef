#pragma once

#include <QRectF>
#include <QSGNode>
#include <QSGTexture>
#include <memory>

#include "ShapeImage.h"

class QQuickWindow;

namespace lumagrid {

// The texture of `image` in the scene graph of `window`, shared by everyone who holds it and freed with the last of
// them. Images are told apart by their cache key, so hand in the same (cached) image to share. Render thread, with the
// main thread blocked: only inside updatePaintNode().
[[nodiscard]] std::shared_ptr<QSGTexture> sharedTexture(QQuickWindow* window, const QImage& image);

// Draws a nine-patch with a shared texture: one geometry node that batches with its like on a GPU, image nodes on the
// software renderer. Translucency and its animation are setOpacity() of the node itself. Render thread, like
// sharedTexture(). A tile does, in updatePaintNode():
//
//   node->setShape(window(), {.part = Shape::Part::fill, .radius = 20, .color = qRgb(255, 255, 255)}, boundingRect());
//   node->setOpacity(0.76);
//
// Both calls are cheap when nothing has changed. A node is used with one of setShape() and setPatch().
class NinePatchNode : public QSGOpacityNode {
 public:
  NinePatchNode();
  ~NinePatchNode() override;

  // Draws `shape` for the bounds `rect` (points; parts outside, such as a shadow, stand out of it).
  void setShape(QQuickWindow* window, const Shape& shape, const QRectF& rect);

  // Draws `patch`, made for `devicePixelRatio`, over `rect` (points), whose size is rounded to whole pixels.
  void setPatch(QQuickWindow* window, const NinePatch& patch, const QRectF& rect, double devicePixelRatio);

  // Draws nothing.
  void clear();

 private:
  void buildGeometry(const QRectF& outer, const NinePatch& patch);
  void buildImages(QQuickWindow* window, const QRectF& outer, const NinePatch& patch);

  std::shared_ptr<QSGTexture> m_texture;
  Shape m_shape;
  qint64 m_imageKey = 0;
  QRectF m_rect;
  double m_devicePixelRatio = 0;
};

}  // namespace lumagrid
