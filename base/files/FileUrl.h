#pragma once

#include <QByteArray>
#include <QString>

class QUrl;

namespace lumagrid {

// The absolute path of a file or folder, as the bytes that the system uses (a name need not be UTF-8).
// Always clean: absolute, no trailing slash, no empty, "." or ".." components; so two URLs of the same path are equal
// however they were made. Symbolic links are not resolved. Compared whole, byte by byte. A value; any thread.
//
// A byte 0 would end the path for the system alone, and name another file: what holds one names none, and gives an
// empty URL.
class FileUrl {
 public:
  FileUrl() = default;

  // A relative path is taken from the process's working directory. An empty path gives an empty URL.
  [[nodiscard]] static FileUrl fromPath(const QByteArray& path);
  [[nodiscard]] static FileUrl fromPath(const QString& path);

  // The file that a "file" URL of this machine names, with the bytes of names that are not UTF-8; empty for any other.
  [[nodiscard]] static FileUrl fromUrl(const QUrl& url);

  // The "file" URL of this path, percent-encoded, with the bytes of names that are not UTF-8.
  [[nodiscard]] QByteArray encodedUrl() const { return "file://" + m_path.toPercentEncoding("/"); }

  // The file `name` (one component) directly inside `folder`, without cleaning: for names that a listing returned.
  [[nodiscard]] static FileUrl child(const FileUrl& folder, QByteArrayView name);

  [[nodiscard]] bool isEmpty() const { return m_path.isEmpty(); }
  [[nodiscard]] const QByteArray& path() const { return m_path; }

  // The name after the last slash; "/" for the root.
  [[nodiscard]] QByteArrayView lastPathComponent() const;

  // The folder that holds it; the root holds itself.
  [[nodiscard]] FileUrl parent() const;

  // The last path component as text to show (see ShownName.h), whole, or for a sentence or a menu.
  [[nodiscard]] QString displayName() const;
  [[nodiscard]] QString nameInSentence() const;

  friend bool operator==(const FileUrl&, const FileUrl&) = default;

 private:
  QByteArray m_path;
};

}  // namespace lumagrid
