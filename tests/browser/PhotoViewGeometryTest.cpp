#include <QTest>

#include "PhotoViewGeometry.h"

using namespace lumagrid;

class PhotoViewGeometryTest : public QObject {
  Q_OBJECT

 private Q_SLOTS:
  void fits_data() {
    QTest::addColumn<QSizeF>("stage");
    QTest::addColumn<QSize>("photo");
    QTest::addColumn<QRectF>("rect");
    QTest::newRow("a small stage keeps a box of 180") << QSizeF(300, 250) << QSize(50, 50) << QRectF(60, 35, 180, 180);
    QTest::newRow("a wide photo in the small box") << QSizeF(300, 250) << QSize(2000, 1000) << QRectF(60, 80, 180, 90);
    QTest::newRow("the width limits") << QSizeF(1100, 760) << QSize(3000, 1500) << QRectF(75, 142.5, 950, 475);
    QTest::newRow("the height limits") << QSizeF(1100, 760) << QSize(1000, 2000) << QRectF(389, 58, 322, 644);
    QTest::newRow("a small photo is scaled up") << QSizeF(1100, 760) << QSize(10, 10) << QRectF(228, 58, 644, 644);
    QTest::newRow("the box may be larger than the stage")
        << QSizeF(100, 50) << QSize(9, 9) << QRectF(-40, -65, 180, 180);
    QTest::newRow("one pixel high") << QSizeF(1150, 616) << QSize(10000, 1) << QRectF(75, 307.95, 1000, 0.1);
    QTest::newRow("no photo") << QSizeF(1100, 760) << QSize() << QRectF();
  }
  void fits() {
    QFETCH(QSizeF, stage);
    QFETCH(QSize, photo);
    QFETCH(QRectF, rect);
    QCOMPARE(fittedRect(stage, photo), rect);
  }

  void alignsToPixels_data() {
    QTest::addColumn<QRectF>("rect");
    QTest::addColumn<QPointF>("origin");
    QTest::addColumn<double>("ratio");
    QTest::addColumn<QRectF>("aligned");
    QTest::newRow("whole points") << QRectF(75, 60.25, 950, 633.4) << QPointF(10, 10) << 1.0
                                  << QRectF(75, 60, 950, 633);
    QTest::newRow("half points on a fine screen")
        << QRectF(75.3, 60, 95.6, 63) << QPointF() << 2.0 << QRectF(75.5, 60, 95.5, 63);
    QTest::newRow("a stage between pixels")
        << QRectF(75, 60, 950, 633) << QPointF(0.5, 0.25) << 1.0 << QRectF(75.5, 59.75, 950, 633);
    QTest::newRow("one and a half") << QRectF(1, 2, 3, 5) << QPointF(1, 0) << 1.5 << QRectF(1, 2, 10 / 3.0, 16 / 3.0);
    QTest::newRow("never thinner than a pixel")
        << QRectF(0, 100, 900, 0.1) << QPointF() << 1.0 << QRectF(0, 100, 900, 1);
  }
  void alignsToPixels() {
    QFETCH(QRectF, rect);
    QFETCH(QPointF, origin);
    QFETCH(double, ratio);
    QFETCH(QRectF, aligned);
    QCOMPARE(pixelAligned(rect, origin, ratio), aligned);
  }

  void places_data() {
    QTest::addColumn<PhotoPlacement>("placement");
    QTest::addColumn<QRectF>("placed");
    QTest::newRow("fitted") << PhotoPlacement{} << QRectF(100, 50, 800, 500);
    QTest::newRow("scaled about the centre") << PhotoPlacement{2, {}} << QRectF(-300, -200, 1600, 1000);
    QTest::newRow("the offset is not scaled") << PhotoPlacement{2, {40, -25}} << QRectF(-260, -225, 1600, 1000);
  }
  void places() {
    QFETCH(PhotoPlacement, placement);
    QFETCH(QRectF, placed);
    QCOMPARE(placedRect({100, 50, 800, 500}, {1000, 600}, placement), placed);
  }

