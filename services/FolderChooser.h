#pragma once

#include <QString>
#include <optional>

#include "FileUrl.h"

namespace lumagrid {

// The desktop's modal chooser for one existing folder. Main thread; runs a nested event loop until it is answered.
class FolderChooser {
 public:
  virtual ~FolderChooser() = default;

  // The folder that was confirmed; nothing when the chooser was canceled.
  [[nodiscard]] virtual std::optional<FileUrl> chooseFolder(const QString& title, const QString& prompt) = 0;
};

}  // namespace lumagrid
