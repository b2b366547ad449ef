#pragma once

#include <grp.h>
#include <sys/stat.h>
#include <unistd.h>

#include <QDirIterator>
#include <QFile>
#include <QTemporaryDir>
#include <filesystem>
#include <fstream>
#include <optional>

// A home folder for one test program, made before anything has read where the home is. A program started by root goes
// on as nobody, because root passes every permission test, unless it writes elsewhere.
class TemporaryHome {
 public:
  enum class User { notRoot, same };

  explicit TemporaryHome(User user = User::notRoot) {
    if (!m_folder.isValid()) qFatal("No temporary folder");
    if (user == User::notRoot && ::geteuid() == 0) {
      giveToNobody(path());
      if (::setgroups(0, nullptr) != 0 || ::setgid(kNobody) != 0 || ::setuid(kNobody) != 0) {
        qFatal("Cannot drop privileges");
      }
    }
    qputenv("HOME", path());
    qputenv("XDG_DATA_HOME", path() + "/data");
    qputenv("XDG_CONFIG_HOME", path() + "/config");
    qputenv("XDG_CACHE_HOME", path() + "/cache");
    qunsetenv("XDG_RUNTIME_DIR");
    qunsetenv("DBUS_SESSION_BUS_ADDRESS");
  }
  // QTemporaryDir would leave a folder with names that are not UTF-8.
  ~TemporaryHome() {
    std::error_code ignored;
    std::filesystem::remove_all(path().toStdString(), ignored);
  }
  Q_DISABLE_COPY_MOVE(TemporaryHome)

  // For root alone.
  static void giveToNobody(const QByteArray& path) {
    if (::chown(path.constData(), kNobody, kNobody) != 0) qFatal("Cannot change an owner");
  }

  [[nodiscard]] QByteArray path() const { return QFile::encodeName(m_folder.path()); }

 private:
  static constexpr uid_t kNobody = 65534;

  QTemporaryDir m_folder;
};

// Creates or replaces a file by its bytes, which need not be UTF-8.
inline bool writeFile(const QByteArray& path, const QByteArray& content) {
  std::ofstream file(path.constData(), std::ios::binary);
  return bool(file.write(content.constData(), content.size()).flush());
}

// Nothing when there is no such file.
inline std::optional<QByteArray> readFile(const QByteArray& path) {
  std::ifstream file(path.constData(), std::ios::binary);
  if (!file) return std::nullopt;
  return QByteArray::fromStdString(std::string(std::istreambuf_iterator<char>(file), {}));
}

// The paths of all that is no folder, at any depth.
inline QStringList filesBelow(const QByteArray& folder) {
  QStringList files;
  constexpr auto kFiles = QDir::Files | QDir::Hidden | QDir::System;
  QDirIterator each(QFile::decodeName(folder), kFiles, QDirIterator::Subdirectories);
  while (each.hasNext()) files.append(each.next());
  return files;
}