  void choosesLevel_data() {
    QTest::addColumn<double>("density");
    QTest::addColumn<int>("level");
    QTest::newRow("magnified") << 0.2 << 0;
    QTest::newRow("pixel by pixel") << 1.0 << 0;
    QTest::newRow("just below two") << 1.999 << 0;
    QTest::newRow("two") << 2.0 << 1;
    QTest::newRow("a camera's photo, fitted") << 6.56 << 2;
    QTest::newRow("the coarsest there is") << 100.0 << 3;
  }
  void choosesLevel() {
    QFETCH(double, density);
    QFETCH(int, level);
    QCOMPARE(levelFor(density, 4), level);
  }

  void findsVisibleTiles_data() {
    QTest::addColumn<QRectF>("visible");
    QTest::addColumn<int>("level");
    QTest::addColumn<QRect>("tiles");
    QTest::newRow("all of the finest") << QRectF(-1e6, -1e6, 2e6, 2e6) << 0 << QRect(0, 0, 40, 20);
    QTest::newRow("all of a coarser one") << QRectF(0, 0, 20000, 10000) << 3 << QRect(0, 0, 5, 3);
    QTest::newRow("a window in the middle") << QRectF(5000, 5000, 1100, 760) << 0 << QRect(9, 9, 3, 3);
    QTest::newRow("up to a tile's edge, not past it") << QRectF(510, 0, 510, 510) << 0 << QRect(1, 0, 1, 1);
    QTest::newRow("the last corner") << QRectF(19999.5, 9999.5, 50, 50) << 0 << QRect(39, 19, 1, 1);
    QTest::newRow("dragged out of sight") << QRectF(20001, 0, 1100, 760) << 0 << QRect();
    QTest::newRow("a part of a pixel") << QRectF(700.2, 700.2, 0.1, 0.1) << 0 << QRect(1, 1, 1, 1);
  }
  void findsVisibleTiles() {
    QFETCH(QRectF, visible);
    QFETCH(int, level);
    QFETCH(QRect, tiles);
    QCOMPARE(tilesTouching(visible, {20000, 10000}, level), tiles);
  }

  // Each level's tiles cover the photo once; each is uploaded whole, with its border, in at most 512 x 512.
  void tilesCoverThePhotoOnce_data() {
    QTest::addColumn<int>("level");
    for (int level = 0; level < 6; ++level) {
      QTest::addRow("level %d", level) << level;
    }
  }
  void tilesCoverThePhotoOnce() {
    QFETCH(int, level);
    const QSize photo(20000, 10001);
    QSize levelSize = photo;
    for (int i = 0; i < level; ++i) {
      levelSize = {(levelSize.width() + 1) / 2, (levelSize.height() + 1) / 2};
    }
    double area = 0;
    const QRect tiles = tilesTouching(QRectF(QPointF(), QSizeF(photo)), photo, level);
    for (int row = tiles.top(); row <= tiles.bottom(); ++row) {
      for (int column = tiles.left(); column <= tiles.right(); ++column) {
        const PhotoTile tile{level, column, row};
        const QRectF part = tile.photoRect(photo);
        const QRect texels = tile.texels(levelSize);
        const QRectF source = tile.sourceRect(part);
        area += part.width() * part.height();
        QVERIFY(!part.isEmpty() && !texels.isEmpty());
        QVERIFY(texels.width() <= 512 && texels.height() <= 512);
        QVERIFY(QRectF(QPointF(), QSizeF(texels.size())).contains(source));
        QVERIFY(tile.parent().photoRect(photo).contains(part));
        // A border texel lies between the part and the texture's edge, but at the photo's own edges.
        QCOMPARE(source.left() >= 1, column > 0);
        QCOMPARE(texels.width() - source.right() >= 1, column < tiles.right());
        QCOMPARE(source.top() >= 1, row > 0);
        QCOMPARE(texels.height() - source.bottom() >= 1, row < tiles.bottom());
      }
    }
    QCOMPARE(area, 20000.0 * 10001.0);
  }
};

QTEST_APPLESS_MAIN(PhotoViewGeometryTest)
#include "PhotoViewGeometryTest.moc"
