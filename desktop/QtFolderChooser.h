#pragma once

#include "FolderChooser.h"

namespace lumagrid {

class WidgetPalette;

// The chooser as a file dialog above the active window: the desktop's own where it offers one. Only folders can be
// chosen, none can be made, renamed or deleted in it, and it remembers none for the next run.
class QtFolderChooser final : public FolderChooser {
 public:
  // `palette` outlives the chooser.
  explicit QtFolderChooser(WidgetPalette& palette) : m_palette(palette) {}

  [[nodiscard]] std::optional<FileUrl> chooseFolder(const QString& title, const QString& prompt) override;

 private:
  WidgetPalette& m_palette;
};

}  // namespace lumagrid
