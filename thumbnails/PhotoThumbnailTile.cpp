#include "PhotoThumbnailTile.h"

#include <QMouseEvent>
#include <QQuickWindow>

#include "Curves.h"
#include "Palette.h"
#include "ThumbnailStore.h"
#include "TileNode.h"

namespace lumagrid {

namespace {

constexpr int kCheckAnimationMs = 150;
constexpr double kLeastBound = 240;  // pixels

QByteArray loadKey(const PhotoItem& photo, double side) {
  return photo.id() + '-' + QByteArray::number(static_cast<qint64>(side));
}

}  // namespace

PhotoThumbnailTile::PhotoThumbnailTile(QQuickItem* parent) : QQuickItem(parent) {
  setFlag(ItemHasContents);
  setAcceptedMouseButtons(Qt::LeftButton);
  setCursor(Qt::PointingHandCursor);
  m_marks.setEasingCurve(Curves::easeOut());
  m_marks.setDuration(kCheckAnimationMs);
  m_marks.setStartValue(QPointF());
  m_marks.setEndValue(QPointF());
  connect(&m_marks, &QVariantAnimation::valueChanged, this, &QQuickItem::update);
  connect(Palette::instance(), &Palette::changed, this, &QQuickItem::update);
  connect(this, &QQuickItem::visibleChanged, this, &PhotoThumbnailTile::updateSpinner);
}

double PhotoThumbnailTile::maxPixelSize(double side) {
  return std::max(kLeastBound, 2 * side);
}

void PhotoThumbnailTile::setPhoto(const PhotoItem& photo) {
  if (photo == m_photo) return;
  m_photo = photo;
  m_thumbnail = {};
  m_loads.clear();  // what comes late is not of this photo
  m_loadKey.reset();
  updateSpinner();
  update();
  loadWhenKeyChanged();
  Q_EMIT photoChanged();
}

void PhotoThumbnailTile::setSide(double side) {
  if (side == m_side) return;  // every frame tells it to every tile
  m_side = side;
  setSize({side, side});
  loadWhenKeyChanged();
}

void PhotoThumbnailTile::setMarks(bool isCurrentlyViewing, bool isChecked, Transition transition) {
  const bool checkChanged = isChecked != m_isChecked;
  if (isCurrentlyViewing == m_isCurrentlyViewing && !checkChanged) return;
  m_isCurrentlyViewing = isCurrentlyViewing;
  m_isChecked = isChecked;
  const QPointF end(isChecked ? 1 : 0, isChecked || isCurrentlyViewing ? 1 : 0);
  const bool isAnimated = checkChanged && transition == Transition::animated && Curves::instance()->pace() > 0;
  m_marks.stop();
  m_marks.setStartValue(isAnimated ? m_marks.currentValue() : end);
  m_marks.setEndValue(end);
  if (isAnimated) m_marks.start();
  update();
  Q_EMIT marksChanged();
}

void PhotoThumbnailTile::setFocusRing(bool hasFocusRing) {
  if (hasFocusRing == m_hasFocusRing) return;
  m_hasFocusRing = hasFocusRing;
  update();
}

void PhotoThumbnailTile::retire() {
  setFocusRing(false);
  setMarks(false, false, Transition::immediate);
  setPhoto({});
}

// A key that changes several times before the event loop turns, while the window's edge is dragged say, loads once.
// What is at hand shows in the frame that is being made, at another bound if need be.
void PhotoThumbnailTile::loadWhenKeyChanged() {
  if (!isLoadDue() || showCached()) return;
  if (m_thumbnail.isNull()) showThumbnail(ThumbnailStore::standIn(m_photo.url));
  if (std::exchange(m_loadScheduled, true)) return;
  QMetaObject::invokeMethod(this, &PhotoThumbnailTile::loadThumbnail, Qt::QueuedConnection);
}

void PhotoThumbnailTile::loadThumbnail() {
  m_loadScheduled = false;
  if (!isLoadDue() || showCached()) return;
  replaceLoads();
  const auto result = std::make_shared<QImage>();
  const auto make = [url = m_photo.url, bound = maxPixelSize(m_side), result] {
    *result = ThumbnailStore::thumbnail(url, bound);
  };
  m_loads.push_back(m_queue->enqueue(make, [this, result] { showThumbnail(*result); }));
}

bool PhotoThumbnailTile::isLoadDue() const {
  return !m_photo.url.isEmpty() && m_side > 0 && m_queue && loadKey(m_photo, m_side) != m_loadKey;
}

bool PhotoThumbnailTile::showCached() {
  const QImage cached = ThumbnailStore::cachedThumbnail(m_photo.url, maxPixelSize(m_side));
  if (cached.isNull()) return false;
  replaceLoads();
  showThumbnail(cached);
  return true;
}

// What a thread has taken runs to its end and is shown when it comes; what none has taken is replaced.
void PhotoThumbnailTile::replaceLoads() {
  m_loadKey = loadKey(m_photo, m_side);
  std::erase_if(m_loads, [](const BackgroundQueue::Ticket& load) { return !load.isRunning(); });
}

void PhotoThumbnailTile::showThumbnail(const QImage& thumbnail) {
  m_thumbnail = thumbnail;
  updateSpinner();
  update();
}

void PhotoThumbnailTile::updateSpinner() {
  QQuickWindow* wanted = isVisible() && m_thumbnail.isNull() && !m_photo.url.isEmpty() ? window() : nullptr;
  if (wanted == m_spinnerWindow) return;
  m_spinnerWindow = wanted;
  m_spinner = wanted ? SpinnerClock::Running(wanted) : SpinnerClock::Running();
  if (wanted) {
    connect(SpinnerClock::instance(), &SpinnerClock::ticked, this, &QQuickItem::update, Qt::UniqueConnection);
  } else {
    disconnect(SpinnerClock::instance(), nullptr, this, nullptr);
  }
}

void PhotoThumbnailTile::itemChange(ItemChange change, const ItemChangeData& data) {
  if (change == ItemSceneChange || change == ItemDevicePixelRatioHasChanged) {
    updateSpinner();
    update();
  }
  QQuickItem::itemChange(change, data);
}

QSGNode* PhotoThumbnailTile::updatePaintNode(QSGNode* oldNode, UpdatePaintNodeData* /*data*/) {
  auto* node = static_cast<TileNode*>(oldNode);
  if (!node) node = new TileNode;
  TileLook look;
  look.side = m_side;
  look.thumbnail = m_thumbnail;
  look.spinnerStep = m_spinnerWindow ? std::optional(SpinnerClock::instance()->step()) : std::nullopt;
  look.isPressed = m_isPressed;
  look.hasFocusRing = m_hasFocusRing;
  look.checked = m_marks.currentValue().toPointF().x();
  look.marked = m_marks.currentValue().toPointF().y();
  node->update(window(), look);
  return node;
}

void PhotoThumbnailTile::mousePressEvent(QMouseEvent* event) {
  // A drag with the mouse is no scrolling; one with a finger is.
  setKeepMouseGrab(event->deviceType() == QInputDevice::DeviceType::Mouse);
  m_isPressed = true;
  update();
  event->accept();
}

void PhotoThumbnailTile::mouseReleaseEvent(QMouseEvent* event) {
  mouseUngrabEvent();
  if (contains(event->position())) Q_EMIT clicked(event->modifiers());
}

void PhotoThumbnailTile::mouseUngrabEvent() {
  m_isPressed = false;
  update();
}

}  // namespace lumagrid
