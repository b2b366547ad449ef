#include "MagnificationArea.h"

#include <QQuickWindow>
#include <QTest>
#include <QWheelEvent>

using namespace lumagrid;

namespace {

bool areNear(const QList<double>& left, const QList<double>& right) {
  return std::equal(left.begin(), left.end(), right.begin(), right.end(),
                    [](double a, double b) { return std::abs(a - b) < 1e-9; });
}

}  // namespace

// The area covers the left half of the window.
class MagnificationAreaTest : public QObject {
  Q_OBJECT

 private Q_SLOTS:
  void init();
  void theWheelGoesOnFromItsStart_data();
  void theWheelGoesOnFromItsStart();
  void theWheelEndsByItself();
  void takesTheWheelWithCtrlOverItselfAlone();
  void followsTheTouchPad_data();
  void followsTheTouchPad();
  void followsTwoFingers_data();
  void followsTwoFingers();
  void oneFingerIsNoPinch();

 private:
  // Whether somebody took it.
  bool turnWheel(int delta, Qt::KeyboardModifiers modifiers = Qt::ControlModifier, QPointF position = {50, 50}) {
    QWheelEvent event(position, m_window->mapToGlobal(position), {}, {0, delta}, Qt::NoButton, modifiers,
                      Qt::NoScrollPhase, false);
    event.ignore();
    return m_window->filteredByArea(event);
  }
  void gesture(Qt::NativeGestureType type, double value = 0, QPointF position = {50, 50}) {
    QNativeGestureEvent event(type, QPointingDevice::primaryPointingDevice(), 2, position, position,
                              m_window->mapToGlobal(position), value, {});
    QCoreApplication::sendEvent(m_window.get(), &event);
  }

  // Tells what the area leaves to the window.
  class Window : public QQuickWindow {
   public:
    bool filteredByArea(QWheelEvent& event) {
      m_isReached = false;
      QCoreApplication::sendEvent(this, &event);
      return !m_isReached;
    }

   protected:
    void wheelEvent(QWheelEvent* event) override {
      m_isReached = true;
      QQuickWindow::wheelEvent(event);
    }

   private:
    bool m_isReached = false;
  };

  std::unique_ptr<Window> m_window;
  MagnificationArea* m_area = nullptr;
  QList<double> m_told;
  int m_ended = 0;
};

void MagnificationAreaTest::init() {
  m_told.clear();
  m_ended = 0;
  m_window = std::make_unique<Window>();
  m_window->resize(400, 200);
  m_area = new MagnificationArea;
  m_area->setParent(m_window.get());
  m_area->setParentItem(m_window->contentItem());
  m_area->setSize({200, 200});
  connect(m_area, &MagnificationArea::magnified, this, [this](double magnification) { m_told.append(magnification); });
  connect(m_area, &MagnificationArea::ended, this, [this] { ++m_ended; });
  m_window->show();
  QVERIFY(QTest::qWaitForWindowExposed(m_window.get()));
}

void MagnificationAreaTest::theWheelGoesOnFromItsStart_data() {
  QTest::addColumn<double>("start");
  QTest::addColumn<double>("floor");
  QTest::addColumn<QList<int>>("deltas");  // a notch is 120
  QTest::addColumn<double>("magnification");
  QTest::newRow("seven notches double") << 1.0 << 0.0 << QList<int>(7, 120) << 2.0;
  QTest::newRow("seven notches back halve") << 1.0 << 0.0 << QList<int>(7, -120) << 0.5;
  QTest::newRow("from the scale in force") << 3.0 << 1.0 << QList<int>(7, 120) << 6.0;
  QTest::newRow("parts of a notch") << 1.0 << 0.0 << QList<int>(84, 10) << 2.0;
  QTest::newRow("not below the floor") << 1.5 << 1.0 << QList<int>(30, -120) << 1.0;
  QTest::newRow("up from the floor at once") << 1.0 << 1.0 << (QList<int>(30, -120) + QList<int>(7, 120)) << 2.0;
}

void MagnificationAreaTest::theWheelGoesOnFromItsStart() {
  QFETCH(double, start);
  QFETCH(double, floor);
  QFETCH(QList<int>, deltas);
  QFETCH(double, magnification);
  m_area->setProperty("wheelStart", start);
  m_area->setProperty("wheelFloor", floor);
  for (const int delta : deltas) {
    QVERIFY(turnWheel(delta));
    m_area->setProperty("wheelStart", 99.0);  // only the start of a pinch looks at it
  }
  QCOMPARE(m_told.size(), deltas.size());
  QVERIFY(areNear({m_told.last()}, {magnification}));
}

void MagnificationAreaTest::theWheelEndsByItself() {
  turnWheel(120);
  turnWheel(120);
  QCOMPARE(m_ended, 0);
  QTRY_COMPARE(m_ended, 1);
  turnWheel(120);
  QCOMPARE(m_told.last(), m_told.first());  // another pinch, from the start again
  QTRY_COMPARE(m_ended, 2);
}

