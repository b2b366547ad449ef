#include "RegularFile.h"

#include <fcntl.h>
#include <sys/stat.h>

namespace lumagrid {

FileDescriptor openRegularFile(const FileUrl& file, struct stat& status) {
  const auto failed = [](int reason) {
    return FileDescriptor::from([reason] {
      errno = reason;
      return -1;
    });
  };
  if (file.isEmpty()) return failed(ENOENT);
  FileDescriptor opened =
      FileDescriptor::from([&] { return ::open(file.path().constData(), O_RDONLY | O_NONBLOCK | O_CLOEXEC); });
  if (!opened.isOpen()) return opened;
  if (::fstat(opened.number(), &status) != 0) return failed(errno);
  return S_ISREG(status.st_mode) ? std::move(opened) : failed(EINVAL);
}

}  // namespace lumagrid
