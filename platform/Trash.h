#pragma once

#include <QString>
#include <optional>

#include "FileUrl.h"

namespace lumagrid {

// The desktop's Trash: what is moved there can be restored by the file manager. Main thread; synchronous.
class Trash {
 public:
  virtual ~Trash() = default;

  // Moves one file to the Trash of its file system. Nothing on success; otherwise the system's reason, for people, and
  // the file is untouched. Never deletes and never copies.
  [[nodiscard]] virtual std::optional<QString> trashItem(const FileUrl& file) = 0;
};

}  // namespace lumagrid
