#pragma once

#include <QImage>
#include <QSGImageNode>
#include <QSGTransformNode>
#include <memory>
#include <optional>

#include "NinePatchNode.h"

namespace lumagrid {

// Everything that decides how a tile looks. Lengths in points.
struct TileLook {
  double side = 0;
  QImage thumbnail;                // null: none yet
  std::optional<int> spinnerStep;  // the spinner's turn while there is no thumbnail
  bool isPressed = false;
  bool hasFocusRing = false;
  double checked = 0;  // 0: not checked, 1: checked; in between while it changes
  double marked = 0;   // 0: the plain border, 1: that of the current photo and of the selected
};

// The layers of a tile, back to front: shadow, card, thumbnail or spinner, dimming, badge, border, focus ring. Render
// thread, with the main thread blocked.
//
// A transform node, with the identity for its matrix, for the sake of the software renderer: that draws a single layer
// anew where it keeps a position for the layer's parent, and it keeps one for transform, clip and opacity nodes only.
class TileNode : public QSGTransformNode {
 public:
  TileNode();

  void update(QQuickWindow* window, const TileLook& look);

 private:
  // A picture that is drawn only while there is one.
  class PictureNode : public QSGOpacityNode {
   public:
    void show(QQuickWindow* window, const QImage& image, const QRectF& rect, const QRectF& source);
    void hide();

   private:
    QSGImageNode* m_node = nullptr;
    std::shared_ptr<QSGTexture> m_shared;
    std::int64_t m_imageKey = 0;
  };

  void updateContent(QQuickWindow* window, const TileLook& look);
  void updateBadge(QQuickWindow* window, const TileLook& look);

  NinePatchNode m_shadow;
  NinePatchNode m_card;
  PictureNode m_picture;
  NinePatchNode m_dimming;
  QSGTransformNode m_badgeTransform;
  PictureNode m_badge;
  NinePatchNode m_plainBorder;
  NinePatchNode m_accentBorder;
  NinePatchNode m_focusRing;
};

}  // namespace lumagrid
