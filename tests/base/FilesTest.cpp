#include <fcntl.h>

#include <QDir>
#include <QMap>
#include <QUrl>

#include "FileUrl.h"
#include "FolderListing.h"
#include "NameCollator.h"
#include "Table.h"
#include "TemporaryHome.h"

using namespace lumagrid;

namespace {

const TemporaryHome kHome;

// A name, how it is shown, and how in a sentence; empty: the same.
using Shown = std::tuple<QString, QString, QString>;

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

  void urlsNameFilesOfThisMachine() {
    const auto path = [](const char* url) { return FileUrl::fromUrl(QUrl(QString::fromUtf8(url))).path(); };
    QCOMPARE(path("file:///caf%E9/a%25%23b/"), QByteArray("/caf\xE9/a%#b"));
    QCOMPARE(path("FILE://localhost/\u00E9 x"), QByteArray("/\u00E9 x"));
    for (const char* none : {"file:///album%00x", "file://server/a", "file:a", "https://localhost/a", "/a", ""}) {
      QVERIFY2(path(none).isEmpty(), none);
    }
  }

  void namesAreShown_data() {
    const QString ordinary = u"e\u0301 \u5199 \U0001F468\u200D\U0001F469 <b>%1&.jpg"_qs;
    const QString lines(240, u'\uFFFD');
    const QString full = QString(76, u'x') + u".jpg"_qs;
    const QString accents = u"e\u0301"_qs.repeated(50) + u".jpg"_qs;
    addRows<Shown>({
        {"ordinary letters stay", {ordinary, ordinary, {}}},
        {"controls and line breaks are seen",
         {u"a\n\t\x1B[1m\x7F\u0085\u2028.jpg"_qs, u"a\uFFFD\uFFFD\uFFFD[1m\uFFFD\uFFFD\uFFFD.jpg"_qs, {}}},
        {"nothing turns a name around", {u"a\u202Egpj\u2069.exe"_qs, u"a\uFFFDgpj\uFFFD.exe"_qs, {}}},
        {"what runs leftwards turns nothing but itself", {u"\u05D0.jpg"_qs, u"\u2068\u05D0.jpg\u2069"_qs, {}}},
        {"it may be beyond the basic plane", {u"\U00010800"_qs, u"\u2068\U00010800\u2069"_qs, {}}},
        {"it may be digits", {u"\u0661"_qs, u"\u2068\u0661\u2069"_qs, {}}},
        {"a sentence has room for 80 characters",
         {QString(240, u'\n'), lines, lines.first(39) + u'\u2026' + lines.first(39)}},
        {"… and no less", {full, full, {}}},
        {"no accent is torn off",
         {accents, accents, accents.first(38) + u'\u2026' + u"e\u0301"_qs.repeated(17) + u".jpg"_qs}},
    });
  }

  void namesAreShown() {
    const auto [name, shown, inSentence] = fetchedRow<Shown>();
    const FileUrl url = FileUrl::child(FileUrl::fromPath(m_home), name.toUtf8());
    QCOMPARE(url.displayName(), shown);
    QCOMPARE(url.nameInSentence(), inSentence.isEmpty() ? shown : inSentence);
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
