#pragma once

#include "FileUrl.h"

namespace lumagrid {

// Access to a folder that a sandbox grants and counts. This system has none: the default grants nothing, and a folder
// is listed without it. Main thread.
class ScopedAccess {
 public:
  virtual ~ScopedAccess() = default;

  // True when access was granted; each grant is paired with one stop() on the same folder.
  [[nodiscard]] virtual bool start(const FileUrl& folder) { return (void)folder, false; }
  virtual void stop(const FileUrl& folder) { (void)folder; }
};

}  // namespace lumagrid
