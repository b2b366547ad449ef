#include "ShownLibrary.h"

namespace lumagrid {

ShownLibrary::ShownLibrary(const PhotoLibrary& library, QObject* parent)
    : QObject(parent),
      m_library(library),
      m_photoCountObserver([this] { return photoCount(); }, [this](std::int64_t) { Q_EMIT photoCountChanged(); }),
      m_selectedCountObserver([this] { return selectedCount(); },
                              [this](std::int64_t count) {
                                if (count > 0) m_lastSelectedCount = count;
                                Q_EMIT selectedCountChanged();
                              }) {
  const auto photosMayHaveChanged = [this] {
    m_photoCountObserver.notice();
    Q_EMIT currentPhotoChanged();
  };
  connect(&m_library, &PhotoLibrary::photosReset, this, photosMayHaveChanged);
  connect(&m_library, &PhotoLibrary::photosReordered, this, photosMayHaveChanged);
  connect(&m_library, &PhotoLibrary::photoRemoved, this, photosMayHaveChanged);
  connect(&m_library, &PhotoLibrary::selectedIndicesChanged, this, [this] { m_selectedCountObserver.notice(); });
  connect(&m_library, &PhotoLibrary::currentIndexChanged, this, &ShownLibrary::currentPhotoChanged);
  connect(&m_library, &PhotoLibrary::currentImageChanged, this, &ShownLibrary::currentImageChanged);
  // After the error flag, the last of a status to be assigned.
  connect(&m_library, &PhotoLibrary::statusIsErrorChanged, this, [this] {
    m_newStatus = m_library.statusMessage();
    Q_EMIT statusChanged();
    Q_EMIT newStatusChanged();
  });
}

QString ShownLibrary::currentName() const {
  const PhotoItem* photo = m_library.currentPhoto();
  return photo ? photo->displayName() : tr("No photo selected");
}

void ShownLibrary::dismissNewStatus() {
  m_newStatus.clear();
  Q_EMIT newStatusChanged();
}

}  // namespace lumagrid
