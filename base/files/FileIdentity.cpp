#include "FileIdentity.h"

#include <sys/stat.h>

namespace lumagrid {

FileIdentity::FileIdentity(const struct stat& status) {
  if (!S_ISREG(status.st_mode)) return;
  m_device = status.st_dev;
  m_inode = status.st_ino;
  m_size = status.st_size;
  m_seconds = status.st_mtim.tv_sec;
  m_nanoseconds = status.st_mtim.tv_nsec;
}

FileIdentity FileIdentity::of(const FileUrl& file) {
  struct stat status = {};
  return ::lstat(file.path().constData(), &status) == 0 ? FileIdentity(status) : FileIdentity();
}

}  // namespace lumagrid
