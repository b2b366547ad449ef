#include <QTest>
#include <cmath>

#include "GridMetrics.h"
#include "PhotoPyramid.h"
#include "PhotoViewGeometry.h"
#include "PhotoViewMotion.h"

using namespace lumagrid;
using Curve = PhotoViewMotion::Curve;

namespace {

QImage picture(const QList<QList<int>>& grays) {
  QImage image(int(grays[0].size()), int(grays.size()), QImage::Format_RGBX8888);
  for (int y = 0; y < image.height(); ++y) {
    for (int x = 0; x < image.width(); ++x) image.setPixel(x, y, qRgb(grays[y][x], grays[y][x], grays[y][x]));
  }
  return image;
}

}  // namespace

// Where the tiles of the grid and the photo lie; how the photo moves; and the pixels that are computed.
class GeometryTest : public QObject {
  Q_OBJECT

 private Q_SLOTS:
  void gridFitsTheStage() {
    const auto side = [](QSizeF stage, int dimension) { return GridMetrics::fitting(stage, dimension).cellSide; };
    QCOMPARE(side({1000, 700}, 4), 152.0);  // the height limits
    QCOMPARE(side({400, 2000}, 2), 169.0);  // the width limits
    QCOMPARE(side({300, 300}, 6), 88.0);    // never smaller
    QCOMPARE(side({100, 100}, 2), 100.0);   // nor less for all of them
  }

