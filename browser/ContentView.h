#pragma once

#include <QtQml/qqmlregistration.h>
#include <QObject>
#include <QPointF>
#include <QSizeF>
#include <QUrl>
#include <QWindow>
#include <cstdint>
#include <optional>
#include <vector>

#include "BrowserMode.h"
#include "ChangeObserver.h"
#include "GridMetrics.h"
#include "PhotoLibrary.h"
#include "PhotosAhead.h"
#include "ShownLibrary.h"
#include "ThumbnailsAhead.h"
#include "ZoomState.h"

namespace lumagrid {

class Alert;
class BackgroundQueue;
class NotificationCenter;
class OpenDialogs;
class PopupMenu;
class RecentFolders;

// The state of one browser window and every decision about it; the views bind to it and report events to it. Owns the
// window's library. Nothing here is persisted. Main thread only.
class ContentView : public QObject {
  Q_OBJECT
  QML_ELEMENT
  QML_UNCREATABLE("made by the application, one per window")
  Q_PROPERTY(bool showsGrid READ showsGrid NOTIFY browserModeChanged)
  Q_PROPERTY(int gridDimension READ gridDimension NOTIFY gridDimensionChanged)
  Q_PROPERTY(bool canShowFewerTiles READ canShowFewerTiles NOTIFY gridDimensionChanged)
  Q_PROPERTY(bool canShowMoreTiles READ canShowMoreTiles NOTIFY gridDimensionChanged)
  Q_PROPERTY(QList<int> gridPresets READ gridPresets CONSTANT)
  Q_PROPERTY(double zoomScale READ zoomScale NOTIFY zoomChanged)
  Q_PROPERTY(double fittedScale READ fittedScale CONSTANT)
  Q_PROPERTY(bool isZoomed READ isZoomed NOTIFY zoomChanged)
  Q_PROPERTY(QPointF displacement READ displacement NOTIFY zoomChanged)
  Q_PROPERTY(QPointF dragOffset READ dragOffset NOTIFY zoomChanged)
  Q_PROPERTY(lumagrid::ShownLibrary* shown READ shown CONSTANT)
  Q_PROPERTY(lumagrid::PhotosAhead* photosAhead READ photosAhead CONSTANT)
  Q_PROPERTY(QSizeF leastSize READ leastSize CONSTANT)
  Q_PROPERTY(double stageMargin READ stageMargin CONSTANT)

 public:
  // What a window shares with the others; each outlives it.
  struct Shared {
    RecentFolders& recentFolders;
    NotificationCenter& notificationCenter;
    BackgroundQueue& thumbnailQueue;
    PopupMenu& popupMenu;
    Alert& alert;
    OpenDialogs& dialogs;
  };

  // The least size of a window's content, without the menu bar, and how far the stage is from its edges. Points.
  static constexpr QSizeF kLeastSize{1100, 760};
  static constexpr double kStageMargin = 18;
  static constexpr QSizeF kLeastStage{kLeastSize.width() - 2 * kStageMargin, kLeastSize.height() - 2 * kStageMargin};
  [[nodiscard]] static QSizeF leastSize() { return kLeastSize; }
  [[nodiscard]] static double stageMargin() { return kStageMargin; }

  ContentView(const PhotoLibrary::Services& services, const Shared& shared, QObject* parent = nullptr);

  [[nodiscard]] PhotoLibrary* library() { return &m_library; }
  [[nodiscard]] ShownLibrary* shown() { return &m_shown; }
  [[nodiscard]] PhotosAhead* photosAhead() { return &m_photosAhead; }
  [[nodiscard]] ThumbnailsAhead& thumbnailsAhead() { return m_thumbnailsAhead; }
  [[nodiscard]] BackgroundQueue& thumbnailQueue() const { return m_shared.thumbnailQueue; }
  [[nodiscard]] const OpenDialogs& dialogs() const { return m_shared.dialogs; }
  [[nodiscard]] bool showsGrid() const { return m_browserMode == BrowserMode::grid; }
  [[nodiscard]] qint64 gridDimension() const { return m_gridDimension; }
  [[nodiscard]] bool canShowFewerTiles() const { return m_gridDimension > kLowestGridDimension; }
  [[nodiscard]] bool canShowMoreTiles() const { return m_gridDimension < kHighestGridDimension; }
  [[nodiscard]] double lastMagnification() const { return m_lastMagnification; }
  // The path of the photo that the grid brings to its center.
  [[nodiscard]] const std::optional<QByteArray>& gridScrollTarget() const { return m_gridScrollTarget; }
  [[nodiscard]] const ZoomState& zoom() const { return m_zoom; }
  [[nodiscard]] QPointF dragOffset() const { return m_dragOffset; }
  [[nodiscard]] QList<int> gridPresets() const { return {4, 9, 16, 25, 36}; }  // numbers of visible thumbnails

