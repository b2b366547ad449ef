#pragma once

#include "Trash.h"

namespace lumagrid {

// The Trash as freedesktop.org lays it out: the file is renamed into the Trash of its own file system, next to a record
// of its path and of the time. That is the home's Trash for what lies on the same file system, and one on top of the
// file system for the rest. What is kept in memory alone has none, since no file manager would look there.
class DesktopTrash final : public Trash {
 public:
  [[nodiscard]] std::optional<QString> trashItem(const FileUrl& file, const FileIdentity& meant) override;
};

}  // namespace lumagrid
