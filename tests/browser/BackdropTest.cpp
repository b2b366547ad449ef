#include "Backdrop.h"

#include <QQuickWindow>
#include <QTest>
#include <cmath>

#include "Palette.h"
#include "StageCorners.h"

using namespace lumagrid;

namespace {

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
  void isAGradientUnderTwoDiscs_data() {
    QTest::addColumn<ColorScheme>("scheme");
    QTest::addColumn<QColor>("top");
    QTest::addColumn<QColor>("bottom");
    QTest::addColumn<double>("warm");
    QTest::addColumn<double>("teal");
    QTest::newRow("light") << ColorScheme::light << QColor(251, 246, 238) << QColor(241, 224, 197) << 0.24 << 0.18;
    QTest::newRow("dark") << ColorScheme::dark << QColor(26, 23, 20) << QColor(36, 31, 26) << 0.12 << 0.22;
  }
  void isAGradientUnderTwoDiscs() {
    QFETCH(ColorScheme, scheme);
    QFETCH(QColor, top);
    QFETCH(QColor, bottom);
    QFETCH(double, warm);
    QFETCH(double, teal);
    const QImage image = backdropImage({1100, 760}, 1, scheme, {0, 0, 1100, 760});
    const auto gradient = [&](int y) { return mixed(top, bottom, (y + 0.5) / 760); };
    for (const QPoint away : {QPoint(1099, 0), QPoint(600, 380), QPoint(0, 759)}) {
      QVERIFY(isNear(image.pixelColor(away), gradient(away.y())));
    }
    for (const int distance : {0, 150, 180, 200, 210, 220, 240, 290}) {
      const QColor right = mixed(gradient(80), {228, 179, 107}, warm * blurredCoverage(distance, 16));
      QVERIFY(isNear(image.pixelColor(110 + distance, 80), right, distance ? 2 : 1));
      const QColor above = mixed(gradient(700 - distance), {31, 111, 95}, teal * blurredCoverage(distance, 24));
      QVERIFY(isNear(image.pixelColor(1010, 700 - distance), above, distance ? 2 : 1));
    }
  }

  void partsAgreeWithTheWhole() {
    const auto draw = [](QRect part) { return backdropImage({1100, 760}, 1.5, ColorScheme::light, part); };
    const QImage whole = draw({0, 0, 1650, 1140});
    for (const QRect& part : {QRect(200, 90, 130, 40), QRect(1580, 1070, 70, 70)}) {
      QCOMPARE(draw(part), whole.copy(part));
    }
  }

  void cornersShowTheBackdropAlone() {
    const Appearance appearance(ColorScheme::dark);
    Palette::instance()->setAppearance(&appearance);
    QQuickWindow window;
    window.setColor(Qt::green);
    window.resize(400, 300);
    const QRect stage(18, 18, 364, 264);
    StageCorners corners(window.contentItem());
    corners.setPosition(stage.topLeft());
    corners.setSize(stage.size());
    corners.setProperty("radius", 32.0);
    corners.setProperty("backdropSize", QSizeF(400, 300));
    corners.setProperty("backdropOrigin", QPointF(18, 18));
    const QImage shown = window.grabWindow();
    const QImage backdrop = backdropImage({400, 300}, 1, ColorScheme::dark, {0, 0, 400, 300});
    Palette::instance()->setAppearance(nullptr);

    const auto isContent = [&](QPoint at) { return shown.pixelColor(at) == QColor(Qt::green); };
    // The rounding cuts a corner's diagonal where a circle does, 9.4 points in from both edges.
    for (const int inset : {0, 8, 11, 60}) {
      const QRect rect = stage.adjusted(inset, inset, -inset, -inset);
      for (const QPoint at : {rect.topLeft(), rect.topRight(), rect.bottomLeft(), rect.bottomRight()}) {
        QVERIFY(inset > 9 ? isContent(at) : isNear(shown.pixelColor(at), backdrop.pixelColor(at)));
      }
    }
    for (const int x : {stage.left(), stage.left() + 1, stage.right()}) QVERIFY(isContent({x, 150}));
    for (const int y : {stage.top(), stage.bottom()}) QVERIFY(isContent({200, y}));
    QVERIFY(!isContent({27, 27}) && shown.pixelColor(27, 27).green() > backdrop.pixelColor(27, 27).green());
  }
};

QTEST_MAIN(BackdropTest)
#include "BackdropTest.moc"
