#pragma once

#include <QByteArray>
#include <QString>
#include <variant>
#include <vector>

#include "FileUrl.h"

namespace lumagrid {

struct FolderEntry {
  QByteArray name;
  bool isRegularFile = false;  // false for symbolic links, whatever they lead to
};

// The system's own words for why a folder could not be listed or an entry could not be read.
struct ListingError {
  QString description;
};

// The entries directly inside `folder` whose names `wanted` accepts, in the order in which the system returns them, in
// one read of the folder; hidden entries (a leading dot) are left out, and names are tested before anything is asked of
// an entry. Fails as a whole: a missing folder, no permission, not a folder, an entry that cannot be read. Any thread.
[[nodiscard]] std::variant<std::vector<FolderEntry>, ListingError> contentsOfDirectory(
    const FileUrl& folder, bool (*wanted)(QByteArrayView name));

// The time of the last change of the file's content, in nanoseconds since 1970; kDistantPast when it cannot be read.
inline constexpr std::int64_t kDistantPast = INT64_MIN;
[[nodiscard]] std::int64_t contentModificationDate(const FileUrl& file);

// Whether something exists at the path and is a folder (a symbolic link to one counts). Any thread.
[[nodiscard]] bool isDirectory(const FileUrl& file);

}  // namespace lumagrid
