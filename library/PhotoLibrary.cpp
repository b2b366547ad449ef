#include "PhotoLibrary.h"

#include <algorithm>

#include "FolderChooser.h"
#include "ImageDecoder.h"
#include "PhotoScan.h"
#include "ScopedAccess.h"

namespace lumagrid {

PhotoLibrary::PhotoLibrary(const Services& services, QObject* parent)
    : QObject(parent),
      m_services(services),
      m_statusMessage(QStringLiteral("Choose a folder to start browsing photos.")) {}

const PhotoItem* PhotoLibrary::currentPhoto() const {
  if (m_currentIndex < 0 || m_currentIndex >= photoCount()) return nullptr;
  return &m_photos[static_cast<std::size_t>(m_currentIndex)];
}

bool PhotoLibrary::canGoNext() const {
  return m_currentIndex >= 0 && m_currentIndex < photoCount() - 1;
}

QString PhotoLibrary::counterText() const {
  if (!currentPhoto()) return QStringLiteral("0 / 0");
  return QStringLiteral("%1 / %2").arg(m_currentIndex + 1).arg(photoCount());
}

void PhotoLibrary::chooseFolder() {
  const auto folder = m_services.chooser.chooseFolder(tr("Choose a Photo Folder"), tr("Choose Folder"));
  if (folder) openFolder(*folder);
}

void PhotoLibrary::openFolder(const FileUrl& url) {
  clearSelection();
  updateSecurityScopedAccess(url);
  replaceFolder(url, {photoItems(url), {}});
}

void PhotoLibrary::openFolder(const FileUrl& url, FolderScan scan) {
  clearSelection();
  updateSecurityScopedAccess(url);
  replaceFolder(url, std::move(scan));
}

void PhotoLibrary::replaceFolder(const FileUrl& url, FolderScan scan) {
  if (const auto* error = std::get_if<ListingError>(&scan.listing)) {
    failToOpen(QStringLiteral("Could not open folder: %1").arg(error->description));
    return;
  }
  if (std::get<std::vector<PhotoItem>>(scan.listing).empty()) {
    setFolderURL(url);
    setPhotos({});
    setCurrentIndex(-1);
    setCurrentImage({});
    setStatus(QStringLiteral("No supported image files were found in this folder."), true);
    return;
  }
  adoptFolder(url, std::move(scan), 0);
  const QString plural = m_photos.size() == 1 ? QString() : QStringLiteral("s");
  // One call of arg() with all texts: a "%1" in a folder's name stays what it is.
  loadCurrentImage(QStringLiteral("Loaded %1 photo%2 from \"%3\".")
                       .arg(QString::number(photoCount()), plural, url.nameInSentence()));
}

void PhotoLibrary::failToOpen(const QString& reason) {
  releaseSecurityScopedAccess();
  setFolderURL(std::nullopt);
  setPhotos({});
  setCurrentIndex(-1);
  setCurrentImage({});
  setStatus(reason, true);
}

std::optional<std::int64_t> PhotoLibrary::openFolderOf(const FileUrl& picture, FolderScan scan) {
  const FileUrl folder = picture.parent();
  const auto* photos = std::get_if<std::vector<PhotoItem>>(&scan.listing);
  if (!photos) return std::nullopt;
  const auto found = std::find(photos->begin(), photos->end(), PhotoItem{picture});
  if (found == photos->end()) return std::nullopt;
  clearSelection();
  updateSecurityScopedAccess(folder);
  adoptFolder(folder, std::move(scan), found - photos->begin());
  return m_currentIndex;
}

void PhotoLibrary::adoptFolder(const FileUrl& url, FolderScan scan, std::int64_t current) {
  setFolderURL(url);
  setPhotos(std::move(std::get<std::vector<PhotoItem>>(scan.listing)));
  setCurrentIndex(current);
  if (m_sortOrder == SortOrder::nameAscending && !scan.byName.empty()) {
    sortPhotos(scan.byName);
  } else {
    applySortOrder();
  }
}

void PhotoLibrary::updateSecurityScopedAccess(const FileUrl& url) {
  releaseSecurityScopedAccess();
  if (m_services.access.start(url)) m_securityScopedFolderURL = url;
}

void PhotoLibrary::releaseSecurityScopedAccess() {
  if (!m_securityScopedFolderURL) return;
  m_services.access.stop(*m_securityScopedFolderURL);
  m_securityScopedFolderURL.reset();
}

void PhotoLibrary::openPhoto(std::int64_t index) {
  if (index < 0 || index >= photoCount()) return;
  setCurrentIndex(index);
  loadCurrentImage(std::nullopt);
}

void PhotoLibrary::showPrevious() {
  if (m_currentIndex <= 0) return;
  setCurrentIndex(m_currentIndex - 1);
  loadCurrentImage(std::nullopt);
}

void PhotoLibrary::showNext() {
  if (!canGoNext()) return;
  setCurrentIndex(m_currentIndex + 1);
  loadCurrentImage(std::nullopt);
}

void PhotoLibrary::loadCurrentImage(const std::optional<QString>& statusOverride) {
  const PhotoItem* photo = currentPhoto();
  if (!photo) {
    setCurrentImage({});
    if (statusOverride) setStatus(*statusOverride, false);
    return;
  }
  const QString name = photo->url.nameInSentence();
  DecodedImage decoded = m_services.decoder.decode(photo->url);
  if (decoded.pixels.isNull()) {
    setCurrentImage({});
    setStatus(QStringLiteral("Could not open \"%1\".").arg(name), true);
    return;
  }
  setCurrentImage(std::move(decoded.pixels));
  setStatus(statusOverride ? *statusOverride : QStringLiteral("Showing \"%1\".").arg(name), false);
}

void PhotoLibrary::setFolderURL(std::optional<FileUrl> url) {
  Q_EMIT objectWillChange();
  m_folderURL = std::move(url);
  Q_EMIT folderURLChanged();
}

void PhotoLibrary::setPhotos(std::vector<PhotoItem> photos) {
  Q_EMIT objectWillChange();
  m_photos = std::move(photos);
  Q_EMIT photosReset();
}

void PhotoLibrary::removePhoto(std::int64_t index) {
  Q_EMIT objectWillChange();
  m_photos.erase(m_photos.begin() + index);
  Q_EMIT photoRemoved(index);
}

void PhotoLibrary::setCurrentIndex(std::int64_t index) {
  Q_EMIT objectWillChange();
  m_currentIndex = index;
  Q_EMIT currentIndexChanged();
}

void PhotoLibrary::setCurrentImage(QImage image) {
  Q_EMIT objectWillChange();
  m_currentImage = std::move(image);
  Q_EMIT currentImageChanged();
}

void PhotoLibrary::setStatus(const QString& message, bool isError) {
  Q_EMIT objectWillChange();
  m_statusMessage = message;
  Q_EMIT statusMessageChanged();
  Q_EMIT objectWillChange();
  m_statusIsError = isError;
  Q_EMIT statusIsErrorChanged();
}

}  // namespace lumagrid
