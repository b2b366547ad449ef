#include <QDir>
#include <QTest>

#include "SettingsPreferences.h"
#include "TemporaryHome.h"

using namespace lumagrid;

class PreferencesTest : public QObject {
  Q_OBJECT

 private Q_SLOTS:
  // … and keeps the next list until it is removed.
  void bearWhateverTheFileHolds() {
    const TemporaryHome home;
    const QString key = QStringLiteral("paths");
    QVERIFY(QDir(QFile::decodeName(home.path())).mkpath(QStringLiteral("config/lumagrid")));
    QByteArray noise("[General]\npat");
    for (int byte = 0; byte < 4096; ++byte) noise.append(char((byte * 131 + byte / 7) & 0xFF));
    const QStringList nasty = {QStringLiteral("/b"), QStringLiteral("\"[x]\"=;#\\n\n%41"), QStringLiteral("/\u5199")};
    const QStringList single = {QStringLiteral("@Size(1 2), b")};
    for (const QByteArray& content : {QByteArray("[General]\npaths=/a, @Size(1 2)\n"),
                                      QByteArray("[General]\npaths=@Variant(\\0\\0\\x7f\\xff)\n"), noise}) {
      for (const QStringList& list : {nasty, single}) {
        QVERIFY(writeFile(home.path() + "/config/lumagrid/lumagrid.conf", content));
        QCOMPARE(SettingsPreferences().stringArray(key), std::nullopt);
        SettingsPreferences().set(key, list);
        QCOMPARE(SettingsPreferences().stringArray(key), list);
        SettingsPreferences().removeObject(key);
        QCOMPARE(SettingsPreferences().stringArray(key), std::nullopt);
      }
    }
  }
};

QTEST_GUILESS_MAIN(PreferencesTest)
#include "PreferencesTest.moc"
