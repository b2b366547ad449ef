#include "ContentView.h"

#include <QMetaObject>

#include "FolderListing.h"
#include "NotificationCenter.h"
#include "RecentFolders.h"

namespace lumagrid {

ContentView::ContentView(const PhotoLibrary::Services& services, const Shared& shared, QObject* parent)
    : QObject(parent),
      m_library(services),
      m_shared(shared),
      m_photoCountObserver([this] { return m_library.photoCount(); },
                           [this](std::int64_t count) {
                             if (count == 0) setBrowserMode(BrowserMode::grid);
                             Q_EMIT photoCountChanged();
                           }),
      m_folderObserver([this] { return m_library.folderURL(); },
                       [this](const std::optional<FileUrl>& folder) {
                         if (folder) m_shared.recentFolders.add(*folder);
                       }),
      m_currentIndexObserver([this] { return m_library.currentIndex(); },
                             [this](std::int64_t) {
                               setZoom({}, {0, 0}, ZoomAnimation::EaseOut);
                             }),
      m_selectedCountObserver([this] { return selectedCount(); },
                              [this](std::int64_t) { Q_EMIT selectedCountChanged(); }) {
  observeLibrary();
  connect(&m_shared.notificationCenter, &NotificationCenter::posted, this,
          [this](const QString& name, const std::optional<FileUrl>& object) {
            if (name == openRecentFolder) handleOpenRecent(object);
          });
}

void ContentView::observeLibrary() {
  const auto photosMayHaveChanged = [this] {
    m_photoCountObserver.notice();
    Q_EMIT currentPhotoChanged();
  };
  connect(&m_library, &PhotoLibrary::photosReset, this, photosMayHaveChanged);
  connect(&m_library, &PhotoLibrary::photosReordered, this, photosMayHaveChanged);
  connect(&m_library, &PhotoLibrary::photoRemoved, this, photosMayHaveChanged);
  connect(&m_library, &PhotoLibrary::folderURLChanged, this, [this] { m_folderObserver.notice(); });
  connect(&m_library, &PhotoLibrary::selectedIndicesChanged, this, [this] { m_selectedCountObserver.notice(); });
  // After the error flag, the last of a status to be assigned.
  connect(&m_library, &PhotoLibrary::statusIsErrorChanged, this, [this] {
    m_gridStatus = m_library.statusMessage();
    Q_EMIT statusChanged();
    Q_EMIT gridStatusChanged();
  });
  connect(&m_library, &PhotoLibrary::currentImageChanged, this, &ContentView::currentImageChanged);
  connect(&m_library, &PhotoLibrary::currentIndexChanged, this, [this] {
    m_currentIndexObserver.notice();
    Q_EMIT currentPhotoChanged();
  });
}

QString ContentView::currentName() const {
  const PhotoItem* photo = m_library.currentPhoto();
  return photo ? photo->displayName() : QStringLiteral("No photo selected");
}

std::optional<QByteArray> ContentView::currentPhotoPath() const {
  const PhotoItem* photo = m_library.currentPhoto();
  return photo ? std::optional(photo->id()) : std::nullopt;
}

void ContentView::dismissGridStatus() {
  m_gridStatus.clear();
  Q_EMIT gridStatusChanged();
}

void ContentView::handleExitCommand() {
  if (!m_library.selectedIndices().empty()) {
    m_library.clearSelection();
  } else if (m_browserMode == BrowserMode::detail) {
    exitDetailMode();
  }
}

void ContentView::exitDetailMode() {
  dismissGridStatus();  // the info bar has shown it
  setBrowserMode(BrowserMode::grid);
  setGridScrollTarget(currentPhotoPath());
  setZoom({}, {0, 0}, ZoomAnimation::None);
}

void ContentView::chooseFolderAndShowGrid() {
  dismissGridStatus();
  runDialog([this] { m_library.chooseFolder(); });
  setBrowserMode(BrowserMode::grid);
  setGridScrollTarget(currentPhotoPath());
}

void ContentView::handleOpenRecent(const std::optional<FileUrl>& folder) {
  if (folder) openFolderInGrid(*folder);
}

void ContentView::openFolderInGrid(const FileUrl& folder) {
  if (m_openDialogs > 0) {
    m_folderToOpen = folder;
    return;
  }
  m_library.openFolder(folder);
  setBrowserMode(BrowserMode::grid);
}

void ContentView::runDialog(const std::function<void()>& dialog) {
  ++m_openDialogs;
  dialog();
  --m_openDialogs;
  if (m_openDialogs == 0 && m_folderToOpen) openFolderInGrid(*std::exchange(m_folderToOpen, std::nullopt));
}

bool ContentView::handleDrop(const QList<QUrl>& urls) {
  if (urls.isEmpty()) return false;
  // The encoded form keeps the bytes of names that are not UTF-8.
  const QByteArray encodedPath = urls.first().isLocalFile() ? urls.first().path(QUrl::FullyEncoded).toLatin1() : "";
  const FileUrl folder = FileUrl::fromPath(QByteArray::fromPercentEncoding(encodedPath));
  // The source of the drop waits for its end; a folder can take long to open.
  QMetaObject::invokeMethod(
      this,
      [this, folder] {
        if (isDirectory(folder)) openFolderInGrid(folder);
      },
      Qt::QueuedConnection);
  return true;
}

FileUrl ContentView::scannedFolder(const FileUrl& url) {
  return isRegularFile(url) ? url.parent() : url;
}

void ContentView::openPath(const FileUrl& url) {
  openPath(url, {photoItems(scannedFolder(url)), {}});
}

void ContentView::openPath(const FileUrl& url, FolderScan scan) {
  if (!isRegularFile(url)) {
    m_library.openFolder(url, std::move(scan));
  } else if (const auto index = m_library.openFolderOf(url, std::move(scan))) {
    handleTileClick(*index, Qt::NoModifier);
  } else {
    m_library.openFolder(url);
  }
}

void ContentView::setBrowserMode(BrowserMode mode) {
  m_browserMode = mode;
  Q_EMIT browserModeChanged();
}

void ContentView::setGridScrollTarget(std::optional<QByteArray> path) {
  m_gridScrollTarget = std::move(path);
  Q_EMIT gridScrollTargetChanged();
}

}  // namespace lumagrid
