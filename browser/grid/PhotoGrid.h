#pragma once

#include <QHash>
#include <QQmlComponent>
#include <QQuickItem>
#include <QSizeF>
#include <optional>
#include <vector>

#include "ContentView.h"
#include "GridMetrics.h"
#include "PhotoThumbnailTile.h"

namespace lumagrid {

// The content of the grid's scroll view: a tile for every photo whose row shows in the viewport, and nothing for the
// others, whatever the count. A tile belongs to the path of its photo: it keeps its thumbnail wherever a re-sort or a
// removal moves it, and tiles of photos out of sight serve others afresh. All of it is brought up to date once per
// frame. With the focus, the arrows, Home, End and the page keys move a ring from tile to tile, and it shows with the
// first of them; Return clicks the tile with the ring, Space toggles it. Points. Main thread.
class PhotoGrid : public QQuickItem {
  Q_OBJECT
  QML_ELEMENT
  Q_PROPERTY(lumagrid::ContentView* view MEMBER m_view NOTIFY viewChanged REQUIRED FINAL)
  Q_PROPERTY(QQmlComponent* delegate MEMBER m_delegate NOTIFY viewChanged REQUIRED FINAL)  // a PhotoThumbnailTile
  Q_PROPERTY(QSizeF viewport READ viewport WRITE setViewport NOTIFY viewportChanged FINAL)
  Q_PROPERTY(double contentY READ contentY WRITE setContentY NOTIFY contentYChanged FINAL)
  Q_PROPERTY(double contentHeight READ contentHeight NOTIFY contentHeightChanged FINAL)

 public:
  enum class Scrolling { Immediate, Animated, Wheel };
  Q_ENUM(Scrolling)

  explicit PhotoGrid(QQuickItem* parent = nullptr);

  [[nodiscard]] QSizeF viewport() const { return m_viewport; }
  void setViewport(QSizeF viewport);
  [[nodiscard]] double contentY() const { return m_contentY; }
  void setContentY(double contentY);
  [[nodiscard]] double contentHeight() const { return m_layout.contentHeight(); }

  // Scrolls by what a wheel or a touch pad turned: exact pixels where the device has them, else in eighths of a degree.
  Q_INVOKABLE void scrollByWheel(QPointF pixelDelta, QPointF angleDelta);

 Q_SIGNALS:
  void viewChanged();
  void viewportChanged();
  void contentYChanged();
  void contentHeightChanged();
  // The scroll view is to stand at `contentY`.
  void scrollRequested(double contentY, lumagrid::PhotoGrid::Scrolling scrolling);

 protected:
  void componentComplete() override;
  void keyPressEvent(QKeyEvent* event) override;
  void focusInEvent(QFocusEvent* event) override;
  void focusOutEvent(QFocusEvent* event) override;
  void updatePolish() override;

 private:
  struct ShownTile {
    PhotoThumbnailTile* tile = nullptr;
    std::int64_t index = -1;
  };

  void connectToView();
  void updateLayout();
  void keepShownPhotosInPlace(const GridLayout& old, double contentY);
  void scrollGridIfNeeded();
  void requestScroll(double contentY, Scrolling scrolling);
  void updateTiles();
  [[nodiscard]] std::int64_t keyboardStartIndex() const;
  void moveKeyboardIndex(std::int64_t index);
  void reveal(std::int64_t index);
  void showTile(std::int64_t index);
  [[nodiscard]] PhotoThumbnailTile* freshTile();
  [[nodiscard]] std::optional<std::int64_t> indexOf(const QByteArray& path) const;

  ContentView* m_view = nullptr;
  QQmlComponent* m_delegate = nullptr;
  QSizeF m_viewport;
  double m_contentY = 0;
  GridLayout m_layout;
  std::int64_t m_keyboardIndex = -1;  // the tile that has, or last had, the keys' ring
  bool m_showsKeyboardIndex = false;  // it has the ring
  bool m_hasAppeared = false;
  bool m_wasReset = false;                    // since the last frame
  std::optional<FileUrl> m_seenFolder;        // the folder at the last frame
  std::optional<QByteArray> m_seenTarget;     // the scroll target at the last frame
  std::optional<double> m_wheelTarget;        // where the wheel's scrolling under way ends
  QHash<QByteArray, ShownTile> m_tiles;       // by path
  std::vector<PhotoThumbnailTile*> m_unused;  // children, invisible
};

}  // namespace lumagrid
