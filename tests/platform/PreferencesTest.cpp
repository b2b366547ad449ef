#include <QTest>

#include "SettingsPreferences.h"
#include "TemporaryHome.h"

using namespace lumagrid;

namespace {

const TemporaryHome kHome;

}  // namespace

class PreferencesTest : public QObject {
  Q_OBJECT

 private:
  const QString m_key = QStringLiteral("recentFolderPaths");
  const QByteArray m_folder = qgetenv("XDG_CONFIG_HOME") + "/lumagrid";

 private Q_SLOTS:
  void keepsAListUntilItIsRemoved_data() {
    QTest::addColumn<QStringList>("list");
    QTest::newRow("several entries") << QStringList{QStringLiteral("/b"), QStringLiteral("/a"), QStringLiteral("/b")};
    QTest::newRow("one entry with the separator in it") << QStringList{QStringLiteral("/a, b")};
    QTest::newRow("entries that look like the file's own syntax")
        << QStringList{QStringLiteral("@Invalid()"), QStringLiteral("\"[x]\"=;#\\n\n%41"), QStringLiteral("")};
    QTest::newRow("one entry that looks like a value") << QStringList{QStringLiteral("@Size(1 2)")};
    QTest::newRow("other scripts") << QStringList{QStringLiteral("/\u5199\u771F/\U0001F4F7"),
                                                  QStringLiteral("/\uFFFD")};
  }

  void keepsAListUntilItIsRemoved() {
    QFETCH(QStringList, list);
    SettingsPreferences().set(m_key, list);
    QVERIFY(readFile(m_folder + "/lumagrid.conf"));
    QCOMPARE(SettingsPreferences().stringArray(m_key), list);
    SettingsPreferences().removeObject(m_key);
    QCOMPARE(SettingsPreferences().stringArray(m_key), std::nullopt);
  }

  void bearsWhateverTheFileHolds_data() {
    QTest::addColumn<QByteArray>("content");
    QTest::newRow("nothing") << QByteArray();
    QTest::newRow("another group's key") << QByteArray("[Other]\nrecentFolderPaths=/a\n");
    QTest::newRow("a size") << QByteArray("[General]\nrecentFolderPaths=@Size(1 2)\n");
    QTest::newRow("a list with a size in it") << QByteArray("[General]\nrecentFolderPaths=/a, @Size(1 2)\n");
    QTest::newRow("a value that cannot be read")
        << QByteArray("[General]\nrecentFolderPaths=@Variant(\\0\\0\\x7f\\xff)\n");
    QTest::newRow("a file cut in the middle") << QByteArray("[General]\nrecentFolderPa");
    QByteArray noise;
    for (int byte = 0; byte < 4096; ++byte) noise.append(char((byte * 131 + byte / 7) & 0xFF));
    QTest::newRow("noise") << noise;
  }

  void bearsWhateverTheFileHolds() {
    QFETCH(QByteArray, content);
    QVERIFY(writeFile(m_folder + "/lumagrid.conf", content));
    QCOMPARE(SettingsPreferences().stringArray(m_key), std::nullopt);
    SettingsPreferences().set(m_key, {QStringLiteral("/new")});
    QCOMPARE(SettingsPreferences().stringArray(m_key), QStringList{QStringLiteral("/new")});
  }

  void bearsAFolderThatCannotBeWritten() {
    QCOMPARE(::unlink((m_folder + "/lumagrid.conf").constData()), 0);
    QCOMPARE(::chmod(m_folder.constData(), 0500), 0);
    SettingsPreferences().set(m_key, {QStringLiteral("/a")});
    QCOMPARE(SettingsPreferences().stringArray(m_key), std::nullopt);
    QCOMPARE(::chmod(m_folder.constData(), 0700), 0);
  }
};

QTEST_GUILESS_MAIN(PreferencesTest)
#include "PreferencesTest.moc"
