#include <QDir>
#include <QRegularExpression>
#include <QTest>

#include "SettingsPreferences.h"
#include "Table.h"
#include "TemporaryHome.h"

using namespace lumagrid;

namespace {

const TemporaryHome kHome;
const QByteArray kPreferences = kHome.path() + "/config/lumagrid/lumagrid.json";

}  // namespace

class PreferencesTest : public QObject {
  Q_OBJECT

 private Q_SLOTS:
  // … and the next list is kept until it is removed. A file that is not understood stays until something is stored.
  void bearWhateverTheFileHolds_data() {
    QByteArray noise("{\"paths\": [\"");
    for (int byte = 0; byte < 4096; ++byte) noise.append(char((byte * 131 + byte / 7) & 0xFF));
    addRows<QByteArray>({
        {"nothing", ""},
        {"noise", noise},
        {"something else than lists", R"({"paths": "/a"})"},
        {"lists of something else", R"({"paths": ["/a", {"b": 1}]})"},
        {"lists deep in each other", "{\"paths\": " + QByteArray(100'000, '[')},
        {"more than preferences ever are", "{\"paths\": [\"" + QByteArray(1 << 20, 'a') + "\"]}"},
    });
  }
  void bearWhateverTheFileHolds() {
    QFETCH(const QByteArray, row);
    const QString key = QStringLiteral("paths");
    QVERIFY(QDir(QFile::decodeName(kHome.path())).mkpath(QStringLiteral("config/lumagrid")));
    const QStringList nasty = {QStringLiteral("/b"), QStringLiteral("\"[x]\"=;#\\n\n%41"), QStringLiteral("/\u5199")};
    const QStringList single = {QStringLiteral("@Variant(\\0\\0\\0\\x9\\x7f\\xff\\xff\\xff), b")};
    for (const QStringList& list : {nasty, single, QStringList()}) {
      QVERIFY(writeFile(kPreferences, row));
      QCOMPARE(SettingsPreferences().stringArray(key), std::nullopt);
      QCOMPARE(readFile(kPreferences), row);
      SettingsPreferences().set(key, list);
      QCOMPARE(SettingsPreferences().stringArray(key), list);
      SettingsPreferences().removeObject(key);
      QCOMPARE(SettingsPreferences().stringArray(key), std::nullopt);
    }
  }

  // Nothing can be kept, nothing is said, and nothing is waited for.
  void bearWhateverStandsThere_data() {
    addRows<QByteArray>({
        {"no folder, and none can be made", "rm -r config && touch config"},
        {"a file where the folder should be", "touch config/lumagrid"},
        {"a folder that cannot be written", "mkdir -m 500 config/lumagrid"},
        {"a folder where the file should be", "mkdir -p config/lumagrid/lumagrid.json/x"},
        {"a pipe that nobody fills", "mkdir config/lumagrid && mkfifo config/lumagrid/lumagrid.json"},
        {"a device without an end", "mkdir config/lumagrid && ln -s /dev/zero config/lumagrid/lumagrid.json"},
    });
  }
  void bearWhateverStandsThere() {
    QFETCH(const QByteArray, row);
    const auto shell = [](const QByteArray& commands) {
      return std::system(("cd " + kHome.path() + " && chmod -Rf u+rwx config; " + commands).constData()) == 0;
    };
    QVERIFY(shell("rm -rf config && mkdir config && " + row));
    QTest::failOnWarning(QRegularExpression(QStringLiteral(".")));
    const QString key = QStringLiteral("paths");
    const QStringList list = {QStringLiteral("/a")};
    SettingsPreferences preferences;
    QCOMPARE(preferences.stringArray(key), std::nullopt);
    preferences.set(key, list);
    QCoreApplication::processEvents();
    QCOMPARE(preferences.stringArray(key), list);
    QVERIFY(shell("rm -rf config"));
  }
};

QTEST_GUILESS_MAIN(PreferencesTest)
#include "PreferencesTest.moc"
