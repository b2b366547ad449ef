#include "PhotoViewGeometry.h"

#include <QTest>

using namespace lumagrid;

class PhotoViewGeometryTest : public QObject {
  Q_OBJECT

 private Q_SLOTS:
  void fits_data() {
    QTest::addColumn<QSizeF>("stage");
    QTest::addColumn<QSize>("photo");
    QTest::addColumn<QRectF>("rect");
    QTest::newRow("the width limits") << QSizeF(1100, 760) << QSize(3000, 1500) << QRectF(75, 142.5, 950, 475);
    QTest::newRow("the height limits") << QSizeF(1100, 760) << QSize(1000, 2000) << QRectF(389, 58, 322, 644);
    QTest::newRow("a small photo is scaled up") << QSizeF(1100, 760) << QSize(10, 10) << QRectF(228, 58, 644, 644);
    QTest::newRow("the box is never below 180") << QSizeF(100, 50) << QSize(9, 9) << QRectF(-40, -65, 180, 180);
    QTest::newRow("no photo") << QSizeF(1100, 760) << QSize() << QRectF();
  }
  void fits() {
    QFETCH(QSizeF, stage);
    QFETCH(QSize, photo);
    QFETCH(QRectF, rect);
    QCOMPARE(fittedRect(stage, photo), rect);
  }

  void alignsToTheScreensPixels() {
    QCOMPARE(pixelAligned({75, 60.25, 950, 633.4}, {0.5, 0.25}, 1), QRectF(75.5, 60.75, 950, 633));
    QCOMPARE(pixelAligned({1, 2, 3, 5}, {1, 0}, 1.5), QRectF(1, 2, 10 / 3.0, 16 / 3.0));
    QCOMPARE(pixelAligned({0, 100, 900, 0.1}, {}, 1), QRectF(0, 100, 900, 1));  // never thinner than a pixel
  }

  void scalesAboutTheCentreAndThenMoves() {
    QCOMPARE(placedRect({100, 50, 800, 500}, {1000, 600}, {2, {40, -25}}), QRectF(-260, -225, 1600, 1000));
  }

  void choosesTheLevelThatIsSharpEnough() {
    const QList<std::pair<double, int>> levels{{0.2, 0}, {1.999, 0}, {2.0, 1}, {6.56, 2}, {100.0, 3}};
    for (const auto& [photoPixels, level] : levels) QCOMPARE(levelFor(photoPixels, 4), level);
  }

  void findsVisibleTiles() {
    const auto tiles = [](const QRectF& visible) { return tilesTouching(visible, {20000, 10000}, 0); };
    QCOMPARE(tiles({510, 0, 510, 510}), QRect(1, 0, 1, 1));  // up to a tile's edge, not past it
    QCOMPARE(tiles({700.2, 700.2, 0.1, 0.1}), QRect(1, 1, 1, 1));
    QCOMPARE(tiles({-1e6, -1e6, 2e6, 2e6}), QRect(0, 0, 40, 20));
    QCOMPARE(tiles({20001, 0, 1100, 760}), QRect());  // dragged out of sight
  }

  // Each level's tiles cover the photo once; each is uploaded whole, with its border, in at most 512 x 512.
  void tilesCoverThePhotoOnce() {
    const QSize photo(20000, 10001);
    QSize levelSize = photo;
    for (int level = 0; level < 6; ++level) {
      double area = 0;
      const QRect tiles = tilesTouching(QRectF(QPointF(), QSizeF(photo)), photo, level);
      for (int row = tiles.top(); row <= tiles.bottom(); ++row) {
        for (int column = tiles.left(); column <= tiles.right(); ++column) {
          const PhotoTile tile{level, column, row};
          const QRectF part = tile.photoRect(photo);
          const QRect texels = tile.texels(levelSize);
          const QRectF source = tile.sourceRect(part);
          area += part.width() * part.height();
          QVERIFY(!part.isEmpty() && !texels.isEmpty() && texels.width() <= 512 && texels.height() <= 512);
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
      levelSize = {(levelSize.width() + 1) / 2, (levelSize.height() + 1) / 2};
    }
  }
};

QTEST_APPLESS_MAIN(PhotoViewGeometryTest)
#include "PhotoViewGeometryTest.moc"
