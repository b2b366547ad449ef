#include "StartAhead.h"

#include <algorithm>
#include <memory>
#include <utility>

#include "ContentView.h"
#include "GridMetrics.h"
#include "PhotoPyramid.h"
#include "PhotoThumbnailTile.h"
#include "PhotoViewGeometry.h"
#include "PictureStore.h"
#include "ThumbnailStore.h"
#include "WorkerPool.h"

namespace lumagrid {

namespace {

// What shows on the grid's first screen, in reading order, but photo number `current` first.
std::vector<FileUrl> photosInView(const std::vector<PhotoItem>& photos, const std::vector<std::uint32_t>& order,
                                  const GridLayout& layout, std::uint32_t current) {
  const auto [first, last] = layout.visibleIndices(0);
  std::vector<std::uint32_t> positions(order.begin() + first, order.begin() + last);
  std::stable_partition(positions.begin(), positions.end(),
                        [&](std::uint32_t position) { return position == current; });
  std::vector<FileUrl> urls;
  urls.reserve(positions.size());
  for (const std::uint32_t position : positions) urls.push_back(photos[position].url);
  return urls;
}

// For a window that opens with its least size, on a screen whose points are pixels.
void keepFittedToLeastStage(const QImage& picture) {
  const PhotoStage stage{ContentView::kLeastStage, {ContentView::kStageMargin, ContentView::kStageMargin}, 1};
  if (!picture.isNull()) keepFitted(picture, stage.fittedPixels(picture.size()));
}

}  // namespace

StartAhead::StartAhead(const FileUrl& url, PictureStore& pictures) {
  const auto scanned = std::make_shared<std::promise<FolderScan>>();
  m_scan = scanned->get_future();
  const auto work = [url, &pictures, scanned] {
    const FileUrl folder = ContentView::scannedFolder(url);
    if (folder != url) pictures.decodeAhead(url, keepFittedToLeastStage);
    FolderScan scan{photoItems(folder), {}};
    std::vector<FileUrl> inView;
    const GridMetrics metrics = GridMetrics::fitting(ContentView::kLeastStage, kInitialGridDimension);
    if (const auto* photos = std::get_if<std::vector<PhotoItem>>(&scan.listing); photos && !photos->empty()) {
      if (folder == url) pictures.decodeAhead(photos->front().url, [](const QImage&) {});
      scan.byName = sortedPositions(*photos, SortOrder::nameAscending);
      if (folder == url) {
        const auto count = static_cast<std::int64_t>(photos->size());
        inView =
            photosInView(*photos, scan.byName, {metrics, kInitialGridDimension, count, ContentView::kLeastStage}, 0);
      }
    }
    scanned->set_value(std::move(scan));
    for (const FileUrl& photo : inView) {
      const auto bound = PhotoThumbnailTile::maxPixelSize(metrics.cellSide);
      startWork([photo, bound] { (void)ThumbnailStore::thumbnail(photo, bound); }, kUrgentWork);
    }
  };
  startWork(work, kUrgentWork);
}

}  // namespace lumagrid
