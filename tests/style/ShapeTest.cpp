#include <QTest>
#include <cmath>
#include <numbers>

#include "ContinuousPath.h"
#include "ShapeImage.h"

using namespace lumagrid;

namespace {

double coverage(const NinePatch& patch, int x, int y) {
  return qAlpha(patch.image.pixel(x + patch.outset, y + patch.outset)) / 255.0;
}

// The part of a Gaussian of `sigma` that lies further than `distance` on one side.
double gaussianTail(double distance, double sigma) {
  return 0.5 * std::erfc(distance / (sigma * std::numbers::sqrt2));
}

}  // namespace

class ShapeTest : public QObject {
  Q_OBJECT

 private Q_SLOTS:
  void path_data();
  void path();
  void pathTakesAnyRadius();
  void fillMeetsThePixelGrid_data();
  void fillMeetsThePixelGrid();
  void strokeIsCentredOnThePath();
  void shadowIsGaussian_data();
  void shadowIsGaussian();
  void largeShapesShareOnePicture();
};

void ShapeTest::path_data() {
  QTest::addColumn<QSizeF>("size");
  QTest::addColumn<double>("radius");
  QTest::addColumn<double>("reach");  // points along each edge

  QTest::newRow("long sides give corners their full reach") << QSizeF(180, 140) << 20.0 << 30.5733;
  QTest::newRow("a short side shortens the reach on both axes") << QSizeF(200, 50) << 20.0 << 25.0;
  QTest::newRow("a capsule has half circles") << QSizeF(120, 34) << 17.0 << 17.0;
  QTest::newRow("a square with half its side is a circle") << QSizeF(56, 56) << 28.0 << 28.0;
}

void ShapeTest::path() {
  QFETCH(const QSizeF, size);
  QFETCH(const double, radius);
  QFETCH(const double, reach);

  const QRectF rect(QPointF(10, 20), size);
  const QPainterPath path = continuousRectanglePath(rect, radius);
  QCOMPARE(path.boundingRect(), rect);
  QVERIFY(std::abs(cornerReach(size, radius) * radius - reach) < 1e-3);

  // The corner cuts the diagonal where a circle does, on all four corners.
  const double inset = radius * (1 - 1 / std::numbers::sqrt2);
  for (const double sx : {-1.0, 1.0}) {
    for (const double sy : {-1.0, 1.0}) {
      const auto nearCorner = [&](double distance) {
        return rect.center() + QPointF(sx * (size.width() / 2 - distance), sy * (size.height() / 2 - distance));
      };
      QVERIFY(path.contains(nearCorner(inset + 0.02)));
      QVERIFY(!path.contains(nearCorner(inset - 0.02)));
    }
  }
  // Where the reach ends the edge is straight; well within it, it is not.
  QVERIFY(path.contains(QPointF(rect.left() + reach + 0.01, rect.top() + 0.01)));
  QVERIFY(!path.contains(QPointF(rect.left() + reach * 0.4, rect.top() + 0.01)));
}

void ShapeTest::pathTakesAnyRadius() {
  const QRectF rect(0, 0, 60, 40);
  QPainterPath plain;
  plain.addRect(rect);
  QCOMPARE(continuousRectanglePath(rect, 0), plain);
  QCOMPARE(continuousRectanglePath(rect, -3), plain);
  QCOMPARE(continuousRectanglePath(rect, 500), continuousRectanglePath(rect, 20));
  QVERIFY(continuousRectanglePath(QRectF(0, 0, 0, 40), 20).isEmpty());
}

void ShapeTest::fillMeetsThePixelGrid_data() {
  QTest::addColumn<double>("ratio");
  QTest::addColumn<QSizeF>("size");

  for (const double ratio : {1.0, 1.5, 2.0}) {
    QTest::addRow("a card at %.1f", ratio) << ratio << QSizeF(181, 181);
    QTest::addRow("a circle at %.1f", ratio) << ratio << QSizeF(34, 34);
    QTest::addRow("a capsule of odd sides at %.1f", ratio) << ratio << QSizeF(63, 41);
  }
}

