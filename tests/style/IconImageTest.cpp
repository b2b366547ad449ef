#include <QTest>

#include "IconImage.h"

using namespace lumagrid;

namespace {

QRect drawnArea(const QImage& image) {
  QRect area;
  for (int y = 0; y < image.height(); ++y) {
    for (int x = 0; x < image.width(); ++x) {
      if (qAlpha(image.pixel(x, y)) > 127) area |= QRect(x, y, 1, 1);
    }
  }
  return area;
}

double ink(const QImage& image) {
  double sum = 0;
  for (int y = 0; y < image.height(); ++y) {
    for (int x = 0; x < image.width(); ++x) sum += qAlpha(image.pixel(x, y)) / 255.0;
  }
  return sum;
}

}  // namespace

class IconImageTest : public QObject {
  Q_OBJECT

 private Q_SLOTS:
  void everyIconFillsItsSquare_data();
  void everyIconFillsItsSquare();
  void unknownNamesDrawNothing();
  void checkIsKnockedOutOfTheDisc();
};

void IconImageTest::everyIconFillsItsSquare_data() {
  QTest::addColumn<QString>("name");
  for (const char* name :
       {"squareGrid3x3Fill", "folderBadgePlus", "minusMagnifyingGlass", "plusMagnifyingGlass", "arrowUpArrowDown",
        "checkmark", "checkmarkCircleFill", "trash", "chevronLeft", "chevronRight", "photoOnRectangleAngled"}) {
    QTest::newRow(name) << QString::fromLatin1(name);
  }
}

void IconImageTest::everyIconFillsItsSquare() {
  QFETCH(const QString, name);

  const IconName icon = iconNamed(name);
  QVERIFY(icon != IconName::none);
  double previousInk = 0;
  for (const double ratio : {1.0, 1.5, 2.0}) {
    const QImage image = iconImage(icon, 20, IconWeight::semibold, qRgb(10, 20, 30), ratio);
    QCOMPARE(image.size(), QSize(qRound(26 * ratio), qRound(26 * ratio)));
    // As large as its neighbours, in the middle, and cut off nowhere.
    const QRect area = drawnArea(image);
    QVERIFY(std::max(area.width(), area.height()) >= 0.65 * image.width());
    QVERIFY(QRect(QPoint(), image.size()).adjusted(1, 1, -1, -1).contains(area));
    const QPointF offset = QRectF(area).center() - QRectF(image.rect()).center();
    QVERIFY(std::abs(offset.x()) <= 0.06 * image.width() && std::abs(offset.y()) <= 0.06 * image.height());
  }
  for (const IconWeight weight : {IconWeight::medium, IconWeight::semibold, IconWeight::bold}) {
    const double weightInk = ink(iconImage(icon, 20, weight, qRgb(0, 0, 0), 1));
    if (icon != IconName::squareGrid3x3Fill && icon != IconName::checkmarkCircleFill) QVERIFY(weightInk > previousInk);
    previousInk = weightInk;
  }
}

void IconImageTest::unknownNamesDrawNothing() {
  QCOMPARE(iconNamed(u"hammer"), IconName::none);
  QVERIFY(iconImage(IconName::none, 20, IconWeight::bold, qRgb(0, 0, 0), 2).isNull());
  QVERIFY(iconImage(IconName::trash, 0, IconWeight::bold, qRgb(0, 0, 0), 2).isNull());
}

void IconImageTest::checkIsKnockedOutOfTheDisc() {
  const QImage image = iconImage(IconName::checkmarkCircleFill, 26, IconWeight::bold, qRgb(31, 111, 95), 2);
  const double unit = image.width() / 24.0;
  QCOMPARE(image.pixel(QPoint(int(12 * unit), int(4 * unit))), qRgb(31, 111, 95));
  QCOMPARE(qAlpha(image.pixel(QPoint(int(10.7 * unit), int(15.6 * unit)))), 0);
}

QTEST_GUILESS_MAIN(IconImageTest)
#include "IconImageTest.moc"
