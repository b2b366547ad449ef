#include <algorithm>

#include "PhotoLibrary.h"

namespace lumagrid {

void PhotoLibrary::toggleSelection(std::int64_t index) {
  if (index < 0 || index >= photoCount()) return;
  Q_EMIT objectWillChange();
  if (m_selectedIndices.insert(index).second) {
    m_lastSelectionAnchor = index;
  } else {
    m_selectedIndices.erase(index);
  }
  Q_EMIT selectedIndicesChanged();
}

void PhotoLibrary::extendSelection(std::int64_t index) {
  if (index < 0 || index >= photoCount()) return;
  const std::int64_t start =
      m_lastSelectionAnchor >= 0 ? m_lastSelectionAnchor : std::max<std::int64_t>(0, m_currentIndex);
  for (std::int64_t i = std::min(start, index); i <= std::max(start, index); ++i) {
    Q_EMIT objectWillChange();
    m_selectedIndices.insert(i);
    Q_EMIT selectedIndicesChanged();
  }
  m_lastSelectionAnchor = index;
}

void PhotoLibrary::clearSelection() {
  Q_EMIT objectWillChange();
  m_selectedIndices.clear();
  m_lastSelectionAnchor = -1;
  Q_EMIT selectedIndicesChanged();
}

}  // namespace lumagrid
