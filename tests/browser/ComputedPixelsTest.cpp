#include <QRandomGenerator>
#include <QTest>
#include <cmath>
#include <thread>

#include "Backdrop.h"
#include "PhotoPyramid.h"

using namespace lumagrid;

namespace {

QImage picture(const QList<QList<int>>& greys) {
  QImage image(int(greys[0].size()), int(greys.size()), QImage::Format_RGBX8888);
  for (int y = 0; y < image.height(); ++y) {
    for (int x = 0; x < image.width(); ++x) image.setPixel(x, y, qRgb(greys[y][x], greys[y][x], greys[y][x]));
  }
  return image;
}

}  // namespace

// Pixels that are computed: the backdrop, and photos made smaller.
class ComputedPixelsTest : public QObject {
  Q_OBJECT

 private Q_SLOTS:
  void averages() {
    QCOMPARE(halved(picture({{0, 0}, {1, 1}})), picture({{1}}));      // rounded, not cut
    QCOMPARE(halved(picture({{0, 90, 255}})), picture({{45, 255}}));  // the last column counts twice
    QCOMPARE(halved(picture({{0}, {90}, {255}})), picture({{45}, {255}}));
  }

  // Transparent pixels carry no colour, so they must not darken or tint what lies beside them.
  void averagesPremultipliedPixels() {
    QImage edge(2, 1, QImage::Format_ARGB32);
    edge.setPixel(0, 0, qRgba(200, 100, 0, 255));
    edge.setPixel(1, 0, qRgba(0, 0, 0, 0));
    const QImage photo = PhotoPyramid(edge).photo();
    QCOMPARE(halved(photo).pixel(0, 0), qRgba(100, 50, 0, 128));
  }

  // A frame may ask for levels while a thread builds them: they come finest first, and whole.
  void levelsAreReadWhileTheyAreBuilt() {
    QImage photo(3001, 1201, QImage::Format_RGBX8888);
    QRandomGenerator(1).fillRange(reinterpret_cast<quint32*>(photo.bits()), photo.sizeInBytes() / 4);
    PhotoPyramid pyramid(photo);
    QCOMPARE(pyramid.level(0).constBits(), photo.constBits());  // shared, not copied
    {
      const std::jthread builder([&pyramid] {
        while (pyramid.buildNextLevel()) {
        }
      });
      while (pyramid.level(2).isNull()) std::this_thread::yield();
      QCOMPARE(pyramid.level(1), halved(photo));
    }
    QCOMPARE(pyramid.level(3).size(), QSize(376, 151));
    // Not from a level, since those of odd sizes reach past the photo's edge.
    const QImage fitted = photo.scaled(300, 60, Qt::IgnoreAspectRatio, Qt::SmoothTransformation);
    QCOMPARE(pyramid.fitted({300, 60}), fitted);
  }

  // The coverages are those of a disc of radius 210, blurred by a Gaussian of 16 and of 24 points and summed up point
  // by point around the centres of the pixels: 0.6 levels are the rounding and little more.
  void isAGradientUnderTwoBlurredDiscs() {
    const QImage image = backdropImage({{1100, 760}}, {0, 0, 1100, 760});
    for (const auto& [distance, warm, teal] :
         {std::tuple(0, 1.0, 1.0), {206, 0.5708, 0.5512}, {218, 0.2842, 0.3558}, {240, 0.026, 0.0996}}) {
      const double blue = 238 - 41 * 80.5 / 760;  // of the gradient
      QVERIFY(std::abs(blue + (107 - blue) * 0.24 * warm - image.pixelColor(110 + distance, 80).blue()) <= 0.6);
      const double red = 251 - 10 * (700.5 - distance) / 760;
      QVERIFY(std::abs(red + (31 - red) * 0.18 * teal - image.pixelColor(1010, 700 - distance).red()) <= 0.6);
    }
  }

  void partsAgreeWithTheWhole() {
    const Backdrop backdrop{{1100, 760}, 1.5, ColorScheme::dark, {18, 40, 1064, 702}};
    const auto draw = [&](QRect part) { return backdropImage(backdrop, part); };
    const QImage whole = draw({0, 0, 1650, 1140});
    QCOMPARE(draw({200, 90, 130, 40}), whole.copy(200, 90, 130, 40));
  }
};

QTEST_APPLESS_MAIN(ComputedPixelsTest)
#include "ComputedPixelsTest.moc"
