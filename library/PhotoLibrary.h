#pragma once

#include <QImage>
#include <QObject>
#include <QString>
#include <cstdint>
#include <optional>
#include <unordered_set>
#include <vector>

#include "FileIdentity.h"
#include "FileUrl.h"
#include "PhotoItem.h"
#include "PhotoScan.h"
#include "SortOrder.h"

namespace lumagrid {

class Alert;
class FolderChooser;
class ImageDecoder;
class ScopedAccess;
class Trash;

// The model of one window: the open folder, its photos in display order, the current photo with its decoded picture,
// the selection and a one-line status. Main thread only; every operation is synchronous and complete when it returns.
//
// Each assignment to a published field emits objectWillChange() before it, also when the value stays equal, and the
// field's own signal after it. The list's structure is told by photosReset, photosReordered and photoRemoved.
// Failures are reported on the status line only.
class PhotoLibrary : public QObject {
  Q_OBJECT

 public:
  // What the library calls on; each outlives it.
  struct Services {
    ImageDecoder& decoder;
    Trash& trash;
    FolderChooser& chooser;
    Alert& alert;
    ScopedAccess& access;
  };
  using IndexSet = std::unordered_set<std::int64_t>;
  struct SelectedFile {
    std::int64_t index;
    FileIdentity identity;
  };

  explicit PhotoLibrary(const Services& services, QObject* parent = nullptr);

  [[nodiscard]] const std::optional<FileUrl>& folderURL() const { return m_folderURL; }
  [[nodiscard]] const std::vector<PhotoItem>& photos() const { return m_photos; }
  [[nodiscard]] std::int64_t photoCount() const { return static_cast<std::int64_t>(m_photos.size()); }
  [[nodiscard]] SortOrder sortOrder() const { return m_sortOrder; }
  [[nodiscard]] qint64 currentIndex() const { return m_currentIndex; }
  [[nodiscard]] const IndexSet& selectedIndices() const { return m_selectedIndices; }
  [[nodiscard]] const QImage& currentImage() const { return m_currentImage; }  // null: none
  [[nodiscard]] const QString& statusMessage() const { return m_statusMessage; }
  [[nodiscard]] bool statusIsError() const { return m_statusIsError; }

  // The photo at currentIndex(); null when that lies outside the list.
  [[nodiscard]] const PhotoItem* currentPhoto() const;
  [[nodiscard]] bool canGoNext() const;
  [[nodiscard]] QString counterText() const;  // "3 / 120", or "0 / 0"

  // Stores the order and sorts at once, also when it is the active one.
  void setSortOrder(SortOrder order);

  void chooseFolder();
  // Replaces folder, list, current photo, picture, selection and status. The first photo that the listing returned
  // becomes current.
  void openFolder(const FileUrl& url);
  // The same, with a scan of the folder that was made just before.
  void openFolder(const FileUrl& url, FolderScan scan);
  // Leaves no folder open, and says why.
  void failToOpen(const QString& reason);
  // Opens the folder of `picture`, as scanned, with that picture current and loads nothing yet: the index to open next.
  // Nothing, and no change, when the folder does not list it.
  [[nodiscard]] std::optional<std::int64_t> openFolderOf(const FileUrl& picture, FolderScan scan);
  // Out of range: ignored.
  void openPhoto(std::int64_t index);
  void showPrevious();
  void showNext();

  void toggleSelection(std::int64_t index);
  // Adds every index between the anchor (or the current photo) and `index`, both included.
  void extendSelection(std::int64_t index);
  void clearSelection();

  // Asks first, then moves the current photo to the Trash; the photo that followed it becomes current.
  void deleteCurrentPhoto();
  // Moves the selected photos to the Trash without asking; those that cannot be moved stay.
  void deleteSelectedPhotos() { deleteSelectedPhotos(selectedFiles()); }
  // The same for the photos that a question was asked about, as the files that they were then.
  void deleteSelectedPhotos(const std::vector<SelectedFile>& asked);
  [[nodiscard]] std::vector<SelectedFile> selectedFiles() const;  // from the end of the list

 Q_SIGNALS:
  void objectWillChange();
  void folderURLChanged();
  void photosReset();
  void photosReordered();
  void photoRemoved(qint64 index);
  void sortOrderChanged();
  void currentIndexChanged();
  void selectedIndicesChanged();
  void currentImageChanged();
  void statusMessageChanged();
  void statusIsErrorChanged();

 private:
  void replaceFolder(const FileUrl& url, FolderScan scan);
  void adoptFolder(const FileUrl& url, FolderScan scan, std::int64_t current);
  void updateSecurityScopedAccess(const FileUrl& url);
  void releaseSecurityScopedAccess();
  void loadCurrentImage(const std::optional<QString>& statusOverride);
  void applySortOrder();
  void sortPhotos(const std::vector<std::uint32_t>& positions);

  void setFolderURL(std::optional<FileUrl> url);
  void setPhotos(std::vector<PhotoItem> photos);
  void setCurrentIndex(std::int64_t index);
  void setCurrentImage(QImage image);
  void setStatus(const QString& message, bool isError);
  void removePhoto(std::int64_t index);

  Services m_services;
  std::optional<FileUrl> m_folderURL;
  std::vector<PhotoItem> m_photos;
  SortOrder m_sortOrder = SortOrder::nameAscending;
  std::int64_t m_currentIndex = -1;
  IndexSet m_selectedIndices;
  QImage m_currentImage;
  QString m_statusMessage;
  bool m_statusIsError = false;
  std::optional<FileUrl> m_securityScopedFolderURL;
  std::int64_t m_lastSelectionAnchor = -1;
};

}  // namespace lumagrid
