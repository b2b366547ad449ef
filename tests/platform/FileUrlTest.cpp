#include "FileUrl.h"

#include <unistd.h>

#include <QTemporaryDir>
#include <QTest>

using namespace lumagrid;

class FileUrlTest : public QObject {
  Q_OBJECT

 private Q_SLOTS:
  void isClean_data();
  void isClean();
  void takesRelativePathsFromTheWorkingDirectory();
  void parentOfALinkIsWhereTheSystemSaysItIs();
  void knowsNameParentAndChild_data();
  void knowsNameParentAndChild();
};

void FileUrlTest::isClean_data() {
  QTest::addColumn<QByteArray>("path");
  QTest::addColumn<QByteArray>("clean");
  QTest::newRow("a clean path stays") << QByteArray("/a/b") << QByteArray("/a/b");
  QTest::newRow("a trailing slash goes") << QByteArray("/a/b/") << QByteArray("/a/b");
  QTest::newRow("slashes in a row are one") << QByteArray("//a///b//") << QByteArray("/a/b");
  QTest::newRow("dots go") << QByteArray("/./a/./b/.") << QByteArray("/a/b");
  QTest::newRow("two dots lead up") << QByteArray("/nowhere/x/../b/..") << QByteArray("/nowhere");
  QTest::newRow("two dots stop at the root") << QByteArray("/../..") << QByteArray("/");
  QTest::newRow("names with dots stay") << QByteArray("/a/..b/c../...") << QByteArray("/a/..b/c../...");
  QTest::newRow("the root stays") << QByteArray("/") << QByteArray("/");
  QTest::newRow("bytes that are not UTF-8 stay") << QByteArray("/caf\xE9/") << QByteArray("/caf\xE9");
  QTest::newRow("a percent sign is no escape") << QByteArray("/100%25") << QByteArray("/100%25");
  QTest::newRow("nothing stays nothing") << QByteArray() << QByteArray();
}

void FileUrlTest::isClean() {
  QFETCH(QByteArray, path);
  QFETCH(QByteArray, clean);
  const FileUrl url = FileUrl::fromPath(path);
  QCOMPARE(url.path(), clean);
  QCOMPARE(url.isEmpty(), path.isEmpty());
  QVERIFY(url == FileUrl::fromPath(clean));
  QCOMPARE(qHash(url), qHash(FileUrl::fromPath(clean)));
}

void FileUrlTest::takesRelativePathsFromTheWorkingDirectory() {
  const QTemporaryDir folder;
  QCOMPARE(::chdir(QFile::encodeName(folder.path()).constData()), 0);
  const FileUrl here = FileUrl::fromPath(QByteArray("."));
  QCOMPARE(here.path().front(), '/');
  QVERIFY(FileUrl::fromPath(QByteArray("photos/")) == FileUrl::child(here, "photos"));
  QVERIFY(FileUrl::fromPath(QStringLiteral("./photos")) == FileUrl::child(here, "photos"));
  QCOMPARE(::chdir("/"), 0);
}

void FileUrlTest::parentOfALinkIsWhereTheSystemSaysItIs() {
  const QTemporaryDir folder;
  const QByteArray root = FileUrl::fromPath(folder.path()).path();
  QVERIFY(QDir(folder.path()).mkpath(QStringLiteral("real/deep")));
  QCOMPARE(::symlink("real/deep", (root + "/link").constData()), 0);
  QVERIFY(FileUrl::fromPath(root + "/link/..") == FileUrl::fromPath(root + "/real"));
  QVERIFY(FileUrl::fromPath(root + "/link") != FileUrl::fromPath(root + "/real/deep"));
}

void FileUrlTest::knowsNameParentAndChild_data() {
  QTest::addColumn<QByteArray>("path");
  QTest::addColumn<QByteArray>("parent");
  QTest::addColumn<QByteArray>("name");
  QTest::addColumn<QString>("displayName");
  QTest::newRow("a file") << QByteArray("/a/b.jpg") << QByteArray("/a") << QByteArray("b.jpg")
                          << QStringLiteral("b.jpg");
  QTest::newRow("a file in the root") << QByteArray("/b.jpg") << QByteArray("/") << QByteArray("b.jpg")
                                      << QStringLiteral("b.jpg");
  QTest::newRow("a name that is not UTF-8")
      << QByteArray("/caf\xE9.jpg") << QByteArray("/") << QByteArray("caf\xE9.jpg") << QStringLiteral("caf\uFFFD.jpg");
}

void FileUrlTest::knowsNameParentAndChild() {
  QFETCH(QByteArray, path);
  QFETCH(QByteArray, parent);
  QFETCH(QByteArray, name);
  QFETCH(QString, displayName);
  const FileUrl url = FileUrl::fromPath(path);
  QCOMPARE(url.parent().path(), parent);
  QCOMPARE(url.lastPathComponent().toByteArray(), name);
  QCOMPARE(url.displayName(), displayName);
  QVERIFY(FileUrl::child(url.parent(), name) == url);
  QCOMPARE(FileUrl::fromPath(QByteArray("/")).parent().path(), QByteArray("/"));
}

QTEST_GUILESS_MAIN(FileUrlTest)
#include "FileUrlTest.moc"
