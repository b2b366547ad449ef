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
  QImage fittedImage;  // the photo in the device pixels of the fitted view; the photo itself when that is no larger
  QRectF fittedRect;   // where the fitted view lies on the stage; points, on device pixels
  QSizeF stage;        // points
  ZoomState zoom;
  double devicePixelRatio = 1;
};

// The photo in the scene graph: a transform from the photo's pixels to the stage, and below it rectangles that never
// overlap. The fitted image alone is drawn while it is sharp enough; otherwise each visible block of the level that the
// scale asks for. A block that is not uploaded yet is drawn from the best texture at hand: from finer blocks, a coarser
// one, or the fitted image. At most kUploadBytes are uploaded in a frame; of the blocks out of sight, those seen last
// are kept, up to kTextureBytes for all. Lives on the render thread; show() is for QQuickItem::updatePaintNode alone.
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

  void updatePhoto(const PhotoViewFrame& frame);
  [[nodiscard]] bool showBlocks(const PhotoViewFrame& frame, int level);
  [[nodiscard]] bool upload(const PhotoViewFrame& frame, int level, const QRect& blocks, const QRectF& visible);
  void addPatches(const PhotoBlock& block, QSize photo);
  [[nodiscard]] Texture* find(const PhotoBlock& block);
  void addPatch(Texture& texture, const PhotoBlock& block, const QRectF& part);
  void applyPatches();
  void dropUnseen();
  [[nodiscard]] std::unique_ptr<QSGTexture> makeTexture(const QImage& image) const;

  QQuickWindow* const m_window;
  std::weak_ptr<const PhotoPyramid> m_pyramid;
  qint64 m_fittedImageKey = 0;
  std::unique_ptr<QSGTexture> m_fittedTexture;
  std::map<PhotoBlock, Texture> m_blocks;
  qint64 m_blockBytes = 0;
  quint64 m_frame = 0;
  std::vector<Patch> m_patches;
  std::vector<std::unique_ptr<QSGImageNode>> m_nodes;
};

}  // namespace lumagrid