void ShapeTest::fillMeetsThePixelGrid() {
  QFETCH(const double, ratio);
  QFETCH(const QSizeF, size);

  const NinePatch patch =
      shapeImage({.part = Shape::Part::fill, .radius = 20, .color = qRgb(31, 111, 95)}, size, ratio);
  const QImage& image = patch.image;
  const QPoint centre(patch.fixed.left() - 1, patch.fixed.top() - 1);
  // The middle of each edge is solid up to the last pixel, and the corners are empty.
  for (const QPoint point : {QPoint(centre.x(), 0), QPoint(centre.x(), image.height() - 1), QPoint(0, centre.y()),
                             QPoint(image.width() - 1, centre.y())}) {
    QVERIFY2(qAlpha(image.pixel(point)) > 240, qPrintable(QString::number(qAlpha(image.pixel(point)))));
  }
  QCOMPARE(image.pixel(centre), qRgb(31, 111, 95));
  QCOMPARE(qAlpha(image.pixel(0, 0)), 0);
  int difference = 0;
  for (int y = 0; y < image.height(); ++y) {
    for (int x = 0; x < image.width(); ++x) {
      for (const QPoint mirrored : {QPoint(image.width() - 1 - x, y), QPoint(x, image.height() - 1 - y)}) {
        difference = std::max(difference, std::abs(qAlpha(image.pixel(x, y)) - qAlpha(image.pixel(mirrored))));
      }
    }
  }
  QVERIFY2(difference <= 6, qPrintable(QString::number(difference)));  // of 255: the rasteriser's own rounding
}

void ShapeTest::strokeIsCentredOnThePath() {
  const NinePatch patch = shapeImage({.part = Shape::Part::stroke, .radius = 20, .extent = 3}, QSizeF(180, 180), 2);
  const int middle = patch.fixed.left() - patch.outset;
  QCOMPARE(patch.outset, 3);
  for (int y = -3; y < 3; ++y) QCOMPARE(coverage(patch, middle, y), 1.0);
  QCOMPARE(coverage(patch, middle, 3), 0.0);
  QCOMPARE(patch.middle, NinePatch::Middle::empty);
}

void ShapeTest::shadowIsGaussian_data() {
  QTest::addColumn<double>("blur");
  QTest::addColumn<double>("ratio");

  QTest::newRow("a tile's") << 8.0 << 1.0;
  QTest::newRow("a tile's at one and a half") << 8.0 << 1.5;
  QTest::newRow("a side button's at two") << 10.0 << 2.0;
}

void ShapeTest::shadowIsGaussian() {
  QFETCH(const double, blur);
  QFETCH(const double, ratio);

  const NinePatch patch =
      shapeImage({.part = Shape::Part::shadow, .radius = 20, .extent = blur}, QSizeF(200, 200), ratio);
  const double sigma = blur / 2 * ratio;
  const int middle = patch.fixed.left() - patch.outset;
  for (int y = -patch.outset; y < patch.outset; ++y) {
    // Two levels of eight bits, and what lies beyond three sigmas.
    QVERIFY(std::abs(coverage(patch, middle, y) - gaussianTail(-(y + 0.5), sigma)) < 0.01);
  }
}

void ShapeTest::largeShapesShareOnePicture() {
  const Shape shape{.part = Shape::Part::shadow, .radius = 20, .extent = 8};
  const NinePatch small = shapeImage(shape, QSizeF(120, 120), 2);
  const NinePatch large = shapeImage(shape, QSizeF(380.3, 311.7), 2);
  QCOMPARE(small.image.cacheKey(), large.image.cacheKey());
  QVERIFY(shapeImage(shape, QSizeF(120, 120), 1).image.cacheKey() != small.image.cacheKey());
}

QTEST_GUILESS_MAIN(ShapeTest)
#include "ShapeTest.moc"
