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
    row("slashes in a row are one, and dots go", "//a/././/b/.//", "/a", "b");
    row("two dots lead up, to the root at most", "/../nowhere/x/../b/..", "/", "nowhere");
    row("names with dots stay", "/a/..b/c../...", "/a/..b/c..", "...");
    row("bytes that are not UTF-8 stay", "/caf\xE9/caf\xE9%25.jpg", "/caf\xE9", "caf\xE9%25.jpg");
  }

  void isClean() {
    QFETCH(QByteArray, path);
    QFETCH(QByteArray, parent);
    QFETCH(QByteArray, name);
    const FileUrl url = FileUrl::fromPath(path);
    QCOMPARE(url.parent().path(), parent);
    QCOMPARE(url.lastPathComponent().toByteArray(), name);
    QVERIFY(url == FileUrl::child(FileUrl::fromPath(parent), name));
  }

  void findsFoldersAsTheSystemDoes() {
    QCOMPARE(FileUrl::fromPath(QByteArray("/")).parent().path(), QByteArray("/"));
    QVERIFY(FileUrl::fromPath(QByteArray()).isEmpty());
    const QTemporaryDir folder;
    QCOMPARE(::chdir(QFile::encodeName(folder.path()).constData()), 0);
    const FileUrl here = FileUrl::fromPath(QByteArray("."));
    QVERIFY(here.path().startsWith('/'));
    QVERIFY(QDir().mkpath(QStringLiteral("real/deep")));
    QCOMPARE(::symlink("real/deep", "link"), 0);
    QVERIFY(FileUrl::fromPath(QByteArray("link/..")) == FileUrl::child(here, "real"));
    QVERIFY(FileUrl::fromPath(QStringLiteral("./link/")) == FileUrl::child(here, "link"));
    QCOMPARE(::chdir("/"), 0);
  }
};

QTEST_GUILESS_MAIN(FileUrlTest)
#include "FileUrlTest.moc"
