#pragma once

#include "Trash.h"

namespace lumagrid {

// The Trash as freedesktop.org lays it out: the file is renamed into the Trash of its own file system, next to a record
// of its path and of the time. A file system without one, and names that leave no room for the record's suffix, are
// refused.
class GioTrash final : public Trash {
 public:
  [[nodiscard]] std::optional<QString> trashItem(const FileUrl& file) override;
};

}  // namespace lumagrid
