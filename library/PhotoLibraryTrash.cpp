#include <algorithm>

#include "Alert.h"
#include "PhotoLibrary.h"
#include "Trash.h"

namespace lumagrid {

void PhotoLibrary::deleteCurrentPhoto() {
  if (!currentPhoto()) return;
  const FileUrl url = currentPhoto()->url;
  const FileIdentity identity = FileIdentity::of(url);
  const QString name = url.nameInSentence();
  const AlertRole pressed = m_services.alert.runModal({
      QStringLiteral("Move this photo to Trash?"),
      QStringLiteral("\"%1\" will be moved to the Trash.").arg(name),
      {{QStringLiteral("Move to Trash"), AlertRole::accept}, {QStringLiteral("Cancel"), AlertRole::cancel}},
  });
  if (pressed != AlertRole::accept) return;
  // The question was asked about this photo; the alert's event loop may have changed which one is current.
  const bool isStillCurrent = currentPhoto() && currentPhoto()->url == url;
  if (const auto error = isStillCurrent ? m_services.trash.trashItem(url, identity)
                                        : QStringLiteral("It is not the current photo any more")) {
    setStatus(QStringLiteral("Delete failed: %1").arg(*error), true);
    return;
  }
  removePhoto(m_currentIndex);
  const QString moved = QStringLiteral("Moved \"%1\" to the Trash.").arg(name);
  if (m_photos.empty()) {
    setCurrentIndex(-1);
    setCurrentImage({});
    setStatus(moved, false);
    return;
  }
  if (m_currentIndex >= photoCount()) setCurrentIndex(photoCount() - 1);
  loadCurrentImage(moved);
}

std::vector<PhotoLibrary::SelectedFile> PhotoLibrary::selectedFiles() const {
  std::vector<std::int64_t> indices(m_selectedIndices.begin(), m_selectedIndices.end());
  std::sort(indices.begin(), indices.end(), std::greater<>());
  std::vector<SelectedFile> files;
  files.reserve(indices.size());
  for (const std::int64_t index : indices) {
    if (index < 0 || index >= photoCount()) continue;
    files.push_back({index, FileIdentity::of(m_photos[static_cast<std::size_t>(index)].url)});
  }
  return files;
}

void PhotoLibrary::deleteSelectedPhotos(const std::vector<SelectedFile>& asked) {
  if (m_selectedIndices.empty()) return;
  int moved = 0;
  int failed = 0;
  // From the end, so that each removal leaves the indices still to come valid.
  for (const auto& [index, identity] : asked) {
    if (index >= photoCount()) continue;
    if (m_services.trash.trashItem(m_photos[static_cast<std::size_t>(index)].url, identity)) {
      ++failed;
    } else {
      removePhoto(index);
      ++moved;
    }
  }
  clearSelection();
  if (m_photos.empty()) {
    setCurrentIndex(-1);
    setCurrentImage({});
  } else if (m_currentIndex >= photoCount()) {
    setCurrentIndex(photoCount() - 1);
    loadCurrentImage(std::nullopt);
  }
  QString message = QStringLiteral("Moved %1 photo%2 to Trash.")
                        .arg(QString::number(moved), moved == 1 ? QString() : QStringLiteral("s"));
  if (failed > 0) message += QStringLiteral(" %1 failed.").arg(failed);
  setStatus(message, failed > 0);
}

}  // namespace lumagrid
