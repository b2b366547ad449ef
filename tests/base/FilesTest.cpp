#include <fcntl.h>

#include <QDir>
#include <QMap>
#include <QTest>
#include <QUrl>

#include "FileUrl.h"
#include "FolderListing.h"
#include "NameCollator.h"
#include "TemporaryHome.h"

using namespace lumagrid;

namespace {

const TemporaryHome kHome;

bool isJpeg(QByteArrayView name) {
  return name.endsWith(".jpg");
}

}  // namespace

class FilesTest : public QObject {
  Q_OBJECT

 private:
  const QByteArray m_home = kHome.path() + '/';

 private Q_SLOTS:
  void pathsAreClean() {
    const auto leadsTo = [](const QByteArray& path, const QByteArray& parent, const QByteArray& name) {
      const FileUrl url = FileUrl::fromPath(path);
      return url.parent().path() == parent && url.lastPathComponent() == name &&
             url == FileUrl::child(FileUrl::fromPath(parent), name);
    };
    QVERIFY(leadsTo("//a/././/b/.//", "/a", "b"));
    QVERIFY(leadsTo("/../nowhere/x/../b/..", "/", "nowhere"));
    QVERIFY(leadsTo("/a/..b/c../...", "/a/..b/c..", "..."));
    QVERIFY(leadsTo("/caf\xE9/caf\xE9%25.jpg", "/caf\xE9", "caf\xE9%25.jpg"));
    QCOMPARE(FileUrl::fromPath(QByteArray("/")).parent().path(), QByteArray("/"));
    QVERIFY(FileUrl::fromPath(QByteArray()).isEmpty());
    QVERIFY(FileUrl::fromPath(QByteArray("/a\0b", 4)).isEmpty());
    QVERIFY(FileUrl::fromPath(QStringLiteral("/a\0b")).isEmpty());
  }

  void urlsNameFilesOfThisMachine_data() {
    QTest::addColumn<QByteArray>("path");  // empty: none
    QTest::newRow("file:///caf%E9/a%25%23b/") << QByteArray("/caf\xE9/a%#b");
    QTest::newRow("FILE://localhost/\u00E9 x") << QByteArray("/\u00E9 x");
    for (const char* other : {"file:///album%00x", "file://server/a", "file:a", "https://localhost/a", "/a", ""}) {
      QTest::newRow(other) << QByteArray();
    }
  }

  void urlsNameFilesOfThisMachine() {
    QTEST(FileUrl::fromUrl(QUrl(QString::fromUtf8(QTest::currentDataTag()))).path(), "path");
  }

  void namesAreShown_data() {
    QTest::addColumn<QString>("name");
    QTest::addColumn<QString>("shown");
    QTest::addColumn<QString>("inSentence");  // empty: the same
    const auto row = [](const char* sentence, const QString& name, const QString& shown, const QString& inSentence) {
      QTest::newRow(sentence) << name << shown << (inSentence.isEmpty() ? shown : inSentence);
    };
    const QString ordinary = QStringLiteral("e\u0301 \u5199 \U0001F468\u200D\U0001F469 <b>%1&.jpg");
    row("ordinary letters stay", ordinary, ordinary, {});
    row("controls and line breaks are seen", QStringLiteral("a\n\t\x1B[1m\x7F\u0085\u2028.jpg"),
        QStringLiteral("a\uFFFD\uFFFD\uFFFD[1m\uFFFD\uFFFD\uFFFD.jpg"), {});
    row("nothing turns a name around", QStringLiteral("a\u202Egpj\u2069.exe"), QStringLiteral("a\uFFFDgpj\uFFFD.exe"),
        {});
    row("what runs leftwards turns nothing but itself", QStringLiteral("\u05D0.jpg"),
        QStringLiteral("\u2068\u05D0.jpg\u2069"), {});
    row("it may be beyond the basic plane", QStringLiteral("\U00010800"), QStringLiteral("\u2068\U00010800\u2069"), {});
    row("it may be digits", QStringLiteral("\u0661"), QStringLiteral("\u2068\u0661\u2069"), {});
    const QString lines(240, u'\uFFFD');
    row("a sentence has room for 80 characters", QString(240, u'\n'), lines,
        lines.first(39) + u'\u2026' + lines.first(39));
    const QString full = QString(76, u'x') + QStringLiteral(".jpg");
    row("… and no less", full, full, {});
    const QString accents = QStringLiteral("e\u0301").repeated(50) + QStringLiteral(".jpg");
    row("no accent is torn off", accents, accents,
        accents.first(38) + u'\u2026' + QStringLiteral("e\u0301").repeated(17) + QStringLiteral(".jpg"));
  }

  void namesAreShown() {
    QFETCH(QString, name);
    const FileUrl url = FileUrl::child(FileUrl::fromPath(m_home), name.toUtf8());
    QTEST(url.displayName(), "shown");
    QTEST(url.nameInSentence(), "inSentence");
  }

