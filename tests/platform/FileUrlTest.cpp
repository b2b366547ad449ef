#include "FileUrl.h"

#include <unistd.h>

#include <QTemporaryDir>
#include <QTest>

using namespace lumagrid;

class FileUrlTest : public QObject {
  Q_OBJECT

 private Q_SLOTS:
  void isClean_data() {
    QTest::addColumn<QByteArray>("path");
    QTest::addColumn<QByteArray>("parent");
    QTest::addColumn<QByteArray>("name");
    const auto row = [](const char* sentence, const char* path, const char* parent, const char* name) {
      QTest::newRow(sentence) << QByteArray(path) << QByteArray(parent) << QByteArray(name);
    };
    row("slashes in a row are one", "//a///b//", "/a", "b");
    row("dots go", "/./a/./b/.", "/a", "b");
    row("two dots lead up", "/nowhere/x/../b/..", "/", "nowhere");
    row("two dots stop at the root", "/../../a", "/", "a");
    row("names with dots stay", "/a/..b/c../...", "/a/..b/c..", "...");
    row("bytes that are not UTF-8 stay", "/caf\xE9/caf\xE9.jpg", "/caf\xE9", "caf\xE9.jpg");
    row("a percent sign is no escape", "/100%25", "/", "100%25");
  }

  void isClean() {
    QFETCH(QByteArray, path);
    QFETCH(QByteArray, parent);
    QFETCH(QByteArray, name);
    const FileUrl url = FileUrl::fromPath(path);
    const FileUrl same = FileUrl::child(FileUrl::fromPath(parent), name);
    QCOMPARE(url.path(), parent == "/" ? '/' + name : parent + '/' + name);
    QCOMPARE(url.parent().path(), parent);
    QCOMPARE(url.lastPathComponent().toByteArray(), name);
    QVERIFY(url == same);
    QCOMPARE(qHash(url), qHash(same));
  }

  void findsFoldersAsTheSystemDoes() {
    QCOMPARE(FileUrl::fromPath(QByteArray("/")).parent().path(), QByteArray("/"));
    QVERIFY(FileUrl::fromPath(QByteArray()).isEmpty());
    const QTemporaryDir folder;
    QCOMPARE(::chdir(QFile::encodeName(folder.path()).constData()), 0);
    const FileUrl here = FileUrl::fromPath(QByteArray("."));
    QVERIFY(here.path().startsWith('/'));
    QVERIFY(FileUrl::fromPath(QStringLiteral("./photos/")) == FileUrl::child(here, "photos"));

    QVERIFY(QDir().mkpath(QStringLiteral("real/deep")));
    QCOMPARE(::symlink("real/deep", "link"), 0);
    QVERIFY(FileUrl::fromPath(QByteArray("link/..")) == FileUrl::child(here, "real"));
    QVERIFY(FileUrl::fromPath(QByteArray("link")) == FileUrl::child(here, "link"));
    QCOMPARE(::chdir("/"), 0);
  }
};

QTEST_GUILESS_MAIN(FileUrlTest)
#include "FileUrlTest.moc"
