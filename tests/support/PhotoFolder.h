#pragma once

#include <fcntl.h>
#include <sys/stat.h>

#include <QBuffer>
#include <QDir>
#include <QFile>
#include <QImage>
#include <QTemporaryDir>

#include "FileUrl.h"
#include "PhotoLibrary.h"

namespace lumagrid {

// The bytes of a picture, as lossless as its format is.
inline QByteArray pictureFile(const QImage& image, const char* format = "PNG") {
  QByteArray bytes;
  QBuffer buffer(&bytes);
  buffer.open(QIODevice::WriteOnly);
  if (!image.save(&buffer, format, 100)) qFatal("Cannot write a picture");
  return bytes;
}

// … of one color.
inline QByteArray samplePhoto(QSize size, const QColor& color = Qt::darkCyan, const char* format = "PNG") {
  QImage image(size, QImage::Format_ARGB32);
  image.fill(color);
  return pictureFile(image, format);
}

// A folder of files, made for a test and gone with it.
class PhotoFolder {
 public:
  explicit PhotoFolder(const QStringList& names = {}) {
    if (!m_folder.isValid()) qFatal("No temporary folder");
    for (const QString& name : names) (void)add(name);
  }

  FileUrl add(const QString& name, const QByteArray& content = {}) const {
    QFile file(m_folder.filePath(name));
    if (!file.open(QIODevice::WriteOnly) || file.write(content) != content.size()) qFatal("Cannot write a file");
    return url(name);
  }
  FileUrl addFolder(const QString& name) const {
    if (!QDir(m_folder.path()).mkpath(name)) qFatal("Cannot make a folder");
    return url(name);
  }
  // When the content of a file changed last, in seconds since 1970.
  void setDate(const QString& name, time_t seconds) const {
    const timespec times[] = {{seconds, 0}, {seconds, 0}};
    if (::utimensat(AT_FDCWD, url(name).path().constData(), times, 0) != 0) qFatal("Cannot set a date");
  }

  [[nodiscard]] FileUrl url() const { return FileUrl::fromPath(m_folder.path()); }
  [[nodiscard]] FileUrl url(const QString& name) const { return FileUrl::fromPath(m_folder.filePath(name)); }

  // The names in the order in which the system lists them.
  [[nodiscard]] QStringList listed() const {
    return QDir(m_folder.path()).entryList(QDir::AllEntries | QDir::NoDotAndDotDot, QDir::Unsorted);
  }

 private:
  QTemporaryDir m_folder;
};

// "0.jpg", "1.jpg", …: sorted by name, each stands at the index of its number.
inline QStringList numberedNames(int count) {
  QStringList names;
  for (int number = 0; number < count; ++number) names.append(QString::number(number) + QStringLiteral(".jpg"));
  return names;
}

inline QStringList namesOf(const std::vector<PhotoItem>& photos) {
  QStringList names;
  for (const PhotoItem& photo : photos) names.append(photo.displayName());
  return names;
}

}  // namespace lumagrid
