#pragma once

#include <QtQml/qqmlregistration.h>
#include <QImage>
#include <QPointF>
#include <QQuickItem>
#include <QVariantAnimation>
#include <memory>
#include <stop_token>

#include "BackgroundQueue.h"
#include "PhotoPyramid.h"
#include "PhotoViewGeometry.h"
#include "PhotoViewMotion.h"
#include "PhotosAhead.h"
#include "ZoomState.h"

namespace lumagrid {

// The photo on the detail stage: fitted into the stage's box (see fittedRect), scaled by `zoomScale` about the stage's
// center and moved by `offset` points. Main thread.
// - Fitted, it is drawn pixel by pixel from a picture made for that size. A new photo shows in the next frame; a new
//   size shows the picture in hand, scaled, until a thread has made another.
// - Zoomed, it is drawn from blocks (see PhotoViewNode), which arrive over the next frames. A zoom or a move decodes
//   nothing and lays nothing out.
// - The photo's pixels are shared, never copied; its coarser levels are made when it is first zoomed.
// Draws inside its own bounds only.
class PhotoView : public QQuickItem {
  Q_OBJECT
  QML_ELEMENT
  // RGBX8888 or RGBA8888_Premultiplied (others are converted); null shows nothing.
  Q_PROPERTY(QImage image READ image WRITE setImage NOTIFY imageChanged)
  Q_PROPERTY(double zoomScale READ zoomScale WRITE setZoomScale NOTIFY zoomScaleChanged)
  Q_PROPERTY(QPointF offset READ offset WRITE setOffset NOTIFY offsetChanged)
  // In points of the item, at scale 1 without offset.
  Q_PROPERTY(QRectF fittedBox READ fittedBox NOTIFY fittedBoxChanged)
  // What is on screen: follows zoomScale and offset at the next frame, or along a curve (see animate).
  Q_PROPERTY(double displayedScale READ displayedScale NOTIFY displayedChanged)
  Q_PROPERTY(QPointF displayedOffset READ displayedOffset NOTIFY displayedChanged)
  Q_PROPERTY(lumagrid::PhotosAhead* ahead MEMBER m_ahead NOTIFY aheadChanged)  // is told the stage; may be null

 public:
  using Curve = ZoomState::Curve;

  explicit PhotoView(QQuickItem* parent = nullptr);
  ~PhotoView() override;

  [[nodiscard]] QImage image() const { return m_image; }
  void setImage(const QImage& image);
  [[nodiscard]] double zoomScale() const { return m_zoom.scale; }
  void setZoomScale(double scale);
  [[nodiscard]] QPointF offset() const { return m_zoom.offset; }
  void setOffset(QPointF offset);
  [[nodiscard]] QRectF fittedBox() const;
  [[nodiscard]] double displayedScale() const { return m_displayed.scale; }
  [[nodiscard]] QPointF displayedOffset() const { return m_displayed.offset; }

  // Until the next frame is drawn, changes of zoomScale and offset, made before or after this call, are shown by a
  // movement along the curve (see PhotoViewMotion). Other changes show at once and end a movement in progress.
  Q_INVOKABLE void animate(lumagrid::ZoomState::Curve curve);

 Q_SIGNALS:
  void imageChanged();
  void zoomScaleChanged();
  void offsetChanged();
  void fittedBoxChanged();
  void displayedChanged();
  void aheadChanged();

 protected:
  void updatePolish() override;
  QSGNode* updatePaintNode(QSGNode* oldNode, UpdatePaintNodeData* data) override;
  void geometryChange(const QRectF& newGeometry, const QRectF& oldGeometry) override;
  void itemChange(ItemChange change, const ItemChangeData& value) override;

 private:
  void followState();
  void display(const ZoomState& zoom);
  void makeFittedImage();
  void makeLevels();
  void makeNextLevel();
  [[nodiscard]] double devicePixelRatio() const;
  [[nodiscard]] PhotoStage stage() const;
  void announcePhoto();

  PhotosAhead* m_ahead = nullptr;
  std::weak_ptr<PhotoPyramid> m_announced;  // what `ahead` knows to be shown
  QImage m_image;
  std::shared_ptr<PhotoPyramid> m_pyramid;
  QImage m_fittedImage;  // see PhotoViewFrame
  bool m_isMakingFittedImage = false;
  bool m_hasRequestedLevels = false;
  std::stop_source m_levelsStop;  // of the photo in hand

  ZoomState m_zoom;
  ZoomState m_displayed;
  Curve m_requestedCurve = Curve::None;
  PhotoViewMotion m_motion;
  QVariantAnimation m_clock;  // seconds since the motion's start, in step with the frames

  BackgroundQueue m_queue{BackgroundQueue::Urgency::urgent};
  BackgroundQueue::Ticket m_fittedImageWork;  // one at a time
  BackgroundQueue::Ticket m_levelsWork;       // of the photo in hand
};

}  // namespace lumagrid
