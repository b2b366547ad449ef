#include "RecentFolders.h"

#include <QTest>

#include "FakePlatform.h"
#include "PhotoFolder.h"

using namespace lumagrid;

// Folders are told by one letter each: the name of a folder inside the test's own.
class RecentFoldersTest : public QObject {
  Q_OBJECT

 private:
  [[nodiscard]] QStringList paths(const QString& letters) const {
    QStringList paths;
    for (const QChar letter : letters) paths.append(QFile::decodeName(m_folder.url(letter).path()));
    return paths;
  }

  PhotoFolder m_folder;

 private Q_SLOTS:
  void keepsTheNewest_data() {
    for (const char letter : {'a', 'b', 'c', 'd', 'e', 'f', 'g'}) (void)m_folder.addFolder(QChar::fromLatin1(letter));
    (void)m_folder.add(QStringLiteral("p"));  // a file can be reached too
    QTest::addColumn<QString>("stored");
    QTest::addColumn<QString>("loaded");
    QTest::addColumn<QString>("added");
    QTest::addColumn<QString>("result");
    const auto row = [](const char* sentence, const char* stored, const char* loaded, const char* added,
                        const char* result) {
      QTest::newRow(sentence) << QString::fromLatin1(stored) << QString::fromLatin1(loaded)
                              << QString::fromLatin1(added) << QString::fromLatin1(result);
    };
    row("the first, whether it is there or not", "", "", "z", "z");
    row("the newest again", "abp", "abp", "a", "abp");
    row("a sixth drops the oldest", "abcde", "abcde", "f", "fabcd");
    row("a list is trimmed, and every duplicate goes, at the next only", "abcbdefgb", "abcbdefgb", "b", "bacde");
    row("what is gone is left out, and forgotten at the next", "azb", "ab", "c", "cab");
  }

  void keepsTheNewest() {
    QFETCH(QString, stored);
    QFETCH(QString, loaded);
    QFETCH(QString, added);
    QFETCH(QString, result);
    const QString key = QStringLiteral("recentFolderPaths");
    FakePreferences preferences;
    // The last names no file, though the system would take it for the root.
    if (!stored.isEmpty()) preferences.values[key] = paths(stored) << QStringLiteral("/\0");
    RecentFolders recents(preferences);
    QStringList log;
    const auto logUrls = [&recents, &log] {
      QString letters;
      for (const FileUrl& url : recents.urls()) letters.append(url.displayName());
      log.append(letters);
    };
    connect(&recents, &RecentFolders::objectWillChange, this, logUrls);
    connect(&recents, &RecentFolders::urlsChanged, this, logUrls);
    QCOMPARE(preferences.writes, 0);
    recents.add(FileUrl::fromPath(paths(added).first() + u'/'));
    QCOMPARE(preferences.values, (QMap<QString, QStringList>{{key, paths(result)}}));
    recents.clear();
    QVERIFY(preferences.values.isEmpty());
    recents.clear();  // tells it again
    QCOMPARE(log, (QStringList{loaded, result, result, {}, {}, {}}));
  }
};

QTEST_GUILESS_MAIN(RecentFoldersTest)
#include "RecentFoldersTest.moc"
