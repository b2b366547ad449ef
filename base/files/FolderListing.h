#pragma once

#include <QByteArray>
#include <QString>
#include <functional>
#include <optional>

#include "FileUrl.h"

namespace lumagrid {

// The system's own words for why a folder could not be listed or an entry could not be read.
struct ListingError {
  QString description;
};

// Calls `visit` with the name of each entry directly inside `folder` that `wanted` accepts, and whether it is a regular
// file (a symbolic link is not, whatever it leads to), in the order in which the system returns them, in one read of
// the folder. Hidden entries (a leading dot) are left out, and names are tested before anything is asked of an entry.
// Fails for a missing folder, no permission, not a folder, or an entry that cannot be read. Any thread.
[[nodiscard]] std::optional<ListingError> visitDirectory(
    const FileUrl& folder, bool (*wanted)(QByteArrayView name),
    const std::function<void(QByteArrayView name, bool isRegularFile)>& visit);

// The time of the last change of the file's content, in nanoseconds since 1970; kDistantPast when it cannot be read.
inline constexpr std::int64_t kDistantPast = INT64_MIN;
[[nodiscard]] std::int64_t contentModificationDate(const FileUrl& file);

// Whether something exists at the path and is a folder (a symbolic link to one counts). Any thread.
[[nodiscard]] bool isDirectory(const FileUrl& file);

// Whether a regular file stands at the path itself (a symbolic link is not followed). Any thread.
[[nodiscard]] bool isRegularFile(const FileUrl& file);

// Whether something stands at the path itself that is neither a regular file nor leads to a folder. Any thread.
[[nodiscard]] bool isSpecialFile(const FileUrl& file);

// The regular file that a symbolic link leads to; of anything else, itself. Any thread.
[[nodiscard]] FileUrl withoutLink(const FileUrl& file);

}  // namespace lumagrid
