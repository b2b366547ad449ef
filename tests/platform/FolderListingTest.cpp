#include "FolderListing.h"

#include <fcntl.h>

#include <QTest>
#include <algorithm>
#include <cerrno>
#include <cstring>
#include <variant>
#include <vector>

#include "TemporaryHome.h"

using namespace lumagrid;

namespace {

bool isJpeg(QByteArrayView name) {
  return name.endsWith(".jpg");
}
bool isAnything(QByteArrayView) {
  return true;
}

struct FolderEntry {
  QByteArray name;
  bool isRegularFile;
};

std::variant<std::vector<FolderEntry>, ListingError> contentsOfDirectory(const FileUrl& folder,
                                                                         bool (*wanted)(QByteArrayView name)) {
  std::vector<FolderEntry> entries;
  auto error = visitDirectory(folder, wanted, [&](QByteArrayView name, bool isRegularFile) {
    entries.push_back({name.toByteArray(), isRegularFile});
    return Visit::goOn;
  });
  if (error) return *error;
  return entries;
}

}  // namespace

class FolderListingTest : public QObject {
  Q_OBJECT

 private Q_SLOTS:
  void tellsRegularFilesFromTheRest();
  void failsAsAWhole_data();
  void failsAsAWhole();
  void listsEveryEntryOfALargeFolderOnce();
  void anEmptyFolderIsNoError();
  void tellsTheDateOfTheContent();

 private:
  [[nodiscard]] QByteArray newFolder(const char* name) const {
    const QByteArray folder = qgetenv("HOME") + '/' + name;
    ::mkdir(folder.constData(), 0755);
    return folder;
  }
};

void FolderListingTest::tellsRegularFilesFromTheRest() {
  const QByteArray folder = newFolder("mixed");
  QVERIFY(writeFile(folder + "/photo.jpg", "x"));
  QVERIFY(writeFile(folder + "/caf\xE9.jpg", "x"));  // Latin-1
  QVERIFY(writeFile(folder + "/.hidden.jpg", "x"));
  QVERIFY(writeFile(folder + "/notes.txt", "x"));
  QCOMPARE(::mkdir((folder + "/album.jpg").constData(), 0755), 0);
  QVERIFY(writeFile(folder + "/album.jpg/inside.jpg", "x"));
  QCOMPARE(::mkfifo((folder + "/fifo.jpg").constData(), 0644), 0);
  QCOMPARE(::symlink("photo.jpg", (folder + "/link.jpg").constData()), 0);
  QCOMPARE(::symlink("nowhere", (folder + "/broken.jpg").constData()), 0);

  const auto listed = contentsOfDirectory(FileUrl::fromPath(folder), isJpeg);
  QVERIFY(std::holds_alternative<std::vector<FolderEntry>>(listed));
  QMap<QByteArray, bool> found;
  for (const FolderEntry& entry : std::get<std::vector<FolderEntry>>(listed)) found[entry.name] = entry.isRegularFile;
  const QMap<QByteArray, bool> expected = {{"photo.jpg", true}, {"caf\xE9.jpg", true}, {"album.jpg", false},
                                           {"fifo.jpg", false}, {"link.jpg", false},   {"broken.jpg", false}};
  QCOMPARE(found, expected);
}

void FolderListingTest::failsAsAWhole_data() {
  const QByteArray home = qgetenv("HOME");
  QTest::addColumn<QByteArray>("folder");
  QTest::addColumn<int>("error");
  QTest::newRow("a missing folder") << home + "/missing" << ENOENT;
  QTest::newRow("a file") << home + "/file" << ENOTDIR;
  QTest::newRow("a FIFO, without waiting for a writer") << home + "/fifo" << ENOTDIR;
  QTest::newRow("a folder without permission") << home + "/locked" << EACCES;
  QTest::newRow("a folder inside a folder without permission") << home + "/locked/inside" << EACCES;
  QTest::newRow("a link that leads to itself") << home + "/loop" << ELOOP;
  QTest::newRow("no folder at all") << QByteArray() << ENOENT;
  QVERIFY(writeFile(home + "/file", "x"));
  ::mkfifo((home + "/fifo").constData(), 0644);
  ::mkdir((home + "/locked").constData(), 0000);
  QCOMPARE(::symlink("loop", (home + "/loop").constData()), 0);
}

void FolderListingTest::failsAsAWhole() {
  QFETCH(QByteArray, folder);
  QFETCH(int, error);
  const auto listed = contentsOfDirectory(FileUrl::fromPath(folder), isAnything);
  QVERIFY(std::holds_alternative<ListingError>(listed));
  QCOMPARE(std::get<ListingError>(listed).description, QString::fromLocal8Bit(std::strerror(error)));
}

void FolderListingTest::listsEveryEntryOfALargeFolderOnce() {
  constexpr int kEntries = 20'000;  // several fills of any sensible buffer
  const QByteArray folder = newFolder("large");
  for (int number = 0; number < kEntries; ++number) {
    const QByteArray path = folder + "/a rather long name of a photo " + QByteArray::number(number) + ".jpg";
    QCOMPARE(::mknod(path.constData(), S_IFREG | 0644, 0), 0);
  }
  const auto listed = contentsOfDirectory(FileUrl::fromPath(folder), isJpeg);
  QVERIFY(std::holds_alternative<std::vector<FolderEntry>>(listed));
  QSet<QByteArray> names;
  for (const FolderEntry& entry : std::get<std::vector<FolderEntry>>(listed)) {
    QVERIFY(entry.isRegularFile);
    names.insert(entry.name);
  }
  QCOMPARE(names.size(), kEntries);
  QCOMPARE(std::get<std::vector<FolderEntry>>(listed).size(), std::size_t(kEntries));
}

void FolderListingTest::anEmptyFolderIsNoError() {
  const auto listed = contentsOfDirectory(FileUrl::fromPath(newFolder("empty")), isAnything);
  QVERIFY(std::holds_alternative<std::vector<FolderEntry>>(listed));
  QVERIFY(std::get<std::vector<FolderEntry>>(listed).empty());
}

void FolderListingTest::tellsTheDateOfTheContent() {
  const QByteArray path = newFolder("dates") + "/photo.jpg";
  QVERIFY(writeFile(path, "x"));
  const auto dateAfterSetting = [&path](timespec modified) {
    const timespec times[] = {{.tv_sec = 1, .tv_nsec = 0}, modified};
    ::utimensat(AT_FDCWD, path.constData(), times, 0);
    return contentModificationDate(FileUrl::fromPath(path));
  };
  QCOMPARE(dateAfterSetting({.tv_sec = 1'700'000'000, .tv_nsec = 5}), 1'700'000'000'000'000'005);
  QCOMPARE(dateAfterSetting({.tv_sec = -1, .tv_nsec = 999'999'999}), -1);  // before 1970
  QCOMPARE(contentModificationDate(FileUrl::fromPath(path + ".gone")), kDistantPast);
}

int main(int argc, char** argv) {
  const TemporaryHome home;
  QCoreApplication application(argc, argv);
  FolderListingTest test;
  return QTest::qExec(&test, argc, argv);
}

#include "FolderListingTest.moc"
