#include "FolderListing.h"

#include <fcntl.h>

#include <QMap>
#include <QTest>
#include <cerrno>
#include <cstring>

#include "TemporaryHome.h"

using namespace lumagrid;

namespace {

const TemporaryHome kHome;

bool isJpeg(QByteArrayView name) {
  return name.endsWith(".jpg");
}

}  // namespace

class FolderListingTest : public QObject {
  Q_OBJECT

 private:
  const QByteArray m_home = kHome.path();

 private Q_SLOTS:
  void listsEachWantedEntryOnce() {
    const QByteArray folder = m_home + "/folder/";
    QCOMPARE(::mkdir(folder.constData(), 0755), 0);
    QMap<QByteArray, bool> expected = {
        {"caf\xE9.jpg", true}, {"album.jpg", false}, {"fifo.jpg", false}, {"link.jpg", false}};
    for (int number = 0; number < 20'000; ++number) {  // several fills of any sensible buffer
      expected["a rather long name of a photo " + QByteArray::number(number) + ".jpg"] = true;
    }
    for (const QByteArray& name : expected.keys(true) + QByteArrayList{".hidden.jpg", "notes.txt"}) {
      QVERIFY(writeFile(folder + name, "x"));
    }
    QCOMPARE(::mkdir((folder + "album.jpg").constData(), 0755), 0);
    QVERIFY(writeFile(folder + "album.jpg/inside.jpg", "x"));
    QCOMPARE(::mkfifo((folder + "fifo.jpg").constData(), 0644), 0);
    QCOMPARE(::symlink("caf\xE9.jpg", (folder + "link.jpg").constData()), 0);

    QMultiMap<QByteArray, bool> found;
    const auto visit = [&found](QByteArrayView name, bool isRegularFile) {
      found.insert(name.toByteArray(), isRegularFile);
    };
    QVERIFY(!visitDirectory(FileUrl::fromPath(folder), isJpeg, visit));
    QCOMPARE(found, QMultiMap(expected));
  }

  void failsAsAWhole_data() {
    QTest::addColumn<QByteArray>("folder");
    QTest::addColumn<int>("error");
    QTest::newRow("a missing folder") << m_home + "/missing" << ENOENT;
    QTest::newRow("a FIFO, without waiting for a writer") << m_home + "/fifo" << ENOTDIR;
    QTest::newRow("a folder without permission") << m_home + "/locked" << EACCES;
    QTest::newRow("but not for an empty folder") << m_home + "/empty" << 0;
    ::mkfifo((m_home + "/fifo").constData(), 0644);
    ::mkdir((m_home + "/locked").constData(), 0000);
    ::mkdir((m_home + "/empty").constData(), 0755);
  }

  void failsAsAWhole() {
    QFETCH(QByteArray, folder);
    QFETCH(int, error);
    int visited = 0;
    const auto failure = visitDirectory(FileUrl::fromPath(folder), isJpeg, [&](QByteArrayView, bool) { ++visited; });
    QCOMPARE(visited, 0);
    QCOMPARE(failure.has_value(), error != 0);
    if (failure) QCOMPARE(failure->description, QString::fromLocal8Bit(std::strerror(error)));
  }

  void tellsTheDateOfTheContent() {
    const QByteArray path = m_home + "/photo.jpg";
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
};

QTEST_GUILESS_MAIN(FolderListingTest)
#include "FolderListingTest.moc"
