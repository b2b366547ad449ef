#include <QSignalSpy>
#include <QTest>
#include <cmath>
#include <limits>

#include "PhotoFolder.h"
#include "TestWindow.h"

using namespace lumagrid;

using Animation = ContentView::ZoomAnimation;

class ContentViewGesturesTest : public QObject {
  Q_OBJECT

 private Q_SLOTS:
  void gridDimensionIsClamped_data();
  void gridDimensionIsClamped();
  void pinchOnTheGrid_data();
  void pinchOnTheGrid();
  void presetsAreSquares();
  void gesturesOnThePhoto_data();
  void gesturesOnThePhoto();
  void anotherIndexResetsTheZoom();
};

void ContentViewGesturesTest::gridDimensionIsClamped_data() {
  QTest::addColumn<qint64>("wanted");
  QTest::addColumn<qint64>("dimension");
  QTest::newRow("in between") << qint64{5} << qint64{5};
  QTest::newRow("the one in force") << qint64{4} << qint64{4};
  QTest::newRow("too few") << qint64{1} << qint64{2};
  QTest::newRow("too many") << qint64{7} << qint64{6};
  QTest::newRow("absurd") << std::numeric_limits<qint64>::min() << qint64{2};
}

void ContentViewGesturesTest::gridDimensionIsClamped() {
  QFETCH(qint64, wanted);
  const PhotoFolder folder(numberedNames(3));
  TestWindow window;
  window.view.setGridDimension(wanted);
  QTEST(window.view.gridDimension(), "dimension");
  QCOMPARE(window.view.gridScrollTarget(), std::nullopt);
  window.library.openFolder(folder.url());
  window.view.setGridDimension(wanted);
  QCOMPARE(window.view.gridScrollTarget(), window.library.currentPhoto()->id());
  window.library.openFolder(folder.url(QStringLiteral("missing")));
  window.view.setGridDimension(wanted);
  QCOMPARE(window.view.gridScrollTarget(), std::nullopt);
  QTEST(window.view.gridDimension(), "dimension");
}

void ContentViewGesturesTest::pinchOnTheGrid_data() {
  QTest::addColumn<qint64>("from");
  QTest::addColumn<QList<double>>("magnifications");
  QTest::addColumn<qint64>("dimension");
  QTest::addColumn<double>("last");
  const auto row = [](const char* name, qint64 from, const QList<double>& magnifications, qint64 dimension,
                      double last) { QTest::newRow(name) << from << magnifications << dimension << last; };
  row("to 1.2 in small steps: two columns fewer", 4,
      {1.01, 1.03, 1.05, 1.07, 1.08, 1.09, 1.11, 1.13, 1.15, 1.17, 1.18, 1.2}, 2, 1.18);
  row("to 1.2 at once: one", 4, {1.2}, 3, 1.2);
  row("exactly 1.08", 4, {1.08}, 4, 1.0);
  row("just above", 4, {1.0801}, 3, 1.0801);
  row("exactly 0.92", 4, {0.92}, 4, 1.0);
  row("just below", 4, {0.9199}, 5, 0.9199);
  row("back and forth", 4, {1.1, 1.0}, 4, 1.0);
  row("back a little is not enough", 4, {1.1, 1.02}, 3, 1.1);
  row("two columns stay, but are counted", 2, {1.1, 1.2, 1.11}, 2, 1.2);
  row("then a way back from there", 2, {1.1, 1.2, 1.11, 1.1}, 3, 1.1);
  row("six columns stay, but are counted", 6, {0.9, 0.8}, 6, 0.8);
  row("no number", 4, {std::numeric_limits<double>::quiet_NaN()}, 4, 1.0);
}

void ContentViewGesturesTest::pinchOnTheGrid() {
  QFETCH(qint64, from);
  QFETCH(QList<double>, magnifications);
  TestWindow window;
  window.view.setGridDimension(from);
  for (const double magnification : magnifications) window.view.handleGridMagnification(magnification);
  QTEST(window.view.gridDimension(), "dimension");
  QTEST(window.view.lastMagnification(), "last");
  window.view.endGridMagnification();
  QCOMPARE(window.view.lastMagnification(), 1.0);
}

void ContentViewGesturesTest::presetsAreSquares() {
  const TestWindow window;
  QList<int> columns;
  for (const int preset : window.view.gridPresets()) columns.append(ContentView::presetColumns(preset));
  QCOMPARE(columns, (QList<int>{2, 3, 4, 5, 6}));
}

