#include "GridMetrics.h"

#include <QTest>

using namespace lumagrid;

namespace {

// Tiles of 100 points in 4 columns: rows of 114 points from 24 on.
GridLayout layoutOf(std::int64_t count, QSizeF viewport = {600, 500}) {
  return {{100, 14, {24, 24, 24, 24}}, 4, count, viewport};
}

}  // namespace

class GridMetricsTest : public QObject {
  Q_OBJECT

 private Q_SLOTS:
  void fitsTheStage_data() {
    QTest::addColumn<QSizeF>("stage");
    QTest::addColumn<int>("dimension");
    QTest::addColumn<double>("side");
    QTest::newRow("the height limits") << QSizeF(1000, 700) << 4 << 152.0;
    QTest::newRow("the width limits") << QSizeF(400, 2000) << 2 << 169.0;
    QTest::newRow("whole points") << QSizeF(1064, 724) << 4 << 158.0;
    QTest::newRow("too small: the least side") << QSizeF(300, 300) << 6 << 88.0;
    QTest::newRow("too small: the least extent") << QSizeF(100, 100) << 2 << 100.0;
  }
  void fitsTheStage() {
    QFETCH(QSizeF, stage);
    QFETCH(int, dimension);
    QFETCH(double, side);
    QCOMPARE(GridMetrics::fitting(stage, dimension), (GridMetrics{side, 14, {24, 24, 24, 24}}));
  }

  void placesTiles() {
    const auto topLeft = [](double width, std::int64_t index) {
      return layoutOf(100'000, {width, 500}).tileRect(index).topLeft();
    };
    QCOMPARE(topLeft(601, 0), QPointF(79, 24));   // centred in the width, on whole points
    QCOMPARE(topLeft(300, 5), QPointF(43, 138));  // a grid wider than the viewport
    QCOMPARE(topLeft(600, 99'999), QPointF(421, 24 + 24'999 * 114.0));
  }

  void visibleRowsAreThoseThatTouchTheViewport() {
    const GridLayout layout = layoutOf(42, {600, 250});
    for (double contentY = -200; contentY <= layout.contentHeight() + 300; contentY += 1) {  // pulled beyond the ends
      const auto [first, last] = layout.visibleIndices(contentY);
      const QRectF viewport(-1000, contentY, 3000, 250);
      for (std::int64_t index = 0; index < layout.count; ++index) {
        QCOMPARE(index >= first && index < last, layout.tileRect(index).intersects(viewport));
      }
    }
    using Range = std::pair<std::int64_t, std::int64_t>;
    QCOMPARE(layoutOf(0).visibleIndices(0), Range(0, 0));
    QCOMPARE(layoutOf(3).visibleIndices(0), Range(0, 3));
    QCOMPARE(layoutOf(100'000).visibleIndices(24'999 * 114 + 148 - 500), Range(99'980, 100'000));
  }

  void centresAsFarAsThereIsContent() {
    const GridLayout layout = layoutOf(100'000);
    QCOMPARE(layout.centeringContentY(7), 0.0);
    QCOMPARE(layout.centeringContentY(50'000), 24 + 12'500 * 114.0 + 50 - 250);
    QCOMPARE(layout.centeringContentY(99'999), 24 + 25'000 * 114.0 - 14 + 24 - 500);
    QCOMPARE(layoutOf(8).centeringContentY(7), 0.0);
    QCOMPARE(layoutOf(0).contentHeight(), 0.0);
  }
};

QTEST_GUILESS_MAIN(GridMetricsTest)
#include "GridMetricsTest.moc"
