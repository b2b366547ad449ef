#include "Backdrop.h"

#include <QTest>
#include <cmath>

using namespace lumagrid;

class BackdropTest : public QObject {
  Q_OBJECT

 private Q_SLOTS:
  // The coverages are those of a disc of radius 210 at distances from its centre, blurred by a Gaussian of 16 and of 24
  // points and summed up point by point.
  void isAGradientUnderTwoBlurredDiscs() {
    const QImage image = backdropImage({1100, 760}, 1, ColorScheme::light, {0, 0, 1100, 760});
    for (const auto& [distance, warm, teal] :
         {std::tuple(0, 1.0, 1.0), {200, 0.7195, 0.639}, {220, 0.2524, 0.3175}, {240, 0.0277, 0.0958}}) {
      const double blue = 238 - 41 * 80.5 / 760;  // of the gradient
      QVERIFY(std::abs(blue + (107 - blue) * 0.24 * warm - image.pixelColor(110 + distance, 80).blue()) <= 2);
      const double red = 251 - 10 * (700.5 - distance) / 760;
      QVERIFY(std::abs(red + (31 - red) * 0.18 * teal - image.pixelColor(1010, 700 - distance).red()) <= 2);
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
