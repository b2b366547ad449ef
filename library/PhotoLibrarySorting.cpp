#include <algorithm>

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
  const auto current = std::find(positions.begin(), positions.end(), m_currentIndex);
  Q_EMIT objectWillChange();  // observers still read the old list
  std::vector<PhotoItem> sorted;
  sorted.reserve(m_photos.size());
  for (const std::uint32_t position : positions) sorted.push_back(std::move(m_photos[position]));
  m_photos = std::move(sorted);
  Q_EMIT photosReordered();

  if (current != positions.end()) setCurrentIndex(current - positions.begin());
  clearSelection();
}

}  // namespace lumagrid
