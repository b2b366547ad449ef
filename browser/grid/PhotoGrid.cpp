#include "PhotoGrid.h"

#include <QQmlContext>
#include <QQmlEngine>
#include <algorithm>
#include <cmath>

namespace lumagrid {

namespace {

constexpr double kPointsPerNotch = 120;
constexpr double kUnitsPerNotch = 120;  // eighths of a degree

}  // namespace

PhotoGrid::PhotoGrid(QQuickItem* parent) : QQuickItem(parent) {
  setActiveFocusOnTab(true);
}

void PhotoGrid::componentComplete() {
  QQuickItem::componentComplete();
  connectToView();
  polish();
}

void PhotoGrid::connectToView() {
  PhotoLibrary* library = m_view->library();
  const auto updateLater = [this] { polish(); };
  connect(library, &PhotoLibrary::photosReset, this, [this] {
    m_wasReset = true;
    polish();
  });
  connect(library, &PhotoLibrary::photosReordered, this, updateLater);
  connect(library, &PhotoLibrary::photoRemoved, this, updateLater);
  connect(library, &PhotoLibrary::currentIndexChanged, this, updateLater);
  connect(library, &PhotoLibrary::selectedIndicesChanged, this, updateLater);
  connect(m_view, &ContentView::gridDimensionChanged, this, updateLater);
  connect(m_view, &ContentView::gridScrollTargetChanged, this, updateLater);
}

void PhotoGrid::setViewport(QSizeF viewport) {
  m_viewport = viewport;
  polish();
  Q_EMIT viewportChanged();
}

void PhotoGrid::setContentY(double contentY) {
  if (contentY == m_contentY) return;
  m_contentY = contentY;
  polish();
  Q_EMIT contentYChanged();
}

void PhotoGrid::scrollByWheel(QPointF pixelDelta, QPointF angleDelta) {
  if (!pixelDelta.isNull()) {
    requestScroll(m_contentY - pixelDelta.y(), Scrolling::Immediate);
    return;
  }
  const double from = m_wheelTarget.value_or(m_contentY);
  const double target = m_layout.clampedContentY(from - angleDelta.y() / kUnitsPerNotch * kPointsPerNotch);
  requestScroll(target, Scrolling::Wheel);
  m_wheelTarget = target;
}

void PhotoGrid::requestScroll(double contentY, Scrolling scrolling) {
  m_wheelTarget.reset();
  Q_EMIT scrollRequested(m_layout.clampedContentY(contentY), scrolling);
}

void PhotoGrid::updatePolish() {
  if (m_viewport.isEmpty()) return;
  updateLayout();
  scrollGridIfNeeded();
  updateTiles();
}

void PhotoGrid::updateLayout() {
  const GridLayout layout{m_view->gridMetrics(m_viewport), m_view->gridDimension(), m_view->library()->photoCount(),
                          m_viewport};
  const GridLayout old = std::exchange(m_layout, layout);
  const double contentY = m_contentY;  // as it was: content that gets lower moves the scroll view
  if (m_layout.contentHeight() != old.contentHeight()) Q_EMIT contentHeightChanged();
  const std::optional<FileUrl>& folder = m_view->library()->folderURL();
  const bool isOtherFolder = std::exchange(m_seenFolder, folder) != folder;
  const bool wasReset = std::exchange(m_wasReset, false);
  if (!m_hasAppeared) return;
  if (isOtherFolder) {
    requestScroll(0, Scrolling::Immediate);
  } else if (wasReset) {
    keepShownPhotosInPlace(old, contentY);
  } else if (!(layout.metrics == old.metrics) || layout.columns != old.columns) {
    // The row in the middle of the viewport stays there, however many columns it now has.
    const double middle = (contentY + old.viewport.height() / 2 - old.metrics.padding.top()) / old.rowPitch();
    const double middleNow = middle * static_cast<double>(old.columns) / static_cast<double>(layout.columns);
    requestScroll(layout.metrics.padding.top() + middleNow * layout.rowPitch() - layout.viewport.height() / 2,
                  Scrolling::Immediate);
  } else if (m_contentY > layout.clampedContentY(m_contentY) && layout.contentHeight() != old.contentHeight()) {
    requestScroll(m_contentY, Scrolling::Immediate);
  }
}

// After the same folder was read again: of the photos that showed and are still in the list, the one nearest to the
// middle of the viewport stays where it was.
void PhotoGrid::keepShownPhotosInPlace(const GridLayout& old, double contentY) {
  const double middle = contentY + old.viewport.height() / 2;
  const auto distance = [&](std::int64_t index) { return std::abs(old.tileRect(index).center().y() - middle); };
  std::vector<std::pair<std::int64_t, QByteArray>> shown;  // by the index that was
  for (const auto& [path, tile] : m_tiles.asKeyValueRange()) shown.emplace_back(tile.index, path);
  std::sort(shown.begin(), shown.end(), [&](const auto& a, const auto& b) {
    return std::pair(distance(a.first), a.first) < std::pair(distance(b.first), b.first);
  });
  double target = contentY;
  for (const auto& [indexThen, path] : shown) {
    if (const auto index = indexOf(path)) {
      target += m_layout.tileRect(*index).center().y() - old.tileRect(indexThen).center().y();
      break;
    }
  }
  requestScroll(target, Scrolling::Immediate);
}

void PhotoGrid::scrollGridIfNeeded() {
  const std::optional<QByteArray>& target = m_view->gridScrollTarget();
  const bool appears = !std::exchange(m_hasAppeared, true);
  if (!appears && target == m_seenTarget) return;
  m_seenTarget = target;
  if (!target) return;
  if (const auto index = indexOf(*target)) {
    requestScroll(m_layout.centeringContentY(*index), appears ? Scrolling::Immediate : Scrolling::Animated);
  }
}

std::optional<std::int64_t> PhotoGrid::indexOf(const QByteArray& path) const {
  PhotoLibrary* library = m_view->library();
  if (const PhotoItem* current = library->currentPhoto(); current && current->id() == path) {
    return library->currentIndex();
  }
  const auto& photos = library->photos();
  const auto found =
      std::find_if(photos.begin(), photos.end(), [&path](const PhotoItem& photo) { return photo.id() == path; });
  if (found == photos.end()) return std::nullopt;
  return found - photos.begin();
}

void PhotoGrid::updateTiles() {
  const auto [first, last] = m_layout.visibleIndices(m_contentY);
  const auto& photos = m_view->library()->photos();
  m_keyboardIndex = std::min<std::int64_t>(m_keyboardIndex, m_view->library()->photoCount() - 1);

  QHash<QByteArray, ShownTile> leaving = std::exchange(m_tiles, {});
  for (std::int64_t index = first; index < last; ++index) {
    const QByteArray& path = photos[static_cast<std::size_t>(index)].id();
    if (const ShownTile shown = leaving.take(path); shown.tile) m_tiles.insert(path, shown);
  }
  for (const ShownTile& shown : std::as_const(leaving)) {
    shown.tile->setVisible(false);
    shown.tile->retire();
    m_unused.push_back(shown.tile);
  }

  // Thumbnails are made in the order in which tiles ask: the current photo has the attention, then reading order.
  const std::int64_t current = m_view->library()->currentIndex();
  if (current >= first && current < last) showTile(current);
  for (std::int64_t index = first; index < last; ++index) {
    if (index != current) showTile(index);
  }
  m_view->thumbnailsAhead().follow(m_layout, first, last);
}

void PhotoGrid::showTile(std::int64_t index) {
  PhotoLibrary* library = m_view->library();
  const PhotoItem& photo = library->photos()[static_cast<std::size_t>(index)];
  ShownTile& shown = m_tiles[photo.id()];
  if (!shown.tile) shown.tile = freshTile();
  if (!shown.tile) return;
  // Only marks that change where the tile stands are animated: to the eye, a tile elsewhere is another one.
  const auto transition =
      shown.index == index ? PhotoThumbnailTile::Transition::animated : PhotoThumbnailTile::Transition::immediate;
  shown.index = index;
  const auto& selection = library->selectedIndices();
  shown.tile->setMarks(index == library->currentIndex() && selection.empty(), selection.contains(index), transition);
  shown.tile->setPhoto(photo);
  shown.tile->setFocusRing(m_showsKeyboardIndex && index == m_keyboardIndex);
  const QRectF rect = m_layout.tileRect(index);
  shown.tile->setPosition(rect.topLeft());
  shown.tile->setSide(rect.width());
  shown.tile->setVisible(true);
}

PhotoThumbnailTile* PhotoGrid::freshTile() {
  if (!m_unused.empty()) {
    PhotoThumbnailTile* tile = m_unused.back();
    m_unused.pop_back();
    return tile;
  }
  QObject* object = m_delegate->beginCreate(m_delegate->creationContext());
  auto* tile = qobject_cast<PhotoThumbnailTile*>(object);
  if (!tile) {
    delete object;
    return nullptr;
  }
  tile->setParent(this);
  tile->setParentItem(this);
  tile->setQueue(&m_view->thumbnailQueue());
  m_delegate->completeCreate();
  connect(tile, &PhotoThumbnailTile::clicked, this, [this, tile](Qt::KeyboardModifiers modifiers) {
    const auto shown = m_tiles.constFind(tile->photo().id());
    if (shown != m_tiles.constEnd()) m_view->handleTileClick(shown->index, modifiers);
  });
  return tile;
}

}  // namespace lumagrid
