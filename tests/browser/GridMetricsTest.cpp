#include "GridMetrics.h"

#include <QTest>

using namespace lumagrid;

namespace {

using Range = std::pair<std::int64_t, std::int64_t>;

// Tiles of 100 points in 4 columns: rows of 114 points from 24 on.
GridLayout layoutOf(std::int64_t count, QSizeF viewport = {600, 500}) {
  return {{100, 14, {24, 24, 24, 24}}, 4, count, viewport};
}

}  // namespace

class GridMetricsTest : public QObject {
  Q_OBJECT

 private Q_SLOTS:
  void fitsTheStage_data();
  void fitsTheStage();
  void placesTiles_data();
  void placesTiles();
  void findsVisibleRows_data();
  void findsVisibleRows();
  void visibleRowsAreThoseThatTouchTheViewport();
  void centresAndClamps_data();
  void centresAndClamps();
};

void GridMetricsTest::fitsTheStage_data() {
  QTest::addColumn<QSizeF>("stage");
  QTest::addColumn<int>("dimension");
  QTest::addColumn<double>("side");
  QTest::newRow("the height limits") << QSizeF(1000, 700) << 4 << 152.0;
  QTest::newRow("two columns") << QSizeF(1064, 724) << 2 << 331.0;
  QTest::newRow("four columns") << QSizeF(1064, 724) << 4 << 158.0;
  QTest::newRow("six columns") << QSizeF(1064, 724) << 6 << 101.0;
  QTest::newRow("the width limits") << QSizeF(400, 2000) << 2 << 169.0;
  QTest::newRow("too small: the least side") << QSizeF(300, 300) << 6 << 88.0;
  QTest::newRow("too small: the least extent") << QSizeF(100, 100) << 2 << 100.0;
  QTest::newRow("no stage") << QSizeF(0, 0) << 3 << 88.0;
}

void GridMetricsTest::fitsTheStage() {
  QFETCH(QSizeF, stage);
  QFETCH(int, dimension);
  QFETCH(double, side);
  const GridMetrics metrics = GridMetrics::fitting(stage, dimension);
  QCOMPARE(metrics, (GridMetrics{side, 14, {24, 24, 24, 24}}));
}

void GridMetricsTest::placesTiles_data() {
  QTest::addColumn<QSizeF>("viewport");
  QTest::addColumn<qint64>("index");
  QTest::addColumn<QPointF>("topLeft");
  QTest::newRow("the first, centred in the width") << QSizeF(600, 500) << qint64{0} << QPointF(79, 24);
  QTest::newRow("the end of a row") << QSizeF(600, 500) << qint64{3} << QPointF(421, 24);
  QTest::newRow("the second row") << QSizeF(600, 500) << qint64{5} << QPointF(193, 138);
  QTest::newRow("on whole points") << QSizeF(601, 500) << qint64{0} << QPointF(79, 24);
  QTest::newRow("a grid wider than the viewport") << QSizeF(300, 300) << qint64{0} << QPointF(-71, 24);
  QTest::newRow("far down") << QSizeF(600, 500) << qint64{99'999} << QPointF(421, 24 + 24'999 * 114.0);
}

void GridMetricsTest::placesTiles() {
  QFETCH(QSizeF, viewport);
  QFETCH(qint64, index);
  QFETCH(QPointF, topLeft);
  QCOMPARE(layoutOf(100'000, viewport).tileRect(index), QRectF(topLeft, QSizeF(100, 100)));
}

void GridMetricsTest::findsVisibleRows_data() {
  QTest::addColumn<qint64>("count");
  QTest::addColumn<double>("contentY");
  QTest::addColumn<Range>("visible");
  const auto row = [](const char* name, qint64 count, double contentY, Range visible) {
    QTest::newRow(name) << count << contentY << visible;
  };
  row("at the top", 100'000, 0, {0, 20});
  row("no photos", 0, 0, {0, 0});
  row("fewer than a row", 3, 0, {0, 3});
  row("a last row that is not full", 18, 0, {0, 18});
  row("the first row by its last point", 100'000, 123, {0, 24});
  row("the first row gone", 100'000, 124, {4, 24});
  row("in the gap between rows", 100'000, 130, {4, 24});
  row("the fifth row not yet, seen from its gap", 100'000, 94, {0, 20});
  row("the sixth row by its first point", 100'000, 95, {0, 24});
  row("at the bottom", 100'000, 24'999 * 114 + 148 - 500, {99'980, 100'000});
  row("pulled beyond the top", 100'000, -100, {0, 16});
  row("pulled beyond the bottom", 100, 1e7, {100, 100});
}

void GridMetricsTest::findsVisibleRows() {
  QFETCH(qint64, count);
  QFETCH(double, contentY);
  QTEST(layoutOf(count).visibleIndices(contentY), "visible");
}

void GridMetricsTest::visibleRowsAreThoseThatTouchTheViewport() {
  const GridLayout layout = layoutOf(42, {600, 250});
  for (double contentY = 0; contentY <= layout.contentHeight(); contentY += 1) {
    const auto [first, last] = layout.visibleIndices(contentY);
    const QRectF viewport(-1000, contentY, 3000, 250);
    for (std::int64_t index = 0; index < layout.count; ++index) {
      QCOMPARE(index >= first && index < last, layout.tileRect(index).intersects(viewport));
    }
  }
}

void GridMetricsTest::centresAndClamps_data() {
  QTest::addColumn<qint64>("count");
  QTest::addColumn<qint64>("index");
  QTest::addColumn<double>("contentY");
  QTest::newRow("near the top") << qint64{100'000} << qint64{7} << 0.0;
  QTest::newRow("in the middle") << qint64{100'000} << qint64{50'000} << 24 + 12'500 * 114.0 + 50 - 250;
  QTest::newRow("at the bottom") << qint64{100'000} << qint64{99'999} << 24 + 25'000 * 114.0 - 14 + 24 - 500;
  QTest::newRow("nothing to scroll") << qint64{8} << qint64{7} << 0.0;
}

void GridMetricsTest::centresAndClamps() {
  QFETCH(qint64, count);
  QFETCH(qint64, index);
  const GridLayout layout = layoutOf(count);
  QTEST(layout.centeringContentY(index), "contentY");
  QCOMPARE(layout.clampedContentY(-5), 0.0);
  QCOMPARE(layout.clampedContentY(1e9), std::max(0.0, layout.contentHeight() - 500));
  QCOMPARE(layoutOf(0).contentHeight(), 0.0);
}

QTEST_GUILESS_MAIN(GridMetricsTest)
#include "GridMetricsTest.moc"
