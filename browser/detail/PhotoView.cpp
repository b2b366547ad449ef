#include "PhotoView.h"

#include <QCoreApplication>
#include <QPointer>
#include <QQuickWindow>
#include <QRunnable>
#include <cmath>
#include <utility>

#include "Curves.h"
#include "PhotoViewNode.h"

namespace lumagrid {

PhotoView::PhotoView(QQuickItem* parent) : QQuickItem(parent) {
  setFlag(ItemHasContents);
  setClip(true);
  connect(&m_clock, &QVariantAnimation::valueChanged, this, [this](const QVariant& seconds) {
    // Setting the clock up sends values too.
    if (m_clock.state() == QAbstractAnimation::Running) {
      display(m_motion.at(seconds.toDouble()));
    }
  });
}

PhotoView::~PhotoView() {
  m_levelsStop.request_stop();
}

void PhotoView::setImage(const QImage& image) {
  if (image.cacheKey() == m_image.cacheKey()) {
    return;
  }
  m_image = image;
  m_pyramid = image.isNull() ? nullptr : std::make_shared<PhotoPyramid>(image);
  m_fittedImage = {};
  m_levelsWork = {};
  m_levelsStop.request_stop();
  m_levelsStop = {};
  m_hasRequestedLevels = false;
  Q_EMIT imageChanged();
  Q_EMIT fittedBoxChanged();
  polish();
  update();
}

void PhotoView::setZoomScale(double scale) {
  m_zoom.scale = scale;
  Q_EMIT zoomScaleChanged();
  polish();
}

void PhotoView::setOffset(QPointF offset) {
  m_zoom.offset = offset;
  Q_EMIT offsetChanged();
  polish();
}

QRectF PhotoView::fittedBox() const {
  return fittedRect(size(), m_image.size());
}

void PhotoView::animate(Curve curve) {
  m_requestedCurve = curve;
  polish();
}

void PhotoView::followState() {
  const Curve requested = std::exchange(m_requestedCurve, Curve::None);
  const Curve curve = Curves::instance()->pace() > 0 ? requested : Curve::None;
  const bool moving = m_clock.state() == QAbstractAnimation::Running;
  if (m_zoom == (moving ? m_motion.target() : m_displayed)) {
    return;
  }
  m_motion = moving ? m_motion.retargeted(curve, m_zoom, m_clock.currentValue().toDouble())
                    : PhotoViewMotion(curve, m_displayed, m_zoom);
  m_clock.stop();
  if (m_motion.duration() <= 0) {
    return display(m_zoom);
  }
  m_clock.setDuration(static_cast<int>(std::ceil(1000 * m_motion.duration())));
  m_clock.setStartValue(0.0);
  m_clock.setEndValue(m_clock.duration() / 1000.0);
  m_clock.start();
}

void PhotoView::display(const ZoomState& zoom) {
  m_displayed = zoom;
  makeLevels();
  Q_EMIT displayedChanged();
  update();
}

double PhotoView::devicePixelRatio() const {
  return window() ? window()->effectiveDevicePixelRatio() : 1;
}

PhotoStage PhotoView::stage() const {
  return {size(), mapToScene(QPointF()), devicePixelRatio()};
}

void PhotoView::updatePolish() {
  followState();
  if (isVisible() && m_pyramid && !size().isEmpty()) {
    if (m_ahead) {
      m_ahead->setStage(stage());
    }
    makeFittedImage();
    makeLevels();
  }
}

void PhotoView::makeFittedImage() {
  const QSize wanted = stage().fittedPixels(m_pyramid->size());
  if (m_fittedImage.size() == wanted) {
    return;
  }
  if (m_fittedImage.isNull() || wanted == m_pyramid->size()) {
    m_fittedImage = m_pyramid->fitted(wanted);
    update();
    return;
  }
  if (m_isMakingFittedImage) {
    return;  // asks again when it is done
  }
  m_isMakingFittedImage = true;
  const auto fitted = std::make_shared<QImage>();
  m_fittedImageWork = m_queue.enqueue(
      [fitted, wanted, pyramid = std::weak_ptr(m_pyramid)] {
        if (const auto shared = pyramid.lock()) {
          *fitted = shared->fitted(wanted);
        }
      },
      [this, fitted, pyramid = std::weak_ptr(m_pyramid)] {
        m_isMakingFittedImage = false;
        if (!m_pyramid || pyramid.lock() != m_pyramid) {
          return;
        }
        m_fittedImage = *fitted;
        polish();
        update();
      });
}

// The coarser levels are only needed for a photo that has more pixels than its fitted view, once it is to stay zoomed.
void PhotoView::makeLevels() {
  if (m_hasRequestedLevels || m_zoom.scale <= 1 || !m_pyramid || m_fittedImage.size() == m_pyramid->size()) {
    return;
  }
  m_hasRequestedLevels = true;
  makeNextLevel();
}

void PhotoView::makeNextLevel() {
  const auto isMade = std::make_shared<bool>(false);
  m_levelsWork = m_queue.enqueue(
      [isMade, pyramid = std::weak_ptr(m_pyramid), stop = m_levelsStop.get_token()] {
        const auto shared = pyramid.lock();
        *isMade = shared && shared->buildNextLevel(stop);
      },
      [this, isMade] {
        if (!*isMade) {
          return;
        }
        update();
        makeNextLevel();
      });
}

// Once the frame that is being made is on screen.
void PhotoView::announcePhoto() {
  if (!m_ahead || m_announced.lock() == m_pyramid) {
    return;
  }
  m_announced = m_pyramid;
  const auto announce = [ahead = QPointer(m_ahead)] {
    if (ahead) {
      ahead->photoShown();
    }
  };
  window()->scheduleRenderJob(QRunnable::create([announce] {
                                QMetaObject::invokeMethod(QCoreApplication::instance(), announce, Qt::QueuedConnection);
                              }),
                              QQuickWindow::AfterSwapStage);
}

QSGNode* PhotoView::updatePaintNode(QSGNode* oldNode, UpdatePaintNodeData*) {
  if (!m_pyramid || m_fittedImage.isNull()) {
    delete oldNode;
    return nullptr;
  }
  announcePhoto();
  auto* node = oldNode ? static_cast<PhotoViewNode*>(oldNode) : std::make_unique<PhotoViewNode>(window()).release();
  const bool pending = node->show(
      {m_pyramid, m_fittedImage, stage().fittedBox(m_pyramid->size()), size(), m_displayed, devicePixelRatio()});
  if (pending) {
    QMetaObject::invokeMethod(this, &QQuickItem::update, Qt::QueuedConnection);
  }
  return node;
}

void PhotoView::geometryChange(const QRectF& newGeometry, const QRectF& oldGeometry) {
  QQuickItem::geometryChange(newGeometry, oldGeometry);
  Q_EMIT fittedBoxChanged();
  polish();
  update();
}

void PhotoView::itemChange(ItemChange change, const ItemChangeData& value) {
  QQuickItem::itemChange(change, value);
  if (change == ItemDevicePixelRatioHasChanged || change == ItemVisibleHasChanged || change == ItemSceneChange) {
    polish();
    update();
  }
}

}  // namespace lumagrid
