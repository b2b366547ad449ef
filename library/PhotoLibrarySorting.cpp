#include "PhotoLibrary.h"
#include "PhotoScan.h"

namespace lumagrid {

void PhotoLibrary::setSortOrder(SortOrder order) {
  Q_EMIT objectWillChange();
  m_sortOrder = order;
  Q_EMIT sortOrderChanged();
  applySortOrder();
}

void PhotoLibrary::applySortOrder() {
  sortPhotos(sortedPositions(m_photos, m_sortOrder));
}

void PhotoLibrary::sortPhotos(const std::vector<std::uint32_t>& positions) {
  const QByteArray currentPath = currentPhoto() ? currentPhoto()->id() : QByteArray();

  std::vector<PhotoItem> sorted;
  sorted.reserve(m_photos.size());
  // Copies share their bytes. The list stays whole: observers read it until the assignment.
  for (const std::uint32_t position : positions) sorted.push_back(m_photos[position]);
  Q_EMIT objectWillChange();
  m_photos = std::move(sorted);
  Q_EMIT photosReordered();

  if (!currentPath.isEmpty()) {
    for (std::size_t index = 0; index < m_photos.size(); ++index) {
      if (m_photos[index].id() != currentPath) continue;
      setCurrentIndex(static_cast<std::int64_t>(index));
      break;
    }
  }
  clearSelection();
}

}  // namespace lumagrid
