#include "ThumbnailsAhead.h"

#include <QTimerEvent>
#include <algorithm>
#include <memory>

#include "MemoryBudget.h"
#include "PhotoLibrary.h"
#include "PhotoThumbnailTile.h"
#include "ThumbnailStore.h"

namespace lumagrid {

void ThumbnailsAhead::follow(const GridLayout& layout, std::int64_t first, std::int64_t last) {
  m_stageSettles.stop();
  m_layout = layout;
  const auto& photos = m_library.photos();
  const QByteArray shown =
      first < last ? photos[static_cast<std::size_t>(first)].id() + '#' + QByteArray::number(qint64{first}) + '#' +
                         QByteArray::number(qint64{last}) + '#' + QByteArray::number(layout.metrics.cellSide)
                   : QByteArray();
  if (shown == m_shown) return;
  m_shown = shown;
  if (first != m_first) m_scrollsUp = first < m_first;
  m_first = first;
  const std::int64_t screen = last - first;
  std::vector<std::int64_t> below;
  std::vector<std::int64_t> above;
  for (std::int64_t i = 0; i < screen; ++i) {
    if (last + i < m_library.photoCount()) below.push_back(last + i);
    if (first - 1 - i >= 0) above.push_back(first - 1 - i);
  }
  std::vector<std::int64_t>& ahead = m_scrollsUp ? above : below;
  const std::vector<std::int64_t>& behind = m_scrollsUp ? below : above;
  ahead.insert(ahead.end(), behind.begin(), behind.end());
  make(ahead);
}

void ThumbnailsAhead::followStage(std::int64_t index) {
  constexpr int kSettledMs = 200;  // the photos that a step would show go first
  m_stageIndex = index;
  m_stageSettles.start(kSettledMs, this);
}

void ThumbnailsAhead::timerEvent(QTimerEvent* event) {
  if (event->timerId() != m_stageSettles.timerId()) return;
  m_stageSettles.stop();
  if (m_stageIndex < 0 || m_stageIndex >= m_library.photoCount()) return;
  m_layout.count = m_library.photoCount();
  const auto [first, last] = m_layout.visibleIndices(m_layout.centeringContentY(m_stageIndex));
  std::vector<std::int64_t> screen;
  for (std::int64_t index = first; index < last; ++index) screen.push_back(index);
  m_shown.clear();
  make(screen);
}

// The likeliest first, as many as may take a part of what is kept.
void ThumbnailsAhead::make(const std::vector<std::int64_t>& indices) {
  const double bound = PhotoThumbnailTile::maxPixelSize(m_layout.metrics.cellSide);
  const auto most = static_cast<std::size_t>(static_cast<double>(keptBytes()) / 4 / (4 * bound * bound * 3 / 4));
  std::vector<Load> loads;
  for (const std::int64_t index : indices) {
    if (loads.size() == most) break;
    const FileUrl& file = m_library.photos()[static_cast<std::size_t>(index)].url;
    const QByteArray path = file.path() + '#' + QByteArray::number(static_cast<qint64>(bound));
    const auto found =
        std::find_if(m_loads.begin(), m_loads.end(), [&](const Load& load) { return load.path == path; });
    if (found != m_loads.end()) {
      loads.push_back(std::move(*found));
      found->path.clear();
      continue;
    }
    Load load{path, std::make_shared<QImage>(ThumbnailStore::cachedThumbnail(file, bound)), {}};
    if (load.thumbnail->isNull()) {
      load.ticket = m_queue.enqueue(
          [file, bound, made = load.thumbnail] { *made = ThumbnailStore::thumbnail(file, bound); }, [] {});
    }
    loads.push_back(std::move(load));
  }
  m_loads = std::move(loads);  // drops what the others wait for
}

}  // namespace lumagrid
