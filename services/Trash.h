#pragma once

#include <QString>
#include <optional>

#include "FileIdentity.h"
#include "FileUrl.h"

namespace lumagrid {

// The desktop's Trash: what is moved there can be restored by the file manager. Main thread; synchronous.
class Trash {
 public:
  virtual ~Trash() = default;

  // Moves the file `meant`, which stands at `file`, to the Trash of its file system. Nothing on success; otherwise the
  // reason in a few words for people, without the path, and the file is untouched. Whatever else stands there by now is
  // untouched too. Never deletes and never copies.
  [[nodiscard]] virtual std::optional<QString> trashItem(const FileUrl& file, const FileIdentity& meant) = 0;
};

}  // namespace lumagrid
