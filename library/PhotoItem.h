#pragma once

#include <QString>

#include "FileUrl.h"

namespace lumagrid {

// One image file, directly inside the open folder. Nothing about a photo is kept but its URL.
struct PhotoItem {
  FileUrl url;

  // The identity of a photo within its folder.
  [[nodiscard]] const QByteArray& id() const { return url.path(); }
  [[nodiscard]] QString displayName() const { return url.displayName(); }

  friend bool operator==(const PhotoItem&, const PhotoItem&) = default;
};

}  // namespace lumagrid
