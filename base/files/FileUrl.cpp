#include "FileUrl.h"

#include <unistd.h>

#include <QFile>
#include <QList>
#include <QUrl>
#include <algorithm>
#include <climits>
#include <cstdlib>

#include "ShownName.h"

namespace lumagrid {

namespace {

QByteArray workingDirectory() {
  char buffer[PATH_MAX];
  const char* directory = ::getcwd(buffer, sizeof buffer);
  return directory ? QByteArray(directory) : QByteArray("/");
}

// Where ".." follows a symbolic link, only the system knows what it means.
QByteArray resolvedParents(const QByteArray& path) {
  char buffer[PATH_MAX];
  return ::realpath(path.constData(), buffer) ? QByteArray(buffer) : path;
}

}  // namespace

FileUrl FileUrl::fromPath(const QByteArray& path) {
  FileUrl url;
  if (path.isEmpty() || path.contains('\0')) return url;
  QByteArray absolute = path.startsWith('/') ? path : workingDirectory() + '/' + path;
  if (absolute.contains("/../") || absolute.endsWith("/..")) absolute = resolvedParents(absolute);
  QList<QByteArray> components;
  for (const QByteArray& component : absolute.split('/')) {
    if (component.isEmpty() || component == ".") continue;
    if (component == "..") {
      if (!components.isEmpty()) components.removeLast();
    } else {
      components.append(component);
    }
  }
  url.m_path = '/' + components.join('/');
  return url;
}

FileUrl FileUrl::fromPath(const QString& path) {
  return fromPath(QFile::encodeName(path));
}

FileUrl FileUrl::fromUrl(const QUrl& url) {
  const QString host = url.host();
  if (!url.isLocalFile() || !(host.isEmpty() || host == QLatin1String("localhost"))) return {};
  // The encoded form alone keeps all bytes.
  const QByteArray path = QByteArray::fromPercentEncoding(url.path(QUrl::FullyEncoded).toLatin1());
  return path.startsWith('/') ? fromPath(path) : FileUrl();
}

FileUrl FileUrl::child(const FileUrl& folder, QByteArrayView name) {
  FileUrl url;
  const qsizetype folderSize = folder.m_path.endsWith('/') ? folder.m_path.size() - 1 : folder.m_path.size();
  url.m_path = QByteArray(folderSize + 1 + name.size(), Qt::Uninitialized);
  char* const bytes = url.m_path.data();
  std::copy_n(folder.m_path.constData(), folderSize, bytes);
  bytes[folderSize] = '/';
  std::copy_n(name.data(), name.size(), bytes + folderSize + 1);
  return url;
}

QByteArrayView FileUrl::lastPathComponent() const {
  if (m_path.size() <= 1) return m_path;
  return QByteArrayView(m_path).sliced(m_path.lastIndexOf('/') + 1);
}

FileUrl FileUrl::parent() const {
  FileUrl url;
  if (!m_path.isEmpty()) url.m_path = m_path.first(std::max<qsizetype>(1, m_path.lastIndexOf('/')));
  return url;
}

QString FileUrl::displayName() const {
  return shownName(QString::fromUtf8(lastPathComponent()));
}

QString FileUrl::nameInSentence() const {
  return shownNameInSentence(QString::fromUtf8(lastPathComponent()));
}

}  // namespace lumagrid