void MagnificationAreaTest::takesTheWheelWithCtrlOverItselfAlone() {
  QVERIFY(!turnWheel(120, Qt::NoModifier));
  QVERIFY(!turnWheel(120, Qt::ShiftModifier));
  QVERIFY(!turnWheel(120, Qt::ControlModifier, {300, 50}));
  m_area->setEnabled(false);
  QVERIFY(!turnWheel(120));
  m_area->setEnabled(true);
  m_area->setVisible(false);
  QVERIFY(!turnWheel(120));
  m_area->setVisible(true);
  QVERIFY(turnWheel(0));  // sideways
  QVERIFY(m_told.isEmpty());
  QVERIFY(turnWheel(120, Qt::ControlModifier | Qt::ShiftModifier));
  QCOMPARE(m_told.size(), 1);
  m_area->setParentItem(nullptr);
  QVERIFY(!turnWheel(120));
  delete m_area;
}

void MagnificationAreaTest::followsTheTouchPad_data() {
  QTest::addColumn<QList<double>>("values");
  QTest::addColumn<QList<double>>("told");
  QTest::newRow("apart") << QList<double>{0.1, 0.1} << QList<double>{1.1, 1.21};
  QTest::newRow("together") << QList<double>{-0.1, -0.5} << QList<double>{0.9, 0.45};
  QTest::newRow("once the threshold is passed") << QList<double>{0.004, 0.004, 0.004} << QList<double>{1.012048064};
  QTest::newRow("from then on all") << QList<double>{0.02, -0.015} << QList<double>{1.02, 1.0047};
  QTest::newRow("too little") << QList<double>{0.005, -0.005} << QList<double>{};
}

void MagnificationAreaTest::followsTheTouchPad() {
  QFETCH(QList<double>, values);
  QFETCH(QList<double>, told);
  gesture(Qt::BeginNativeGesture);
  for (const double value : values) gesture(Qt::ZoomNativeGesture, value);
  gesture(Qt::EndNativeGesture);
  QVERIFY(areNear(m_told, told));
  QCOMPARE(m_ended, told.isEmpty() ? 0 : 1);
  // Each pinch is relative to its own start; one that begins elsewhere is not meant.
  gesture(Qt::ZoomNativeGesture, 0.5);
  QCOMPARE(m_told.last(), 1.5);
  gesture(Qt::EndNativeGesture);
  const qsizetype count = m_told.size();
  gesture(Qt::BeginNativeGesture, 0, {300, 50});
  gesture(Qt::ZoomNativeGesture, 0.5, {300, 50});
  gesture(Qt::EndNativeGesture, 0, {300, 50});
  QCOMPARE(m_told.size(), count);
}

void MagnificationAreaTest::followsTwoFingers_data() {
  QTest::addColumn<QList<int>>("distances");  // points between the fingers, the first at the start
  QTest::addColumn<QList<double>>("told");
  QTest::newRow("apart") << QList<int>{50, 75, 100} << QList<double>{1.5, 2.0};
  QTest::newRow("together") << QList<int>{100, 50} << QList<double>{0.5};
  QTest::newRow("exactly the threshold") << QList<int>{100, 101} << QList<double>{1.01};
  QTest::newRow("back to the start") << QList<int>{100, 120, 100} << QList<double>{1.2, 1.0};
}

void MagnificationAreaTest::followsTwoFingers() {
  QFETCH(QList<int>, distances);
  QFETCH(QList<double>, told);
  std::unique_ptr<QPointingDevice> screen(QTest::createTouchDevice());
  const QPoint center(100, 100);
  const auto left = [&](int distance) { return center - QPoint(distance / 2, 0); };
  const auto right = [&](int distance) { return left(distance) + QPoint(distance, 0); };
  for (int time = 0; time < 2; ++time) {  // each pinch from its own start
    m_told.clear();
    auto touch = QTest::touchEvent(m_window.get(), screen.get(), false);
    touch.press(0, left(distances.first())).commit();
    touch.stationary(0).press(1, right(distances.first())).commit();
    for (const int distance : distances.mid(1)) touch.move(0, left(distance)).move(1, right(distance)).commit();
    touch.stationary(0).release(1, right(distances.last())).commit();
    QVERIFY(areNear(m_told, told));
    QCOMPARE(m_ended, time + 1);
    touch.release(0, left(distances.last())).commit();
    QCOMPARE(m_ended, time + 1);
  }
}

void MagnificationAreaTest::oneFingerIsNoPinch() {
  std::unique_ptr<QPointingDevice> screen(QTest::createTouchDevice());
  auto touch = QTest::touchEvent(m_window.get(), screen.get(), false);
  touch.press(0, {50, 50}).commit();
  touch.move(0, {150, 50}).commit();
  touch.stationary(0).press(1, {300, 50}).commit();  // a second finger outside of the area
  touch.stationary(0).move(1, {350, 50}).commit();
  touch.release(0, {150, 50}).release(1, {350, 50}).commit();
  QVERIFY(m_told.isEmpty());
  QCOMPARE(m_ended, 0);
}

QTEST_MAIN(MagnificationAreaTest)
#include "MagnificationAreaTest.moc"
