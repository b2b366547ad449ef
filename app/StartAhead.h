#pragma once

#include <future>
#include <thread>

#include "FileUrl.h"
#include "PhotoScan.h"

namespace lumagrid {

class PictureStore;

// What the first window of a start with a path shows, made while the toolkit starts: the folder's listing in its order,
// the photo that opens, and the thumbnails of a window that opens with its least size. May be made before there is an
// application object.
class StartAhead {
 public:
  // `pictures` outlives this.
  StartAhead(const FileUrl& url, PictureStore& pictures);

  // Of the folder that a window opens for the path. Waits for it; once.
  [[nodiscard]] FolderScan takeScan() { return m_scan.get_future().get(); }

 private:
  std::promise<FolderScan> m_scan;
  std::jthread m_thread;  // last: it ends, after the thumbnails under way, before the promise goes
};

}  // namespace lumagrid