void ContentViewGesturesTest::gesturesOnThePhoto_data() {
  using Steps = std::function<void(ContentView&)>;
  QTest::addColumn<Steps>("steps");
  QTest::addColumn<double>("scale");
  QTest::addColumn<QSizeF>("offset");
  QTest::addColumn<QSizeF>("drag");
  QTest::addColumn<Animation>("animation");  // of the last change
  const auto row = [](const char* name, Steps steps, double scale, QSizeF offset, QSizeF drag, Animation animation) {
    QTest::newRow(name) << steps << scale << offset << drag << animation;
  };
  const QSizeF none(0, 0);
  const auto pinch = [](ContentView& view, double magnification) {
    view.handleDetailMagnification(magnification);
    view.endDetailMagnification();
  };
  row(
      "never smaller than fitted", [](auto& v) { v.handleDetailMagnification(0.6); }, 1, none, none, Animation::None);
  row(
      "no number is fitted", [](auto& v) { v.handleDetailMagnification(std::nan("")); }, 1, none, none,
      Animation::None);
  row(
      "without a limit", [](auto& v) { v.handleDetailMagnification(1e6); }, 1e6, none, none, Animation::None);
  row(
      "released at 1.04: back", [=](auto& v) { pinch(v, 1.04); }, 1, none, none, Animation::Spring);
  row(
      "released at 1.05: stays", [=](auto& v) { pinch(v, 1.05); }, 1.05, none, none, Animation::None);
  row(
      "released at 1.06: stays", [=](auto& v) { pinch(v, 1.06); }, 1.06, none, none, Animation::None);
  row(
      "each pinch starts from itself", [=](auto& v) { pinch(v, 3), v.handleDetailMagnification(1.01); }, 1.01, none,
      none, Animation::None);
  row(
      "a pinch keeps the pan",
      [=](auto& v) {
        pinch(v, 3), v.endDrag({5, 6}), v.handleDetailMagnification(2);
      },
      2, {5, 6}, none, Animation::None);
  row(
      "released as good as fitted, the pan is lost too",
      [=](auto& v) {
        pinch(v, 3), v.endDrag({5, 6}), pinch(v, 1.02);
      },
      1, none, none, Animation::Spring);
  row(
      "no drag while fitted",
      [](auto& v) {
        v.handleDrag({40, 2}), v.endDrag({40, 2}), v.handleDoubleClick();
      },
      1, none, none, Animation::Spring);
  row(
      "a drag under way",
      [=](auto& v) {
        pinch(v, 2), v.handleDrag({40, -25});
      },
      2, none, {40, -25}, Animation::None);
  row(
      "two drags add up",
      [=](auto& v) {
        pinch(v, 2), v.handleDrag({40, -25}), v.endDrag({40, -25}), v.handleDrag({9, 9}), v.endDrag({10, 10});
      },
      2, {50, -15}, none, Animation::None);
  row(
      "a drag that ends fitted does nothing, and leaves its way",
      [](auto& v) {
        v.handleDetailMagnification(2), v.handleDrag({7, 8}), v.handleDetailMagnification(0.5), v.endDrag({9, 9});
      },
      1, none, {7, 8}, Animation::None);
  row(
      "a pinch that ends fitted leaves the drag alone",
      [=](auto& v) {
        pinch(v, 2), v.handleDrag({7, 8}), pinch(v, 1.01);
      },
      1, none, {7, 8}, Animation::Spring);
  row(
      "a double click puts all back",
      [=](auto& v) {
        pinch(v, 4), v.endDrag({5, 6}), v.handleDrag({7, 8}), v.handleDoubleClick();
      },
      1, none, none, Animation::Spring);
}

void ContentViewGesturesTest::gesturesOnThePhoto() {
  QFETCH(std::function<void(ContentView&)>, steps);
  QFETCH(QSizeF, offset);
  QFETCH(QSizeF, drag);
  TestWindow window;
  QSignalSpy animations(&window.view, &ContentView::zoomWillChange);
  QSignalSpy changes(&window.view, &ContentView::zoomChanged);
  steps(window.view);
  QTEST(window.view.zoom().scale, "scale");
  QCOMPARE(window.view.zoom().offset, offset);
  QCOMPARE(window.view.dragOffset(), drag);
  QCOMPARE(window.view.displacement(), QPointF((offset + drag).width(), (offset + drag).height()));
  QCOMPARE(animations.count(), changes.count());
  QTEST(animations.last().first().value<Animation>(), "animation");
}

void ContentViewGesturesTest::anotherIndexResetsTheZoom() {
  const PhotoFolder folder(numberedNames(4));
  TestWindow window;
  window.library.openFolder(folder.url());
  window.library.openPhoto(2);
  QCoreApplication::processEvents();
  const auto zoomAnd = [&](auto change) {
    window.view.handleDetailMagnification(3);
    window.view.endDrag({5, 6});
    window.view.handleDrag({7, 8});
    QSignalSpy animations(&window.view, &ContentView::zoomWillChange);
    change();
    QCoreApplication::processEvents();
    const bool isReset = window.view.zoom() == ZoomState{} && window.view.dragOffset() == QSizeF(0, 0);
    const bool isEased = animations.count() == 1 && animations.first().first().value<Animation>() == Animation::EaseOut;
    return isReset && isEased;
  };
  QVERIFY(zoomAnd([&] { window.library.showNext(); }));
  QVERIFY(zoomAnd([&] { window.library.showPrevious(); }));
  QVERIFY(!zoomAnd([&] { window.library.openPhoto(2); }));
  QVERIFY(!zoomAnd([&] { window.library.deleteCurrentPhoto(); }));  // the next takes its place
  QCOMPARE(window.view.zoom(), (ZoomState{3, {10, 12}}));
  QCOMPARE(window.library.currentIndex(), 2);
  QVERIFY(zoomAnd([&] { window.library.deleteCurrentPhoto(); }));  // it was the last
}

QTEST_GUILESS_MAIN(ContentViewGesturesTest)
#include "ContentViewGesturesTest.moc"
