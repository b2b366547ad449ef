#include "RecentFolders.h"

#include <QTest>

#include "FakePlatform.h"
#include "PhotoFolder.h"

using namespace lumagrid;

// Folders are told by one letter each: the name of a folder inside the test's own.
class RecentFoldersTest : public QObject {
  Q_OBJECT

 private Q_SLOTS:
  void initTestCase();
  void init() { m_preferences = {}; }
  void loads_data();
  void loads();
  void adds_data();
  void adds();
  void clearingForgetsTheKey();
  void tellsBeforeEachAssignment();

 private:
  [[nodiscard]] QStringList paths(const QString& letters) const;
  [[nodiscard]] QString letters(const QStringList& paths) const;
  [[nodiscard]] QString shown(const RecentFolders& recents) const;

  const QString m_key = QStringLiteral("recentFolderPaths");
  PhotoFolder m_folder;
  FakePreferences m_preferences;
};

void RecentFoldersTest::initTestCase() {
  for (const char letter : QByteArray("abcdefgh")) {
    if (letter) (void)m_folder.addFolder(QString(QLatin1Char(letter)));
  }
  (void)m_folder.add(QStringLiteral("p"));  // a file
}

QStringList RecentFoldersTest::paths(const QString& letters) const {
  QStringList paths;
  for (const QChar letter : letters) paths.append(QFile::decodeName(m_folder.url(letter).path()));
  return paths;
}

QString RecentFoldersTest::letters(const QStringList& paths) const {
  QString letters;
  for (const QString& path : paths) letters.append(path.section(u'/', -1));
  return letters;
}

QString RecentFoldersTest::shown(const RecentFolders& recents) const {
  QString letters;
  for (const FileUrl& url : recents.urls()) letters.append(url.displayName());
  return letters;
}

void RecentFoldersTest::loads_data() {
  QTest::addColumn<QString>("stored");
  QTest::addColumn<QString>("loaded");
  QTest::newRow("nothing stored") << ""
                                  << "";
  QTest::newRow("folders that are gone are left out") << "abzc"
                                                      << "abc";
  QTest::newRow("neither trimmed nor without duplicates") << "abcdefgha"
                                                          << "abcdefgha";
  QTest::newRow("a file can be reached too") << "pa"
                                             << "pa";
}

void RecentFoldersTest::loads() {
  QFETCH(QString, stored);
  QFETCH(QString, loaded);
  if (!stored.isEmpty()) m_preferences.values[m_key] = paths(stored);
  const RecentFolders recents(m_preferences);
  QCOMPARE(shown(recents), loaded);
  QCOMPARE(m_preferences.writes, 0);
  QCOMPARE(letters(m_preferences.values.value(m_key)), stored);
}

void RecentFoldersTest::adds_data() {
  QTest::addColumn<QString>("stored");
  QTest::addColumn<QString>("added");
  QTest::addColumn<QString>("result");
  QTest::newRow("to an empty list") << ""
                                    << "a"
                                    << "a";
  QTest::newRow("the first again") << "abc"
                                   << "a"
                                   << "abc";
  QTest::newRow("the third moves to the front") << "abcd"
                                                << "c"
                                                << "cabd";
  QTest::newRow("a sixth drops the oldest") << "abcde"
                                            << "f"
                                            << "fabcd";
  QTest::newRow("a list that was too long is trimmed") << "abcdefgh"
                                                       << "z"
                                                       << "zabcd";
  QTest::newRow("every duplicate goes") << "abcbdb"
                                        << "b"
                                        << "bacd";
  QTest::newRow("what could not be reached is forgotten") << "azb"
                                                          << "c"
                                                          << "cab";
}

void RecentFoldersTest::adds() {
  QFETCH(QString, stored);
  QFETCH(QString, added);
  QFETCH(QString, result);
  if (!stored.isEmpty()) m_preferences.values[m_key] = paths(stored);
  RecentFolders recents(m_preferences);
  recents.add(FileUrl::fromPath(paths(added).first() + u'/'));
  QCOMPARE(shown(recents), result);
  QCOMPARE(m_preferences.values, (QMap<QString, QStringList>{{m_key, paths(result)}}));
  QCOMPARE(m_preferences.writes, 1);  // also when nothing moved
  m_preferences.values[m_key] = paths(QStringLiteral("h"));
  QCOMPARE(shown(recents), result);  // never read again
}

void RecentFoldersTest::clearingForgetsTheKey() {
  m_preferences.values[m_key] = paths(QStringLiteral("ab"));
  RecentFolders recents(m_preferences);
  recents.clear();
  QVERIFY(recents.urls().empty());
  QVERIFY(!m_preferences.values.contains(m_key));
  QVERIFY(RecentFolders(m_preferences).urls().empty());
}

void RecentFoldersTest::tellsBeforeEachAssignment() {
  RecentFolders recents(m_preferences);
  QStringList log;
  connect(&recents, &RecentFolders::objectWillChange, this, [&] { log << QStringLiteral("will:") + shown(recents); });
  connect(&recents, &RecentFolders::urlsChanged, this, [&] { log << shown(recents); });
  recents.add(m_folder.url(QStringLiteral("a")));
  recents.add(m_folder.url(QStringLiteral("a")));
  recents.clear();
  recents.clear();
  QCOMPARE(log.join(u' '), QStringLiteral("will: a will:a a will:a  will: "));
}

QTEST_GUILESS_MAIN(RecentFoldersTest)
#include "RecentFoldersTest.moc"
