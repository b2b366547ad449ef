#include <QDir>
#include <QTest>

#include "SettingsPreferences.h"
#include "TemporaryHome.h"

using namespace lumagrid;

class PreferencesTest : public QObject {
  Q_OBJECT

 private Q_SLOTS:
  void init();
  void keepsAListAcrossRuns_data();
  void keepsAListAcrossRuns();
  void removingForgetsTheKey();
  void bearsWhateverTheFileHolds_data();
  void bearsWhateverTheFileHolds();
  void bearsAFolderThatCannotBeWritten();

 private:
  const QString m_key = QStringLiteral("recentFolderPaths");
  const QByteArray m_folder = qgetenv("XDG_CONFIG_HOME") + "/lumagrid";
};

void PreferencesTest::init() {
  QDir(QFile::decodeName(m_folder)).removeRecursively();
  QDir().mkpath(QFile::decodeName(m_folder));
}

void PreferencesTest::keepsAListAcrossRuns_data() {
  QTest::addColumn<QStringList>("list");
  QTest::newRow("several entries") << QStringList{QStringLiteral("/b"), QStringLiteral("/a"), QStringLiteral("/b")};
  QTest::newRow("one entry") << QStringList{QStringLiteral("/only")};
  QTest::newRow("one entry with the separator in it") << QStringList{QStringLiteral("/a, b")};
  QTest::newRow("entries that look like the file's own syntax")
      << QStringList{QStringLiteral("@Invalid()"), QStringLiteral("\"[x]\"=;#\\n\n%41"), QStringLiteral("")};
  QTest::newRow("one entry that looks like a value") << QStringList{QStringLiteral("@Size(1 2)")};
  QTest::newRow("other scripts") << QStringList{QStringLiteral("/\u5199\u771F/\U0001F4F7"), QStringLiteral("/\uFFFD")};
}

void PreferencesTest::keepsAListAcrossRuns() {
  QFETCH(QStringList, list);
  SettingsPreferences().set(m_key, list);
  QVERIFY(readFile(m_folder + "/lumagrid.conf"));
  QCOMPARE(SettingsPreferences().stringArray(m_key), list);
}

void PreferencesTest::removingForgetsTheKey() {
  QCOMPARE(SettingsPreferences().stringArray(m_key), std::nullopt);
  SettingsPreferences().set(m_key, {QStringLiteral("/a")});
  SettingsPreferences preferences;
  preferences.removeObject(m_key);
  QCOMPARE(preferences.stringArray(m_key), std::nullopt);
  preferences.set(m_key, {});
  QCOMPARE(preferences.stringArray(m_key), std::nullopt);
  QCOMPARE(SettingsPreferences().stringArray(m_key), std::nullopt);
}

void PreferencesTest::bearsWhateverTheFileHolds_data() {
  QTest::addColumn<QByteArray>("content");
  QTest::addColumn<bool>("isList");
  QTest::newRow("a list") << QByteArray("[General]\nrecentFolderPaths=/a, /b\n") << true;
  QTest::newRow("nothing") << QByteArray() << false;
  QTest::newRow("another group's key") << QByteArray("[Other]\nrecentFolderPaths=/a\n") << false;
  QTest::newRow("a size") << QByteArray("[General]\nrecentFolderPaths=@Size(1 2)\n") << false;
  QTest::newRow("a list with a size in it") << QByteArray("[General]\nrecentFolderPaths=/a, @Size(1 2)\n") << false;
  QTest::newRow("a value that cannot be read")
      << QByteArray("[General]\nrecentFolderPaths=@Variant(\\0\\0\\x7f\\xff)\n") << false;
  QTest::newRow("a file cut in the middle") << QByteArray("[General]\nrecentFolderPa") << false;
  QByteArray noise;
  for (int byte = 0; byte < 4096; ++byte) noise.append(char((byte * 131 + byte / 7) & 0xFF));
  QTest::newRow("noise") << noise << false;
}

void PreferencesTest::bearsWhateverTheFileHolds() {
  QFETCH(QByteArray, content);
  QFETCH(bool, isList);
  QVERIFY(writeFile(m_folder + "/lumagrid.conf", content));
  QCOMPARE(SettingsPreferences().stringArray(m_key).has_value(), isList);
  SettingsPreferences().set(m_key, {QStringLiteral("/new")});
  QCOMPARE(SettingsPreferences().stringArray(m_key), QStringList{QStringLiteral("/new")});
}

void PreferencesTest::bearsAFolderThatCannotBeWritten() {
  QCOMPARE(::chmod(m_folder.constData(), 0500), 0);
  SettingsPreferences().set(m_key, {QStringLiteral("/a")});
  QCOMPARE(SettingsPreferences().stringArray(m_key), std::nullopt);
  QCOMPARE(::chmod(m_folder.constData(), 0700), 0);
}

int main(int argc, char** argv) {
  const TemporaryHome home;
  QCoreApplication application(argc, argv);
  PreferencesTest test;
  return QTest::qExec(&test, argc, argv);
}

#include "PreferencesTest.moc"
