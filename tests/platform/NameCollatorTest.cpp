#include "NameCollator.h"

#include <QTest>

using namespace lumagrid;

class NameCollatorTest : public QObject {
  Q_OBJECT

 private Q_SLOTS:
  void init() {
    for (const char* variable : {"LC_ALL", "LC_COLLATE", "LANG"}) qunsetenv(variable);
  }

  void sorts_data() {
    QTest::addColumn<QByteArrayList>("names");  // in order
    const auto row = [](const char* sentence, const QByteArrayList& names) { QTest::newRow(sentence) << names; };
    row("runs of digits by value", {"", "IMG_2.jpg", "IMG_9.jpg", "img_10.jpg"});
    row("case decides last", {"a.jpg", "A.jpg", "a1.jpg", "A2.jpg", "b.jpg", "B.jpg"});
    row("width decides last", {"a1.jpg", "\uFF41\uFF11.jpg", "a2.jpg"});
    row("diacritics after letters", {"resume.jpg", "r\u00E9sum\u00E9.jpg", "resumf.jpg"});
    row("numbers beyond 64 bits", {"99999999999999999998", "99999999999999999999", "100000000000000000000"});
    row("leading zeros count for nothing, then bytes decide", {"01.jpg", "1.jpg", "01a.jpg", "2.jpg"});
    row("names that are not UTF-8, by their bytes", {"caf\xE8.jpg", "caf\xE9.jpg"});
    row("composed and decomposed forms side by side", {"e\u0301.jpg", "\u00E9.jpg", "f.jpg"});
    row("names of 255 bytes", {QByteArray(255, '1'), QByteArray(255, '2'), QByteArray(255, 'a')});
  }

  void sorts() {
    QFETCH(QByteArrayList, names);
    qputenv("LC_ALL", "C.UTF-8");
    const NameCollator collator;
    for (qsizetype next = 1; next < names.size(); ++next) {
      QVERIFY2(collator.sortKey(names[next - 1]) < collator.sortKey(names[next]), names[next].constData());
    }
  }

  void theFirstVariableThatIsSetNamesTheLocale() {
    const auto swedish = [] { return NameCollator().sortKey("z") < NameCollator().sortKey("\u00E4"); };
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