  void placesTheTilesOfTheGrid() {
    QCOMPARE(layoutOf(6, {601, 500}).tileRect(0), QRectF(79, 24, 100, 100));    // centered, on whole points
    QCOMPARE(layoutOf(6, {300, 500}).tileRect(5).topLeft(), QPointF(43, 138));  // wider than the viewport
    const GridLayout layout = layoutOf(100'000);
    QCOMPARE(layout.centeringContentY(7), 0.0);
    QCOMPARE(layout.centeringContentY(50'000), 24 + 12'500 * 114.0 + 50 - 250);
    QCOMPARE(layout.centeringContentY(99'999), 24 + 25'000 * 114.0 - 14 + 24 - 500);
    QCOMPARE(layoutOf(8).centeringContentY(7), 0.0);
  }

  void visibleRowsAreThoseThatTouchTheViewport() {
    const GridLayout layout = layoutOf(42, {600, 250});
    for (int contentY = -200; contentY <= int(layout.contentHeight()) + 300; ++contentY) {  // pulled beyond the ends
      const auto [first, last] = layout.visibleIndices(contentY);
      const QRectF viewport(-1000, contentY, 3000, 250);
      for (std::int64_t index = 0; index < layout.count; ++index) {
        QCOMPARE(index >= first && index < last, layout.tileRect(index).intersects(viewport));
      }
    }
    QCOMPARE(layoutOf(0).visibleIndices(0), (std::pair<std::int64_t, std::int64_t>(0, 0)));
  }

  void placesThePhoto() {
    QCOMPARE(fittedRect({1100, 760}, {5, 10}), QRectF(389, 58, 322, 644));
    QCOMPARE(fittedRect({100, 50}, {9, 9}), QRectF(-40, -65, 180, 180));  // the box is never smaller
    QCOMPARE(fittedRect({1100, 760}, {}), QRectF());
    QCOMPARE(pixelAligned({1, 2, 3, 5}, {1, 0}, 1.5), QRectF(1, 2, 10 / 3.0, 16 / 3.0));
    QCOMPARE(pixelAligned({0, 100, 900, 0.1}, {}, 1), QRectF(0, 100, 900, 1));  // never thinner than a pixel
    QCOMPARE(zoomedRect({100, 50, 800, 500}, {1000, 600}, {2, {40, -25}}), QRectF(-260, -225, 1600, 1000));
  }

  void choosesLevelAndBlocks() {
    for (const auto& [photoPixels, level] : {std::pair(0.2, 0), {1.999, 0}, {2.0, 1}, {6.56, 2}, {100.0, 3}}) {
      QCOMPARE(levelFor(photoPixels, 4), level);
    }
    const QSize photo(20000, 10001);
    QCOMPARE(blocksTouching({510, 0, 510, 510}, photo, 0), QRect(1, 0, 1, 1));  // up to a block's edge, not past it
    QCOMPARE(blocksTouching({20001, 0, 1100, 760}, photo, 0), QRect());         // dragged out of sight
    // The blocks cover the photo once; each is uploaded whole, with its border, in at most 512 x 512.
    double area = 0;
    const QRect all = blocksTouching(QRectF({}, QSizeF(photo)), photo, 3);
    for (int index = 0; index < all.width() * all.height(); ++index) {
      const PhotoBlock block{3, index % all.width(), index / all.width()};
      const QRectF part = block.photoRect(photo);
      const QRect texels = block.texels({2500, 1251});
      area += part.width() * part.height();
      QVERIFY(texels.width() <= 512 && texels.height() <= 512);
      QVERIFY(block.parent().photoRect(photo).contains(part));
      // A border texel lies between the part and the texture's edge, but at the photo's own edges.
      const int right = block.column < all.right();
      const int bottom = block.row < all.bottom();
      const QRectF inner = QRectF({}, QSizeF(texels.size())).adjusted(block.column > 0, block.row > 0, -right, -bottom);
      QVERIFY(inner.contains(block.sourceRect(part)));
    }
    QCOMPARE(area, 20000.0 * 10001.0);
  }

  void newTargetKeepsPlaceAndSpeed() {
    const PhotoViewMotion first(Curve::Spring, {4, {300, -200}}, {});
    const PhotoViewMotion second = first.retargeted(Curve::Spring, {2, {-50, 70}}, 0.1);
    QVERIFY(std::abs(second.at(0).scale - first.at(0.1).scale) < 1e-9);
    const double before = first.at(0.1).scale - first.at(0.09999).scale;
    QVERIFY(std::abs(second.at(0.00001).scale - second.at(0).scale - before) < 5e-7);
    QCOMPARE(second.at(second.duration()), (ZoomState{2, {-50, 70}}));
  }

  void averages() {
    QCOMPARE(halved(picture({{0, 0}, {1, 1}})), picture({{1}}));      // rounded, not cut
    QCOMPARE(halved(picture({{0, 90, 255}})), picture({{45, 255}}));  // the last column counts twice
    QCOMPARE(halved(picture({{0}, {90}, {255}})), picture({{45}, {255}}));
  }

  // A level of an odd size reaches past the photo's edge.
  void fitsThePhotoWithoutItsLevelsOfOddSizes() {
    const QImage photo = picture({{0, 90, 255}}).scaled(1501, 1501);
    PhotoPyramid pyramid(photo);
    while (pyramid.buildNextLevel()) continue;
    QCOMPARE(pyramid.fitted({7, 7}), photo.scaled(7, 7, Qt::IgnoreAspectRatio, Qt::SmoothTransformation));
  }

  // Transparent pixels carry no color, so they must not darken or tint what lies beside them.
  void averagesPremultipliedPixels() {
    QImage edge(2, 1, QImage::Format_ARGB32);
    edge.setPixel(0, 0, qRgba(200, 100, 0, 255));
    edge.setPixel(1, 0, qRgba(0, 0, 0, 0));
    const QImage photo = PhotoPyramid(edge).photo();
    QCOMPARE(halved(photo).pixel(0, 0), qRgba(100, 50, 0, 128));
  }

 private:
  // Tiles of 100 points in 4 columns: rows of 114 points from 24 on.
  static GridLayout layoutOf(std::int64_t count, QSizeF viewport = {600, 500}) {
    return {{100, 14, {24, 24, 24, 24}}, 4, count, viewport};
  }
};

QTEST_APPLESS_MAIN(GeometryTest)
#include "GeometryTest.moc"
