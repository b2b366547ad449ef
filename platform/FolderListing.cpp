#include "FolderListing.h"

#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <optional>
#include <system_error>

namespace lumagrid {

namespace {

// Few system calls for a folder of a million entries, and still a size that a thread's stack bears.
constexpr std::size_t kBufferBytes = 256 * 1024;

class OpenFolder {
 public:
  explicit OpenFolder(const QByteArray& path) {
    do {
      m_descriptor = ::open(path.constData(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    } while (m_descriptor < 0 && errno == EINTR);
  }
  ~OpenFolder() {
    if (m_descriptor >= 0) ::close(m_descriptor);
  }
  Q_DISABLE_COPY_MOVE(OpenFolder)

  [[nodiscard]] int descriptor() const { return m_descriptor; }

 private:
  int m_descriptor = -1;
};

ListingError lastError() {
  return {QString::fromLocal8Bit(std::generic_category().message(errno).c_str())};
}

// Nothing when the entry cannot be read; errno then says why.
std::optional<bool> isRegularEntry(int folder, const dirent64& entry) {
  if (entry.d_type != DT_UNKNOWN) return entry.d_type == DT_REG;
  struct stat status = {};  // some file systems do not tell the type in the listing
  if (::fstatat(folder, entry.d_name, &status, AT_SYMLINK_NOFOLLOW) != 0) return std::nullopt;
  return S_ISREG(status.st_mode);
}

}  // namespace

std::optional<ListingError> visitDirectory(const FileUrl& folder, bool (*wanted)(QByteArrayView name),
                                           const std::function<void(QByteArrayView name, bool isRegularFile)>& visit) {
  const OpenFolder opened(folder.path());
  if (opened.descriptor() < 0) return lastError();

  alignas(dirent64) std::array<char, kBufferBytes> buffer;
  for (;;) {
    const auto bytes = ::getdents64(opened.descriptor(), buffer.data(), buffer.size());
    if (bytes < 0) return lastError();
    if (bytes == 0) return std::nullopt;
    for (auto offset = decltype(bytes){0}; offset < bytes;) {
      const auto& entry = *reinterpret_cast<const dirent64*>(buffer.data() + offset);
      offset += entry.d_reclen;
      const QByteArrayView name(entry.d_name);
      if (name.startsWith('.') || !wanted(name)) continue;
      const std::optional<bool> regular = isRegularEntry(opened.descriptor(), entry);
      if (!regular) return lastError();
      visit(name, *regular);
    }
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

}  // namespace lumagrid
