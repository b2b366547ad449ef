#include "Backdrop.h"

#include <QTest>
#include <cmath>

using namespace lumagrid;

class BackdropTest : public QObject {
  Q_OBJECT

 private Q_SLOTS:
  // The coverages are those of a disc of radius 210, blurred by a Gaussian of 16 and of 24 points and summed up point
  // by point around the centres of the pixels: 0.6 levels are the rounding and little more.
  void isAGradientUnderTwoBlurredDiscs() {
    const QImage image = backdropImage({1100, 760}, 1, ColorScheme::light, {0, 0, 1100, 760});
    for (const auto& [distance, warm, teal] :
         {std::tuple(0, 1.0, 1.0), {206, 0.5708, 0.5512}, {218, 0.2842, 0.3558}, {240, 0.026, 0.0996}}) {
      const double blue = 238 - 41 * 80.5 / 760;  // of the gradient
      QVERIFY(std::abs(blue + (107 - blue) * 0.24 * warm - image.pixelColor(110 + distance, 80).blue()) <= 0.6);
      const double red = 251 - 10 * (700.5 - distance) / 760;
      QVERIFY(std::abs(red + (31 - red) * 0.18 * teal - image.pixelColor(1010, 700 - distance).red()) <= 0.6);
    }
  }

  void partsAgreeWithTheWhole() {
    const auto draw = [](QRect part) { return backdropImage({1100, 760}, 1.5, ColorScheme::light, part); };
    const QImage whole = draw({0, 0, 1650, 1140});
    QCOMPARE(draw({200, 90, 130, 40}), whole.copy(200, 90, 130, 40));
  }
};

QTEST_APPLESS_MAIN(BackdropTest)
#include "BackdropTest.moc"
