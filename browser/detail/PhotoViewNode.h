#pragma once

#include <QImage>
#include <QQuickWindow>
#include <QSGImageNode>
#include <QSGTexture>
#include <QSGTransformNode>
#include <map>
#include <memory>
#include <vector>

#include "PhotoPyramid.h"
#include "PhotoViewGeometry.h"

namespace lumagrid {

// What one frame is to show.
struct PhotoViewFrame {
  std::shared_ptr<const PhotoPyramid> pyramid;
  QImage base;    // the photo for the fitted view, in device pixels; the photo itself when that is no larger
  QRectF fitted;  // points, on device pixels
  QSizeF stage;   // points
  ZoomState zoom;
  double devicePixelRatio = 1;
};

// The photo in the scene graph: a transform from the photo's pixels to the stage, over pictures that never overlap: the
// base alone when it is sharp enough, otherwise one patch for each visible tile of the level that the scale asks for.
// Where a tile is not uploaded yet, its patch shows the best of what is there: finer tiles, a coarser one, the base.
// At most kUploadBytes are uploaded in a frame; tiles that are out of sight are kept within kTextureBytes, those seen
// last the longest. Lives on the render thread; show() is for QQuickItem::updatePaintNode alone.
class PhotoViewNode : public QSGTransformNode {
 public:
  static constexpr qint64 kUploadBytes = 2 << 20;
  static constexpr qint64 kTextureBytes = 24 << 20;

  explicit PhotoViewNode(QQuickWindow* window) : m_window(window) {}
  ~PhotoViewNode() override;

  // True when more frames are needed to upload what is in sight.
  [[nodiscard]] bool show(const PhotoViewFrame& frame);

 private:
  // A part of a texture on a part of the photo.
  struct Patch {
    QSGTexture* texture = nullptr;
    QRectF source;
    QRectF target;
  };
  struct Texture {
    std::unique_ptr<QSGTexture> texture;
    quint64 shownInFrame = 0;
    qint64 bytes = 0;
  };

  void takePhoto(const PhotoViewFrame& frame);
  [[nodiscard]] bool showTiles(const PhotoViewFrame& frame, int level);
  [[nodiscard]] bool upload(const PhotoViewFrame& frame, int level, const QRect& tiles, const QRectF& visible);
  void addPatches(const PhotoTile& tile, QSize photo);
  [[nodiscard]] Texture* find(const PhotoTile& tile);
  void addPatch(Texture& texture, const PhotoTile& tile, const QRectF& part);
  void applyPatches();
  void dropUnseen();
  [[nodiscard]] std::unique_ptr<QSGTexture> makeTexture(const QImage& image) const;

  QQuickWindow* const m_window;
  std::weak_ptr<const PhotoPyramid> m_pyramid;
  qint64 m_baseKey = 0;
  std::unique_ptr<QSGTexture> m_base;
  std::map<PhotoTile, Texture> m_tiles;
  qint64 m_tileBytes = 0;
  quint64 m_frame = 0;
  std::vector<Patch> m_patches;
  std::vector<std::unique_ptr<QSGImageNode>> m_nodes;
};

}  // namespace lumagrid
