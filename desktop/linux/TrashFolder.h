#pragma once

#include <QByteArray>
#include <optional>

#include "FileDescriptor.h"

namespace lumagrid {

// One Trash of this user's, as the freedesktop.org convention (1.0) lays it out: files/ holds what was moved, under a
// name of its own, and info/ a record for each, with the path that it came from and the time. The record is written
// first, whole, or nothing is moved.
//
// Whatever fails leaves its reason in errno. Main thread.
class TrashFolder {
 public:
  // What is to be moved.
  struct Item {
    const FileDescriptor& folder;  // that holds it
    QByteArray name;
    const FileDescriptor& file;  // itself, opened without following a link
    QByteArray origin;           // the path for the record
  };

  // The Trash at `path`, which is made with the folders above it where it is missing.
  [[nodiscard]] static std::optional<TrashFolder> at(const QByteArray& path);
  // The Trash on top of a file system: .Trash/UID where an administrator has made a .Trash for all users, else
  // .Trash-UID. A path in its records is relative to `top`.
  [[nodiscard]] static std::optional<TrashFolder> onTop(const QByteArray& top);

  // True when the item has moved. ESTALE: another file bore its name, and still does.
  [[nodiscard]] bool take(const Item& item) const;

 private:
  TrashFolder(FileDescriptor files, FileDescriptor records);
  [[nodiscard]] static std::optional<TrashFolder> within(const FileDescriptor& folder);
  [[nodiscard]] bool write(const QByteArray& recordName, const QByteArray& record) const;

  FileDescriptor m_files;
  FileDescriptor m_records;
};

}  // namespace lumagrid
