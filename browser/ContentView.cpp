#include "ContentView.h"

#include <QHash>
#include <QMetaObject>

#include "FolderListing.h"
#include "NotificationCenter.h"
#include "OpenDialogs.h"
#include "RecentFolders.h"

namespace lumagrid {

namespace {

// Empty when the first URL names no file.
FileUrl droppedFile(const QList<QUrl>& urls) {
  return urls.isEmpty() ? FileUrl() : FileUrl::fromUrl(urls.first());
}

}  // namespace

ContentView::ContentView(const PhotoLibrary::Services& services, const Shared& shared, QObject* parent)
    : QObject(parent),
      m_library(services),
      m_photosAhead(m_library, services.decoder),
      m_thumbnailsAhead(
          m_library, {GridMetrics::fitting(kLeastStage, kInitialGridDimension), kInitialGridDimension, 0, kLeastStage}),
      m_shared(shared),
      m_photoCountObserver([this] { return m_library.photoCount(); },
                           [this](std::int64_t count) {
                             if (count == 0) setBrowserMode(BrowserMode::grid);
                           }),
      m_folderObserver([this] { return m_library.folderURL(); },
                       [this](const std::optional<FileUrl>& folder) {
                         if (folder) m_shared.recentFolders.add(*folder);
                       }),
      m_currentIndexObserver([this] { return m_library.currentIndex(); },
                             [this](std::int64_t index) {
                               setZoom({}, {}, ZoomState::Curve::EaseOut);
                               if (!showsGrid()) m_thumbnailsAhead.followStage(index);
                             }) {
  const auto noticeCount = [this] { m_photoCountObserver.notice(); };
  connect(&m_library, &PhotoLibrary::photosReset, this, noticeCount);
  connect(&m_library, &PhotoLibrary::photoRemoved, this, noticeCount);
  connect(&m_library, &PhotoLibrary::folderURLChanged, this, [this] { m_folderObserver.notice(); });
  connect(&m_library, &PhotoLibrary::currentIndexChanged, this, [this] { m_currentIndexObserver.notice(); });
  connect(&m_shared.notificationCenter, &NotificationCenter::posted, this,
          [this](const QString& name, const std::optional<FileUrl>& object) {
            if (name == openRecentFolder) handleOpenRecent(object);
          });
}

std::optional<QByteArray> ContentView::currentPhotoPath() const {
  const PhotoItem* photo = m_library.currentPhoto();
  return photo ? std::optional(photo->id()) : std::nullopt;
}

void ContentView::handleExitCommand() {
  if (!m_library.selectedIndices().empty()) {
    m_library.clearSelection();
  } else if (m_browserMode == BrowserMode::detail) {
    exitDetailMode();
  }
}

void ContentView::exitDetailMode() {
  m_shown.dismissNewStatus();  // the info bar has shown it
  setBrowserMode(BrowserMode::grid);
  setGridScrollTarget(currentPhotoPath());
  setZoom({}, {}, ZoomState::Curve::None);
}

void ContentView::chooseFolderAndShowGrid() {
  m_shown.dismissNewStatus();
  m_shared.dialogs.run([this] { m_library.chooseFolder(); });
  setBrowserMode(BrowserMode::grid);
  setGridScrollTarget(currentPhotoPath());
}

void ContentView::handleOpenRecent(const std::optional<FileUrl>& folder) {
  if (folder && !folder->isEmpty()) openFolderInGrid(*folder);
}

void ContentView::openFolderInGrid(const FileUrl& folder) {
  m_shared.dialogs.afterwards(this, [this, folder] {
    m_library.openFolder(folder);
    setBrowserMode(BrowserMode::grid);
  });
}

bool ContentView::acceptsDrop(const QList<QUrl>& urls) {
  return !droppedFile(urls).isEmpty();
}

bool ContentView::handleDrop(const QList<QUrl>& urls) {
  const FileUrl folder = droppedFile(urls);
  if (folder.isEmpty()) return false;
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
  if (isRegularFile(url)) {
    if (const auto index = m_library.openFolderOf(url, std::move(scan))) {
      return handleTileClick(*index, Qt::NoModifier);
    }
  } else if (!isSpecialFile(url)) {
    return m_library.openFolder(url, std::move(scan));
  }
  refuse(url);
}

FileUrl ContentView::openedPath(const std::vector<FileUrl>& files) {
  return files.size() == 1 ? files.front() : files.front().parent();
}

void ContentView::openPaths(const std::vector<FileUrl>& files) {
  openPaths(files, {photoItems(scannedFolder(openedPath(files))), {}});
}

void ContentView::openPaths(const std::vector<FileUrl>& files, FolderScan scan) {
  openPath(openedPath(files), std::move(scan));
  if (files.size() == 1 || m_library.photos().empty()) return;
  QHash<QByteArray, std::int64_t> indices;
  for (std::int64_t index = 0; index < m_library.photoCount(); ++index) {
    indices.insert(m_library.photos()[static_cast<std::size_t>(index)].id(), index);
  }
  setGridScrollTarget(std::nullopt);
  for (const FileUrl& file : files) {
    const std::int64_t index = indices.value(file.path(), -1);
    if (index < 0 || m_library.selectedIndices().contains(index)) continue;
    m_library.toggleSelection(index);
    if (!m_gridScrollTarget) setGridScrollTarget(file.path());
  }
  if (m_library.selectedIndices().empty()) refuse(files.front());
}

void ContentView::refuse(const FileUrl& file) {
  m_library.failToOpen(QStringLiteral("Could not open \"%1\": not a supported image file.").arg(file.nameInSentence()));
}

void ContentView::setBrowserMode(BrowserMode mode) {
  m_browserMode = mode;
  m_photosAhead.setOnStage(mode == BrowserMode::detail);
  if (mode == BrowserMode::detail) m_thumbnailsAhead.followStage(m_library.currentIndex());
  Q_EMIT browserModeChanged();
}

void ContentView::setGridScrollTarget(std::optional<QByteArray> path) {
  m_gridScrollTarget = std::move(path);
  Q_EMIT gridScrollTargetChanged();
}

}  // namespace lumagrid
