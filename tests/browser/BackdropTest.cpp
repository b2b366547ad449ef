#include "Backdrop.h"

#include <QQuickWindow>
#include <QTest>
#include <array>
#include <cmath>

#include "Palette.h"
#include "StageCorners.h"

using namespace lumagrid;

namespace {

constexpr QSize kWindow(1100, 760);

QColor mixed(QColor below, QColor above, double opacity) {
  const auto mix = [opacity](int from, int to) { return int(std::lround(from + (to - from) * opacity)); };
  return {mix(below.red(), above.red()), mix(below.green(), above.green()), mix(below.blue(), above.blue())};
}

bool isNear(QColor left, QColor right, int levels = 1) {
  return std::abs(left.red() - right.red()) <= levels && std::abs(left.green() - right.green()) <= levels &&
         std::abs(left.blue() - right.blue()) <= levels;
}

// How much a disc of radius 210 still covers `distance` from its centre once blurred, summed up point by point.
double blurredCoverage(double distance, double sigma) {
  constexpr double kStep = 0.5;
  double covered = 0;
  double whole = 0;
  for (double y = -5 * sigma; y <= 5 * sigma; y += kStep) {
    for (double x = -5 * sigma; x <= 5 * sigma; x += kStep) {
      const double weight = std::exp(-(x * x + y * y) / (2 * sigma * sigma));
      whole += weight;
      if (std::hypot(distance + x, y) <= 210) covered += weight;
    }
  }
  return covered / whole;
}

}  // namespace

class BackdropTest : public QObject {
  Q_OBJECT

 private Q_SLOTS:
  void isAGradientUnderTwoDiscs_data();
  void isAGradientUnderTwoDiscs();
  void partsAgreeWithTheWhole_data();
  void partsAgreeWithTheWhole();
  void cornersShowTheBackdropAlone_data();
  void cornersShowTheBackdropAlone();
};

void BackdropTest::isAGradientUnderTwoDiscs_data() {
  QTest::addColumn<ColorScheme>("scheme");
  QTest::addColumn<QColor>("top");
  QTest::addColumn<QColor>("bottom");
  QTest::addColumn<double>("warmOpacity");
  QTest::addColumn<double>("tealOpacity");
  QTest::newRow("light") << ColorScheme::light << QColor(251, 246, 238) << QColor(241, 224, 197) << 0.24 << 0.18;
  QTest::newRow("dark") << ColorScheme::dark << QColor(26, 23, 20) << QColor(36, 31, 26) << 0.12 << 0.22;
}

void BackdropTest::isAGradientUnderTwoDiscs() {
  QFETCH(ColorScheme, scheme);
  QFETCH(QColor, top);
  QFETCH(QColor, bottom);
  QFETCH(double, warmOpacity);
  QFETCH(double, tealOpacity);
  const QColor warm(228, 179, 107);
  const QColor teal(31, 111, 95);
  const QImage image = backdropImage(kWindow, 1, scheme, {QPoint(), kWindow});
  QCOMPARE(image.size(), kWindow);
  QVERIFY(isNear(image.pixelColor(1099, 0), top));
  QVERIFY(isNear(image.pixelColor(0, 759), bottom));
  QVERIFY(isNear(image.pixelColor(600, 380), mixed(top, bottom, 0.5)));
  const auto gradient = [&](int y) { return mixed(top, bottom, (y + 0.5) / 760); };
  QVERIFY(isNear(image.pixelColor(110, 80), mixed(gradient(80), warm, warmOpacity)));
  QVERIFY(isNear(image.pixelColor(1010, 700), mixed(gradient(700), teal, tealOpacity)));
  for (const int distance : {150, 180, 200, 210, 220, 240, 290}) {
    const double warmCover = warmOpacity * blurredCoverage(distance, 16);
    QVERIFY(isNear(image.pixelColor(110 + distance, 80), mixed(gradient(80), warm, warmCover), 2));
    const double tealCover = tealOpacity * blurredCoverage(distance, 24);
    QVERIFY(isNear(image.pixelColor(1010, 700 - distance), mixed(gradient(700 - distance), teal, tealCover), 2));
  }
}

void BackdropTest::partsAgreeWithTheWhole_data() {
  QTest::addColumn<double>("ratio");
  for (const double ratio : {1.0, 1.5, 2.0}) QTest::addRow("%g device pixels to a point", ratio) << ratio;
}

void BackdropTest::partsAgreeWithTheWhole() {
  QFETCH(double, ratio);
  const QRect all(QPoint(), (QSizeF(kWindow) * ratio).toSize());
  QImage whole = backdropImage(kWindow, ratio, ColorScheme::light, all);
  QCOMPARE(whole.devicePixelRatio(), ratio);
  whole.setDevicePixelRatio(1);
  for (const QRect& part :
       {QRect(0, 0, 60, 60), QRect(200, 90, 130, 40), QRect(all.right() - 69, all.bottom() - 69, 70, 70)}) {
    QImage image = backdropImage(kWindow, ratio, ColorScheme::light, part);
    image.setDevicePixelRatio(1);
    QCOMPARE(image, whole.copy(part));
  }
}

void BackdropTest::cornersShowTheBackdropAlone_data() {
  QTest::addColumn<ColorScheme>("scheme");
  QTest::newRow("light") << ColorScheme::light;
  QTest::newRow("dark") << ColorScheme::dark;
}

void BackdropTest::cornersShowTheBackdropAlone() {
  QFETCH(ColorScheme, scheme);
  const Appearance appearance(scheme);
  Palette::instance()->setAppearance(&appearance);
  QQuickWindow window;
  window.setColor(Qt::green);
  window.resize(400, 300);
  StageCorners corners(window.contentItem());
  corners.setPosition({18, 18});
  corners.setSize({364, 264});
  corners.setProperty("radius", 32.0);
  corners.setProperty("backdropSize", QSizeF(400, 300));
  corners.setProperty("backdropOrigin", QPointF(18, 18));
  const QImage shown = window.grabWindow();
  const QImage backdrop = backdropImage({400, 300}, 1, scheme, {0, 0, 400, 300});
  Palette::instance()->setAppearance(nullptr);

  const QRect stage(18, 18, 364, 264);
  const auto isBackdrop = [&](int x, int y) { return isNear(shown.pixelColor(x, y), backdrop.pixelColor(x, y)); };
  const auto isContent = [&](int x, int y) { return shown.pixelColor(x, y) == QColor(Qt::green); };
  // The rounding cuts a corner's diagonal where a circle does, 9.4 points in from both edges.
  for (const int inset : {0, 4, 8}) {
    for (const int x : {stage.left() + inset, stage.right() - inset}) {
      for (const int y : {stage.top() + inset, stage.bottom() - inset}) QVERIFY(isBackdrop(x, y));
    }
  }
  for (const int inset : {11, 20, 60}) {
    for (const int x : {stage.left() + inset, stage.right() - inset}) {
      for (const int y : {stage.top() + inset, stage.bottom() - inset}) QVERIFY(isContent(x, y));
    }
  }
  for (const int x : {stage.left(), stage.left() + 1, stage.right()}) QVERIFY(isContent(x, 150));
  for (const int y : {stage.top(), stage.bottom()}) QVERIFY(isContent(200, y));
  const QColor edge = shown.pixelColor(stage.left() + 9, stage.top() + 9);
  QVERIFY(!isContent(stage.left() + 9, stage.top() + 9) && edge.green() > backdrop.pixelColor(27, 27).green());
}

QTEST_MAIN(BackdropTest)
#include "BackdropTest.moc"
