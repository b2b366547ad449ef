#include "NameCollator.h"

#include <QTest>
#include <string>

using namespace lumagrid;

class NameCollatorTest : public QObject {
  Q_OBJECT

 private Q_SLOTS:
  void init() {
    for (const char* variable : {"LC_ALL", "LC_COLLATE", "LANG"}) qunsetenv(variable);
  }

  void sorts_data() {
    QTest::addColumn<QByteArray>("locale");
    QTest::addColumn<QByteArrayList>("names");  // in order
    const auto row = [](const char* sentence, const QByteArray& locale, const QByteArrayList& names) {
      QTest::newRow(sentence) << locale << names;
    };
    row("runs of digits by value", "en_US.UTF-8", {"IMG_2.jpg", "IMG_9.jpg", "img_10.jpg"});
    row("case decides last", "C.UTF-8", {"a.jpg", "A.jpg", "a1.jpg", "A2.jpg", "b.jpg", "B.jpg"});
    row("width decides last", "C", {"a1.jpg", "\uFF41\uFF11.jpg", "a2.jpg"});
    row("diacritics after letters", "POSIX", {"resume.jpg", "r\u00E9sum\u00E9.jpg", "resumf.jpg"});
    row("numbers beyond 64 bits", "C",
        {"99999999999999999998.jpg", "99999999999999999999.jpg", "100000000000000000000.jpg",
         "100000000000000000000000000000000000000001.jpg"});
    row("leading zeros count for nothing, then bytes decide", "C", {"01.jpg", "1.jpg", "01a.jpg", "2.jpg"});
    row("a German umlaut beside its letter", "de_DE.UTF-8", {"Abend.jpg", "\u00C4hre.jpg", "Ampel.jpg", "Zoo.jpg"});
    row("Swedish letters after Z", "sv_SE.UTF-8", {"Zoo.jpg", "\u00C5l.jpg", "\u00C4gg.jpg", "\u00D6l.jpg"});
    row("a language without data in the order of the root", "xx_YY", {"IMG_9.jpg", "img_10.jpg"});
    row("an empty name before all", "C", {"", "1", "a"});
    row("names that are not UTF-8, by their bytes", "C", {"caf\xE8.jpg", "caf\xE9.jpg"});
    row("composed and decomposed forms side by side", "C", {"e\u0301.jpg", "\u00E9.jpg", "f.jpg"});
    row("names of 255 bytes", "C", {QByteArray(255, '1'), QByteArray(255, '2'), QByteArray(255, 'a')});
  }

  void sorts() {
    QFETCH(QByteArray, locale);
    QFETCH(QByteArrayList, names);
    qputenv("LC_ALL", locale);
    const NameCollator collator;

    for (qsizetype left = 0; left < names.size(); ++left) {
      for (qsizetype right = 0; right < names.size(); ++right) {
        const auto expected = left <=> right;
        QVERIFY(collator.compare(names[left], names[right]) == expected);
        const std::string key = collator.sortKey(names[left]).toStdString();  // it holds zero bytes
        QVERIFY(key <=> collator.sortKey(names[right]).toStdString() == expected);
      }
    }
  }

  void theFirstVariableThatIsSetNamesTheLocale() {
    const auto swedish = [] { return NameCollator().compare("z", "\u00E4") < 0; };
    QVERIFY(!swedish());
    qputenv("LANG", "sv_SE.UTF-8");
    QVERIFY(swedish());
    qputenv("LC_COLLATE", "de_DE.UTF-8");
    QVERIFY(!swedish());
    qputenv("LC_ALL", "");  // empty counts as not set
    QVERIFY(!swedish());
    qputenv("LC_ALL", "sv_SE");
    QVERIFY(swedish());
  }
};

QTEST_GUILESS_MAIN(NameCollatorTest)
#include "NameCollatorTest.moc"
