#include "DesktopTrash.h"

#include <fcntl.h>
#include <linux/magic.h>
#include <sys/stat.h>
#include <sys/sysmacros.h>
#include <sys/vfs.h>

#include <QStandardPaths>
#include <cerrno>
#include <climits>
#include <cstdlib>

#include "SystemError.h"
#include "TrashFolder.h"

namespace lumagrid {

namespace {

// What a folder is part of, for a rename, which does not lead from one mount to another; nothing when there is no such
// folder. A system that does not number its mounts tells the device.
std::optional<std::uint64_t> mountOf(const FileUrl& folder) {
  struct statx status = {};
  if (::statx(AT_FDCWD, folder.path().constData(), AT_NO_AUTOMOUNT, STATX_MNT_ID, &status) != 0) return std::nullopt;
  if ((status.stx_mask & STATX_MNT_ID) != 0) return status.stx_mnt_id;
  return ::makedev(status.stx_dev_major, status.stx_dev_minor);
}

FileUrl homeTrash() {
  return FileUrl::fromPath(QStandardPaths::writableLocation(QStandardPaths::GenericDataLocation) +
                           QLatin1String("/Trash"));
}

bool isOnMountOf(const FileUrl& trash, const FileUrl& folder) {
  FileUrl existing = trash;
  while (!mountOf(existing)) existing = existing.parent();
  return mountOf(existing) == mountOf(folder);
}

FileUrl withoutLinks(const FileUrl& folder) {
  char buffer[PATH_MAX];
  return ::realpath(folder.path().constData(), buffer) ? FileUrl::fromPath(QByteArray(buffer)) : folder;
}

FileUrl mountPointOf(const FileUrl& folder) {
  FileUrl top = folder;
  while (top != top.parent() && mountOf(top.parent()) == mountOf(folder)) top = top.parent();
  return top;
}

bool isInMemory(const FileDescriptor& folder) {
  struct statfs status = {};
  return ::fstatfs(folder.number(), &status) == 0 && (status.f_type == TMPFS_MAGIC || status.f_type == RAMFS_MAGIC);
}

QString noTrash(const QString& reason) {
  return QStringLiteral("There is no Trash for it (%1)").arg(reason);
}

QString anotherPhoto() {
  return QStringLiteral("It is not the same photo any more");
}

}  // namespace

std::optional<QString> DesktopTrash::trashItem(const FileUrl& file, const FileIdentity& meant) {
  const FileUrl parent = file.parent();
  const QByteArray name = file.lastPathComponent().toByteArray();
  const FileDescriptor folder =
      FileDescriptor::from([&] { return ::open(parent.path().constData(), O_PATH | O_DIRECTORY | O_CLOEXEC); });
  if (!folder.isOpen()) return systemErrorText(errno);
  // Held open, so that no other file can get its number.
  const FileDescriptor photo = FileDescriptor::from(
      [&] { return ::openat(folder.number(), name.constData(), O_PATH | O_NOFOLLOW | O_CLOEXEC); });
  struct stat status = {};
  if (!photo.isOpen() || ::fstat(photo.number(), &status) != 0) return systemErrorText(errno);
  if (!meant.isOfAFile() || FileIdentity(status) != meant) return anotherPhoto();

  const bool isOnHomeMount = isOnMountOf(homeTrash(), parent);
  if (!isOnHomeMount && isInMemory(folder)) return noTrash(QStringLiteral("its file system is kept in memory"));
  const FileUrl realParent = withoutLinks(parent);
  const FileUrl top = mountPointOf(realParent);
  const auto trash = isOnHomeMount ? TrashFolder::at(homeTrash().path()) : TrashFolder::onTop(top.path());
  if (!trash) return noTrash(systemErrorText(errno));
  const QByteArray path = FileUrl::child(realParent, name).path();
  const qsizetype prefixSize = top.path().endsWith('/') ? top.path().size() : top.path().size() + 1;
  if (trash->take({folder, name, photo, isOnHomeMount ? file.path() : path.sliced(prefixSize)})) return std::nullopt;
  return errno == ESTALE ? anotherPhoto() : systemErrorText(errno);
}

}  // namespace lumagrid
