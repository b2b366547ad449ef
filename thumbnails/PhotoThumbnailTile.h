#pragma once

#include <QImage>
#include <QPointer>
#include <QQuickItem>
#include <QVariantAnimation>
#include <optional>

#include "BackgroundQueue.h"
#include "PhotoItem.h"
#include "SpinnerClock.h"

namespace lumagrid {

// One square cell of the grid: the thumbnail of one photo, or a spinner until it is there, with the marks of the
// selection and of the current photo. It loads its thumbnail by itself on the background queue while it is on screen,
// once per photo and integral side. The thumbnail belongs to the photo: another photo starts afresh. Main thread.
class PhotoThumbnailTile : public QQuickItem {
  Q_OBJECT
  QML_ELEMENT
  Q_PROPERTY(QString name READ name NOTIFY photoChanged)
  Q_PROPERTY(bool isCurrentlyViewing READ isCurrentlyViewing NOTIFY marksChanged)
  Q_PROPERTY(bool isChecked READ isChecked NOTIFY marksChanged)

 public:
  enum class Transition { animated, immediate };

  explicit PhotoThumbnailTile(QQuickItem* parent = nullptr);

  // Where thumbnails are made; outlives the tile.
  void setQueue(BackgroundQueue* queue) { m_queue = queue; }

  [[nodiscard]] const PhotoItem& photo() const { return m_photo; }
  void setPhoto(const PhotoItem& photo);
  // Points; also the item's width and height.
  void setSide(double side);
  void setMarks(bool isCurrentlyViewing, bool isChecked, Transition transition);
  // The keyboard acts on this tile.
  void setFocusRing(bool hasFocusRing);
  // Nobody looks at it any more: the photo, its thumbnail and a load that nobody has taken yet are let go.
  void retire();

  [[nodiscard]] QString name() const { return m_photo.displayName(); }
  [[nodiscard]] bool isCurrentlyViewing() const { return m_isCurrentlyViewing; }
  [[nodiscard]] bool isChecked() const { return m_isChecked; }
  [[nodiscard]] const QImage& thumbnail() const { return m_thumbnail; }
  // The bound, in pixels, of the thumbnail of a tile of `side` points.
  [[nodiscard]] static double maxPixelSize(double side);

  // As a click with these modifiers would.
  Q_INVOKABLE void click(int modifiers) { Q_EMIT clicked(Qt::KeyboardModifiers::fromInt(modifiers)); }

 Q_SIGNALS:
  void photoChanged();
  void marksChanged();
  void clicked(Qt::KeyboardModifiers modifiers);

 protected:
  QSGNode* updatePaintNode(QSGNode* oldNode, UpdatePaintNodeData* data) override;
  void itemChange(ItemChange change, const ItemChangeData& data) override;
  void mousePressEvent(QMouseEvent* event) override;
  void mouseReleaseEvent(QMouseEvent* event) override;
  void mouseUngrabEvent() override;

 private:
  void loadWhenKeyChanged();
  void loadThumbnail();
  [[nodiscard]] bool isLoadDue() const;
  bool showCached();
  void replaceLoads();
  void showThumbnail(const QImage& thumbnail);
  void updateSpinner();

  BackgroundQueue* m_queue = nullptr;
  PhotoItem m_photo;
  double m_side = 0;
  bool m_isCurrentlyViewing = false;
  bool m_isChecked = false;
  bool m_isPressed = false;
  bool m_hasFocusRing = false;
  QImage m_thumbnail;
  std::optional<QByteArray> m_loadKey;  // of the load that was started last
  std::vector<BackgroundQueue::Ticket> m_loads;
  bool m_loadScheduled = false;
  QVariantAnimation m_marks;  // a point from 0 to 1: how far it looks checked, and how far it has the marked border
  SpinnerClock::Running m_spinner;
  QPointer<QQuickWindow> m_spinnerWindow;  // where the spinner turns; null: nowhere
};

}  // namespace lumagrid