  [[nodiscard]] double zoomScale() const { return m_zoom.scale; }
  [[nodiscard]] static double fittedScale() { return ZoomState::kFittedScale; }
  [[nodiscard]] bool isZoomed() const { return m_zoom.scale > ZoomState::kFittedScale; }
  [[nodiscard]] QPointF displacement() const { return m_zoom.offset + m_dragOffset; }

  Q_INVOKABLE void handleExitCommand();
  Q_INVOKABLE void exitDetailMode();
  Q_INVOKABLE void chooseFolderAndShowGrid();
  // The first of the dropped URLs counts, and has to name a file; a folder is opened once the drop has ended.
  Q_INVOKABLE static bool acceptsDrop(const QList<QUrl>& urls);
  Q_INVOKABLE bool handleDrop(const QList<QUrl>& urls);
  void handleOpenRecent(const std::optional<FileUrl>& folder);
  // Opens a folder as a grid, a picture in its folder as if its tile had been clicked; what is neither gives an error
  // of the library. `scan` is of the folder that scannedFolder() names.
  void openPath(const FileUrl& url, FolderScan scan);
  void openPath(const FileUrl& url);
  // The same for one path. The folder of several pictures opens as a grid with those selected, in the order of `files`.
  void openPaths(const std::vector<FileUrl>& files, FolderScan scan);
  void openPaths(const std::vector<FileUrl>& files);
  // The folder or picture that openPaths() opens. `files` are of one folder, one at least.
  [[nodiscard]] static FileUrl openedPath(const std::vector<FileUrl>& files);
  [[nodiscard]] static FileUrl scannedFolder(const FileUrl& url);

  [[nodiscard]] GridMetrics gridMetrics(QSizeF stage) const { return GridMetrics::fitting(stage, m_gridDimension); }
  Q_INVOKABLE void setGridDimension(qint64 wanted);
  // `magnification` is relative to the start of the pinch.
  Q_INVOKABLE void handleGridMagnification(double magnification);
  Q_INVOKABLE void endGridMagnification();
  Q_INVOKABLE static int presetColumns(int preset);
  // A click on the tile at `index`, with the modifiers of the event that caused it.
  void handleTileClick(std::int64_t index, Qt::KeyboardModifiers modifiers);

  // The menu's top left is `position`, in screen points.
  Q_INVOKABLE void openSortMenu(QWindow* window, QPointF position);
  Q_INVOKABLE void deleteSelectedWithConfirmation();
  Q_INVOKABLE void deleteCurrentPhoto();
  Q_INVOKABLE void clearSelection() { m_library.clearSelection(); }
  Q_INVOKABLE void showPrevious() { m_library.showPrevious(); }
  Q_INVOKABLE void showNext() { m_library.showNext(); }

  Q_INVOKABLE void handleDetailMagnification(double magnification);
  Q_INVOKABLE void endDetailMagnification();
  // `translation` is the way from the start of the drag, in points of the stage.
  Q_INVOKABLE void handleDrag(QPointF translation);
  Q_INVOKABLE void endDrag(QPointF translation);
  Q_INVOKABLE void handleDoubleClick();

 Q_SIGNALS:
  void browserModeChanged();
  void gridDimensionChanged();
  void gridScrollTargetChanged();
  // The displayed zoom is to follow the state, which jumps to its end, along this curve; comes before zoomChanged().
  void zoomWillChange(lumagrid::ZoomState::Curve curve);
  void zoomChanged();

 private:
  void setBrowserMode(BrowserMode mode);
  void setGridScrollTarget(std::optional<QByteArray> path);
  void setZoom(const ZoomState& zoom, QPointF dragOffset, ZoomState::Curve curve);
  [[nodiscard]] std::optional<QByteArray> currentPhotoPath() const;
  void openFolderInGrid(const FileUrl& folder);
  void refuse(const FileUrl& file);

  PhotoLibrary m_library;
  ShownLibrary m_shown{m_library};
  PhotosAhead m_photosAhead;
  ThumbnailsAhead m_thumbnailsAhead;
  Shared m_shared;
  BrowserMode m_browserMode = BrowserMode::grid;
  std::int64_t m_gridDimension = kInitialGridDimension;
  double m_lastMagnification = 1.0;
  std::optional<QByteArray> m_gridScrollTarget;
  ZoomState m_zoom;
  QPointF m_dragOffset;

  ChangeObserver<std::int64_t> m_photoCountObserver;
  ChangeObserver<std::optional<FileUrl>> m_folderObserver;
  ChangeObserver<std::int64_t> m_currentIndexObserver;
};

}  // namespace lumagrid
