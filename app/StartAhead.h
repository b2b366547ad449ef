#pragma once

#include <future>

#include "FileUrl.h"
#include "PhotoScan.h"

namespace lumagrid {

class PictureStore;

// What the first window of a start with a path shows, made while the toolkit starts: the folder's listing in its order,
// the photo that opens, and the thumbnails of a window that opens with its least size. May be made before there is an
// application object.
class StartAhead {
 public:
  // `pictures` outlives this; the thumbnails may still be under way when this is gone.
  StartAhead(const FileUrl& url, PictureStore& pictures);
  StartAhead(const StartAhead&) = delete;
  StartAhead& operator=(const StartAhead&) = delete;
  ~StartAhead() {
    if (m_scan.valid()) m_scan.wait();
  }

  // Of the folder that a window opens for the path. Waits for it; once.
  [[nodiscard]] FolderScan takeScan() { return m_scan.get(); }

 private:
  std::future<FolderScan> m_scan;
};

}  // namespace lumagrid