  void pathsLeadWhereTheSystemSays() {
    QCOMPARE(::chdir(m_home.constData()), 0);
    const FileUrl here = FileUrl::fromPath(m_home);
    QVERIFY(QDir().mkpath(QStringLiteral("real/deep")));
    QCOMPARE(::symlink("real/deep", "link"), 0);
    QVERIFY(FileUrl::fromPath(QByteArray("link/..")) == FileUrl::child(here, "real"));
    QVERIFY(FileUrl::fromPath(QStringLiteral("./link/")) == FileUrl::child(here, "link"));
    QCOMPARE(::chdir("/"), 0);
  }

  void listsEachWantedEntryOnce() {
    const QByteArray folder = m_home + "folder/";
    QMap<QByteArray, bool> expected = {{"caf\xE9.jpg", true}, {"album.jpg", false}, {"fifo.jpg", false}};
    for (int number = 0; number < 20'000; ++number) {  // several fills of any sensible buffer
      expected["a rather long name of a photo " + QByteArray::number(number) + ".jpg"] = true;
    }
    QVERIFY(QDir().mkpath(QFile::decodeName(folder + "album.jpg/inside.jpg")));
    QCOMPARE(::mkfifo((folder + "fifo.jpg").constData(), 0644), 0);
    for (const QByteArray& name : expected.keys(true) + QByteArrayList{".hidden.jpg", "notes.txt"}) {
      QVERIFY(writeFile(folder + name, "x"));
    }
    QCOMPARE(::symlink("caf\xE9.jpg", (folder + "link.jpg").constData()), 0);
    expected["link.jpg"] = false;
    QMultiMap<QByteArray, bool> found;
    const auto visit = [&found](QByteArrayView name, bool isRegularFile) {
      found.insert(name.toByteArray(), isRegularFile);
    };
    QVERIFY(!visitDirectory(FileUrl::fromPath(folder), isJpeg, visit));
    QCOMPARE(found, QMultiMap(expected));
  }

  void listingFailsAsAWhole() {
    const auto error = [this](const char* name) {
      const FileUrl folder = FileUrl::fromPath(m_home + name);
      const auto failure = visitDirectory(folder, isJpeg, [](QByteArrayView, bool) { QFAIL("An entry was visited"); });
      return failure ? failure->description : QString();
    };
    QCOMPARE(::mkfifo((m_home + "fifo").constData(), 0644), 0);
    QCOMPARE(::mkdir((m_home + "locked").constData(), 0000), 0);
    QCOMPARE(::mkdir((m_home + "empty").constData(), 0755), 0);
    QCOMPARE(error("missing"), QStringLiteral("No such file or directory"));
    QCOMPARE(error("fifo"), QStringLiteral("Not a directory"));  // without waiting for a writer
    QCOMPARE(error("locked"), QStringLiteral("Permission denied"));
    QCOMPARE(::chmod((m_home + "locked").constData(), 0700), 0);
    QCOMPARE(error("empty"), QString());
  }

  void theDateIsThatOfTheContent() {
    const QByteArray path = m_home + "photo.jpg";
    QVERIFY(writeFile(path, "x"));
    const timespec times[] = {{.tv_sec = 1, .tv_nsec = 0}, {.tv_sec = -2, .tv_nsec = 5}};
    QCOMPARE(::utimensat(AT_FDCWD, path.constData(), times, 0), 0);
    QCOMPARE(contentModificationDate(FileUrl::fromPath(path)), -1'999'999'995);
  }

  void namesCollate() {
    qputenv("LC_ALL", "C.UTF-8");
    const NameCollator collator;
    // Digits by value; then diacritics, case and width; what collates as equal by its bytes.
    for (const QByteArrayList& inOrder : {
             QByteArrayList{"", "01.jpg", "1.jpg", "01a.jpg", "2.jpg", "\uFF12.jpg", "IMG_9", "img_10"},
             QByteArrayList{"9", "99999999999999999998", "99999999999999999999", "100000000000000000000"},
             QByteArrayList{"a.jpg", "\uFF41.jpg", "A.jpg", "\u00E4.jpg", "a1.jpg", "A2.jpg", "b.jpg", "B.jpg"},
             QByteArrayList{"caf\xE8.jpg", "caf\xE9.jpg"},
             QByteArrayList{"e\u0301.jpg", "\u00E9.jpg", "f.jpg"},
             QByteArrayList{QByteArray(255, '1'), QByteArray(255, '2'), QByteArray(255, 'a')},
         }) {
      for (qsizetype next = 1; next < inOrder.size(); ++next) {
        QVERIFY2(collator.sortKey(inOrder[next - 1]) < collator.sortKey(inOrder[next]), inOrder[next].constData());
      }
    }
  }

  void namesCollateAsTheFirstVariableThatIsSetSays() {
    const auto isSwedish = [] { return NameCollator().sortKey("z") < NameCollator().sortKey("\u00E4"); };
    qputenv("LANG", "sv_SE.UTF-8");
    qputenv("LC_COLLATE", "de_DE.UTF-8");
    qputenv("LC_ALL", "sv_SE");
    QVERIFY(isSwedish());
    qputenv("LC_ALL", "");  // empty counts as not set
    QVERIFY(!isSwedish());
    qunsetenv("LC_COLLATE");
    QVERIFY(isSwedish());
  }
};

QTEST_GUILESS_MAIN(FilesTest)
#include "FilesTest.moc"
