#include "FolderListing.h"

#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>

#include <cerrno>
#include <climits>
#include <cstdlib>
#include <memory>
#include <optional>

#include "SystemError.h"

namespace lumagrid {

namespace {

struct CloseFolder {
  void operator()(DIR* folder) const { ::closedir(folder); }
};

ListingError lastError() {
  return {systemErrorText(errno)};
}

// Nothing when the entry cannot be read; errno then says why.
std::optional<bool> isRegularEntry(int folder, const dirent& entry) {
  if (entry.d_type != DT_UNKNOWN) return entry.d_type == DT_REG;
  struct stat status = {};  // some file systems do not tell the type in the listing
  if (::fstatat(folder, entry.d_name, &status, AT_SYMLINK_NOFOLLOW) != 0) return std::nullopt;
  return S_ISREG(status.st_mode);
}

}  // namespace

std::optional<ListingError> visitDirectory(const FileUrl& folder, bool (*wanted)(QByteArrayView name),
                                           const std::function<void(QByteArrayView name, bool isRegularFile)>& visit) {
  const std::unique_ptr<DIR, CloseFolder> opened(::opendir(folder.path().constData()));
  if (!opened) return lastError();
  for (;;) {
    errno = 0;  // the end of the folder and an error look the same otherwise
    const dirent* const entry = ::readdir(opened.get());
    if (!entry) return errno == 0 ? std::nullopt : std::optional(lastError());
    // Longer than the member's declared size where a file system counts its names in other units than bytes.
    const QByteArrayView name(static_cast<const char*>(entry->d_name));
    if (name.startsWith('.') || !wanted(name)) continue;
    const std::optional<bool> regular = isRegularEntry(::dirfd(opened.get()), *entry);
    if (!regular) return lastError();
    visit(name, *regular);
  }
}

std::int64_t contentModificationDate(const FileUrl& file) {
  constexpr std::int64_t kNanosecondsPerSecond = 1'000'000'000;
  // The link's own date, as an entry of a listing is never followed either.
  struct stat status = {};
  if (::fstatat(AT_FDCWD, file.path().constData(), &status, AT_SYMLINK_NOFOLLOW) != 0) return kDistantPast;
  std::int64_t date = 0;
  if (__builtin_mul_overflow(std::int64_t{status.st_mtim.tv_sec}, kNanosecondsPerSecond, &date) ||
      __builtin_add_overflow(date, std::int64_t{status.st_mtim.tv_nsec}, &date)) {
    return status.st_mtim.tv_sec < 0 ? kDistantPast + 1 : INT64_MAX;
  }
  return date;
}

bool isDirectory(const FileUrl& file) {
  struct stat status = {};
  return ::stat(file.path().constData(), &status) == 0 && S_ISDIR(status.st_mode);
}

bool isRegularFile(const FileUrl& file) {
  struct stat status = {};
  return ::lstat(file.path().constData(), &status) == 0 && S_ISREG(status.st_mode);
}

bool isSpecialFile(const FileUrl& file) {
  struct stat status = {};
  return ::lstat(file.path().constData(), &status) == 0 && !S_ISREG(status.st_mode) && !isDirectory(file);
}

FileUrl withoutLink(const FileUrl& file) {
  char buffer[PATH_MAX];
  struct stat status = {};
  const bool leadsToFile = !isRegularFile(file) && ::stat(file.path().constData(), &status) == 0 &&
                           S_ISREG(status.st_mode) && ::realpath(file.path().constData(), buffer);
  return leadsToFile ? FileUrl::fromPath(QByteArray(buffer)) : file;
}

}  // namespace lumagrid
