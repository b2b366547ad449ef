#include <QTest>
#include <cmath>

#include "GridMetrics.h"
#include "PhotoViewGeometry.h"
#include "PhotoViewMotion.h"

using namespace lumagrid;
using Curve = PhotoViewMotion::Curve;

// Where the tiles of the grid lie, the photo and its blocks, and how the photo moves.
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
    QCOMPARE(layoutOf(6, {601, 500}).tileRect(0), QRectF(79, 24, 100, 100));    // centred, on whole points
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
    QCOMPARE(fittedRect({1100, 760}, {3000, 1500}), QRectF(75, 142.5, 950, 475));
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
    const auto blocks = [](const QRectF& visible) { return blocksTouching(visible, {20000, 10000}, 0); };
    QCOMPARE(blocks({510, 0, 510, 510}), QRect(1, 0, 1, 1));  // up to a block's edge, not past it
    QCOMPARE(blocks({20001, 0, 1100, 760}), QRect());         // dragged out of sight
  }

  // Each level's blocks cover the photo once; each is uploaded whole, with its border, in at most 512 x 512.
  void blocksCoverThePhotoOnce() {
    const QSize photo(20000, 10001);
    QSize levelSize = photo;
    for (int level = 0; level < 6; ++level) {
      double area = 0;
      const QRect blocks = blocksTouching({-1e6, -1e6, 2e6, 2e6}, photo, level);
      for (int index = 0; index < blocks.width() * blocks.height(); ++index) {
        const PhotoBlock block{level, index % blocks.width(), index / blocks.width()};
        const QRectF part = block.photoRect(photo);
        const QRect texels = block.texels(levelSize);
        const QRectF source = block.sourceRect(part);
        area += part.width() * part.height();
        QVERIFY(texels.width() <= 512 && texels.height() <= 512);
        QVERIFY(block.parent().photoRect(photo).contains(part));
        // A border texel lies between the part and the texture's edge, but at the photo's own edges.
        QVERIFY(QRectF({}, QSizeF(texels.size()))
                    .adjusted(block.column > 0, block.row > 0, -(block.column < blocks.right()),
                              -(block.row < blocks.bottom()))
                    .contains(source));
      }
      QCOMPARE(area, 20000.0 * 10001.0);
      levelSize = {(levelSize.width() + 1) / 2, (levelSize.height() + 1) / 2};
    }
  }

  void movementsArrive() {
    for (const auto& [curve, longest] : {std::pair(Curve::Spring, 0.8), std::pair(Curve::EaseOut, 0.12)}) {
      const PhotoViewMotion motion(curve, m_zoomed, {});
      QVERIFY(motion.duration() <= longest);
      QCOMPARE(motion.at(0), m_zoomed);
      QCOMPARE(motion.at(motion.duration()), ZoomState{});
      // The last step cannot be seen.
      const ZoomState nearly = motion.at(motion.duration() - 0.0001);
      QVERIFY(std::abs(nearly.scale - 1) < 0.001 && std::hypot(nearly.offset.x(), nearly.offset.y()) < 0.5);
    }
  }

  void newTargetKeepsPlaceAndSpeed() {
    const PhotoViewMotion first(Curve::Spring, m_zoomed, {});
    const PhotoViewMotion second = first.retargeted(Curve::Spring, {2, {-50, 70}}, 0.1);
    QVERIFY(std::abs(second.at(0).scale - first.at(0.1).scale) < 1e-9);
    const double before = first.at(0.1).scale - first.at(0.09999).scale;
    QVERIFY(std::abs(second.at(0.00001).scale - second.at(0).scale - before) < 5e-7);
    QCOMPARE(second.at(second.duration()), (ZoomState{2, {-50, 70}}));
  }

 private:
  // Tiles of 100 points in 4 columns: rows of 114 points from 24 on.
  static GridLayout layoutOf(std::int64_t count, QSizeF viewport = {600, 500}) {
    return {{100, 14, {24, 24, 24, 24}}, 4, count, viewport};
  }

  const ZoomState m_zoomed{4, {300, -200}};
};

QTEST_APPLESS_MAIN(GeometryTest)
#include "GeometryTest.moc"
