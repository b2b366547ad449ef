#include <QTest>
#include <cmath>
#include <numbers>

#include "ContinuousPath.h"
#include "ShapeImage.h"
#include "SpinnerImage.h"

using namespace lumagrid;

// The shapes and spinners that the window is drawn with.
class StyleImagesTest : public QObject {
  Q_OBJECT

 private Q_SLOTS:
  void path_data() {
    QTest::addColumn<QSizeF>("size");
    QTest::addColumn<double>("radius");
    QTest::addColumn<double>("reach");  // points along each edge
    QTest::newRow("long sides give corners their full reach") << QSizeF(180, 140) << 20.0 << 30.5733;
    QTest::newRow("a short side shortens the reach on both axes") << QSizeF(200, 50) << 20.0 << 25.0;
    QTest::newRow("a radius beyond half of a side is cut") << QSizeF(120, 34) << 500.0 << 17.0;
  }

  void path() {
    QFETCH(const QSizeF, size);
    QFETCH(double, radius);
    QFETCH(const double, reach);
    const QRectF rect(QPointF(10, 20), size);
    const QPainterPath path = continuousRectanglePath(rect, radius);
    QCOMPARE(path.boundingRect(), rect);
    radius = std::min(radius, size.height() / 2);
    QVERIFY(std::abs(cornerReach(size, radius) * radius - reach) < 1e-3);

    // The corner cuts the diagonal where a circle does.
    const double inset = radius * (1 - 1 / std::numbers::sqrt2);
    QVERIFY(path.contains(rect.topLeft() + QPointF(inset + 0.02, inset + 0.02)));
    QVERIFY(!path.contains(rect.topLeft() + QPointF(inset - 0.02, inset - 0.02)));
    // Where the reach ends the edge is straight; well within it, it is not.
    QVERIFY(path.contains(QPointF(rect.left() + reach + 0.01, rect.top() + 0.01)));
    QVERIFY(!path.contains(QPointF(rect.left() + reach * 0.4, rect.top() + 0.01)));
  }

  void fillMeetsThePixelGrid() {
    const Shape shape{.part = Shape::Part::fill, .radius = 20, .color = qRgb(31, 111, 95)};
    for (const double ratio : {1.0, 1.5, 2.0}) {
      for (const QSizeF size : {QSizeF(181, 181), QSizeF(34, 34), QSizeF(63, 41)}) {
        const NinePatch patch = shapeImage(shape, size, ratio);
        const QImage& image = patch.image;
        const QPoint centre(patch.border.left() - 1, patch.border.top() - 1);
        // The middle of each edge is solid up to the last pixel, and the corners are empty.
        QCOMPARE(image.pixel(centre), shape.color);
        QVERIFY(qAlpha(image.pixel(centre.x(), 0)) > 240 && qAlpha(image.pixel(0, centre.y())) > 240);
        QCOMPARE(qAlpha(image.pixel(0, 0)), 0);
        int difference = 0;
        for (int y = 0; y < image.height(); ++y) {
          for (int x = 0; x < image.width(); ++x) {
            const int opposite = qAlpha(image.pixel(image.width() - 1 - x, image.height() - 1 - y));
            difference = std::max(difference, std::abs(qAlpha(image.pixel(x, y)) - opposite));
          }
        }
        QVERIFY2(difference <= 6, qPrintable(QString::number(difference)));  // of 255: the rasteriser's own rounding
      }
    }
  }

  void shadowIsGaussian() {
    for (const double ratio : {1.0, 1.5}) {
      const Shape shape{.part = Shape::Part::shadow, .radius = 20, .blur = 8};
      const NinePatch patch = shapeImage(shape, QSizeF(200, 200), ratio);
      for (int y = -patch.outset; y < patch.outset; ++y) {
        // Of a Gaussian with a sigma of 4 points, the part beyond the edge; but for two levels of eight bits.
        const double tail = 0.5 * std::erfc(-(y + 0.5) / (4 * ratio * std::numbers::sqrt2));
        const int alpha = qAlpha(patch.image.pixel(patch.border.left(), y + patch.outset));
        QVERIFY(std::abs(alpha / 255.0 - tail) < 0.01);
      }
      // Large shapes share one picture for each ratio.
      QCOMPARE(patch.image.cacheKey(), shapeImage(shape, QSizeF(380.3, 311.7), ratio).image.cacheKey());
      QVERIFY(patch.image.cacheKey() != shapeImage(shape, QSizeF(200, 200), 2).image.cacheKey());
    }
  }

  void spinnerStepsDifferAndRepeat() {
    const QRgb color = qRgb(90, 90, 90);
    const QImage first = spinnerImage(0, 20, color, 2);
    for (int step = 1; step < kSpinnerSteps; ++step) QVERIFY(spinnerImage(step, 20, color, 2) != first);
    QCOMPARE(spinnerImage(-kSpinnerSteps, 20, color, 2), first);
  }
};

QTEST_GUILESS_MAIN(StyleImagesTest)
#include "StyleImagesTest.moc"
