#include "RecentFolders.h"

#include "FakePlatform.h"
#include "PhotoFolder.h"
#include "Table.h"

using namespace lumagrid;

// What is stored, what is loaded, what is added, and what that leaves.
using Case = std::tuple<const char*, const char*, const char*, const char*>;

// Folders are told by one letter each: the name of a folder inside the test's own.
class RecentFoldersTest : public QObject {
  Q_OBJECT

 private:
  [[nodiscard]] QStringList paths(const char* letters) const {
    QStringList paths;
    for (const QChar letter : QString::fromLatin1(letters)) {
      paths.append(QFile::decodeName(m_folder.url(letter).path()));
    }
    return paths;
  }

  PhotoFolder m_folder;

 private Q_SLOTS:
  void keepsTheNewest_data() {
    for (const char letter : {'a', 'b', 'c', 'd', 'e', 'f', 'g'}) (void)m_folder.addFolder(QChar::fromLatin1(letter));
    (void)m_folder.add(QStringLiteral("p"));  // a file can be reached too
    addRows<Case>({
        {"the first, whether it is there or not", {"", "", "z", "z"}},
        {"the newest again", {"abp", "abp", "a", "abp"}},
        {"a sixth drops the oldest", {"abcde", "abcde", "f", "fabcd"}},
        {"a list is trimmed, and every duplicate goes, at the next only", {"abcbdefgb", "abcbdefgb", "b", "bacde"}},
        {"what is gone is left out, and forgotten at the next", {"azb", "ab", "c", "cab"}},
    });
  }

  void keepsTheNewest() {
    const auto [stored, loaded, added, result] = fetchedRow<Case>();
    const QString key = QStringLiteral("recentFolderPaths");
    FakePreferences preferences;
    // The last names no file, though the system would take it for the root.
    if (*stored) preferences.values[key] = paths(stored) << QStringLiteral("/\0");
    RecentFolders recents(preferences);
    QByteArrayList log;
    const auto logUrls = [&recents, &log] {
      QByteArray letters;
      for (const FileUrl& url : recents.urls()) letters += url.displayName().toLatin1();
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
    QCOMPARE(log, (QByteArrayList{loaded, result, result, {}, {}, {}}));
  }
};

QTEST_GUILESS_MAIN(RecentFoldersTest)
#include "RecentFoldersTest.moc"
