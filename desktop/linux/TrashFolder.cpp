#include "TrashFolder.h"

#include <fcntl.h>
#include <sys/stat.h>

#include <QDateTime>
#include <algorithm>
#include <cerrno>
#include <climits>
#include <cstdio>

namespace lumagrid {

namespace {

constexpr QByteArrayView kRecordSuffix(".trashinfo");

FileDescriptor openFolder(int parent, const QByteArray& name, int flags = 0) {
  return FileDescriptor::from(
      [&] { return ::openat(parent, name.constData(), O_RDONLY | O_DIRECTORY | O_CLOEXEC | flags); });
}

bool makeFolder(int parent, const QByteArray& name) {
  return ::mkdirat(parent, name.constData(), S_IRWXU) == 0 || errno == EEXIST;
}

bool makeFolders(const QByteArray& path) {
  const auto parent = path.lastIndexOf('/');
  if (makeFolder(AT_FDCWD, path)) return true;
  return errno == ENOENT && parent > 0 && makeFolders(path.first(parent)) && makeFolder(AT_FDCWD, path);
}

// For a folder in a place where others can write too: neither a link nor somebody else's.
FileDescriptor openOwnFolder(const FileDescriptor& parent, const QByteArray& name) {
  return FileDescriptor::from([&] {
    if (!makeFolder(parent.number(), name)) return -1;
    struct stat status = {};
    const int folder = ::openat(parent.number(), name.constData(), O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC);
    if (folder < 0 || (::fstat(folder, &status) == 0 && status.st_uid == ::geteuid())) return folder;
    ::close(folder);
    errno = EPERM;
    return -1;
  });
}

bool isSticky(const FileDescriptor& folder) {
  struct stat status = {};
  return ::fstat(folder.number(), &status) == 0 && (status.st_mode & S_ISVTX) != 0;
}

// The first has the file's own name, the others a number before the extension. The record's name has to fit as well, so
// a long name loses the end of its stem, but no part of a UTF-8 character: some file systems take no other names.
QByteArray nameInTrash(const QByteArray& name, int copy) {
  constexpr qsizetype kRoom = NAME_MAX - kRecordSuffix.size();
  const qsizetype dot = name.lastIndexOf('.');
  const QByteArray end =
      (copy > 1 ? '.' + QByteArray::number(copy) : QByteArray()) + (dot > 0 ? name.sliced(dot) : QByteArray());
  QByteArray stem = dot > 0 ? name.first(dot) : name;
  if (stem.size() + end.size() > kRoom) {
    qsizetype size = std::max<qsizetype>(0, kRoom - end.size());
    while (size > 0 && (static_cast<unsigned char>(stem[size]) & 0xC0U) == 0x80U) --size;
    stem.truncate(size);
  }
  return stem + end;
}

// Some file systems cannot rename without replacing. Who keeps to the convention takes no name that a record claims, so
// there a look before is enough.
bool renameWithoutReplacing(int fromFolder, const QByteArray& from, int toFolder, const QByteArray& to) {
  if (::renameat2(fromFolder, from.constData(), toFolder, to.constData(), RENAME_NOREPLACE) == 0) return true;
  if (errno != EINVAL && errno != ENOSYS) return false;
  struct stat status = {};
  if (::fstatat(toFolder, to.constData(), &status, AT_SYMLINK_NOFOLLOW) == 0) {
    errno = EEXIST;
    return false;
  }
  return ::renameat(fromFolder, from.constData(), toFolder, to.constData()) == 0;
}

bool isAt(const FileDescriptor& folder, const QByteArray& name, const FileDescriptor& file) {
  struct stat there = {};
  struct stat opened = {};
  return ::fstatat(folder.number(), name.constData(), &there, AT_SYMLINK_NOFOLLOW) == 0 &&
         ::fstat(file.number(), &opened) == 0 && there.st_dev == opened.st_dev && there.st_ino == opened.st_ino;
}

void unlinkKeepingError(const FileDescriptor& folder, const QByteArray& name) {
  const int error = errno;
  ::unlinkat(folder.number(), name.constData(), 0);
  errno = error;
}

}  // namespace

TrashFolder::TrashFolder(FileDescriptor files, FileDescriptor records)
    : m_files(std::move(files)), m_records(std::move(records)) {}

std::optional<TrashFolder> TrashFolder::at(const QByteArray& path) {
  if (!makeFolders(path)) return std::nullopt;
  const FileDescriptor folder = openFolder(AT_FDCWD, path);
  return folder.isOpen() ? within(folder) : std::nullopt;
}

std::optional<TrashFolder> TrashFolder::onTop(const QByteArray& top) {
  const FileDescriptor topFolder = openFolder(AT_FDCWD, top);
  if (!topFolder.isOpen()) return std::nullopt;
  const QByteArray user = QByteArray::number(::geteuid());
  if (const FileDescriptor shared = openFolder(topFolder.number(), ".Trash", O_NOFOLLOW);
      shared.isOpen() && isSticky(shared)) {
    if (const FileDescriptor own = openOwnFolder(shared, user); own.isOpen()) {
      if (auto trash = within(own)) return trash;
    }
  }
  const FileDescriptor own = openOwnFolder(topFolder, ".Trash-" + user);
  return own.isOpen() ? within(own) : std::nullopt;
}

std::optional<TrashFolder> TrashFolder::within(const FileDescriptor& folder) {
  if (!makeFolder(folder.number(), "files") || !makeFolder(folder.number(), "info")) return std::nullopt;
  FileDescriptor files = openFolder(folder.number(), "files");
  if (!files.isOpen()) return std::nullopt;
  FileDescriptor records = openFolder(folder.number(), "info");
  if (!records.isOpen()) return std::nullopt;
  return TrashFolder(std::move(files), std::move(records));
}

bool TrashFolder::take(const Item& item) const {
  const QByteArray record = "[Trash Info]\nPath=" + item.origin.toPercentEncoding("/") +
                            "\nDeletionDate=" + QDateTime::currentDateTime().toString(Qt::ISODate).toLatin1() + '\n';
  for (int copy = 1;; ++copy) {
    const QByteArray name = nameInTrash(item.name, copy);
    const QByteArray recordName = name + kRecordSuffix.toByteArray();
    if (write(recordName, record)) {
      if (renameWithoutReplacing(item.folder.number(), item.name, m_files.number(), name)) {
        if (isAt(m_files, name, item.file)) return true;
        // Another file had got the name since it was looked at. Where it cannot go back, it keeps the record.
        if (renameWithoutReplacing(m_files.number(), name, item.folder.number(), item.name)) {
          ::unlinkat(m_records.number(), recordName.constData(), 0);
        }
        errno = ESTALE;
        return false;
      }
      unlinkKeepingError(m_records, recordName);
    }
    if (errno != EEXIST) return false;
  }
}

bool TrashFolder::write(const QByteArray& recordName, const QByteArray& record) const {
  FileDescriptor file = FileDescriptor::from([&] {
    return ::openat(m_records.number(), recordName.constData(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC,
                    S_IRUSR | S_IWUSR);
  });
  if (!file.isOpen()) return false;
  qsizetype written = 0;
  while (written < record.size()) {
    const auto count =
        ::write(file.number(), record.constData() + written, static_cast<std::size_t>(record.size() - written));
    if (count < 0 && errno == EINTR) continue;
    if (count < 0) break;
    written += count;
  }
  if (written == record.size() && file.close()) return true;
  unlinkKeepingError(m_records, recordName);
  return false;
}

}  // namespace lumagrid
