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
  void init() {
    m_told.clear();
    m_ended = 0;
    m_window = std::make_unique<QQuickWindow>();
    m_window->resize(400, 200);
    m_window->installEventFilter(this);  // before the area's, so that it sees what the area leaves
    m_area = std::make_unique<MagnificationArea>();
    m_area->setParentItem(m_window->contentItem());
    m_area->setSize({200, 200});
    connect(m_area.get(), &MagnificationArea::magnified, this, [this](double told) { m_told.append(told); });
    connect(m_area.get(), &MagnificationArea::ended, this, [this] { ++m_ended; });
    m_window->show();
    QVERIFY(QTest::qWaitForWindowExposed(m_window.get()));
  }
  void cleanup() { m_area.reset(); }

  void theWheelGoesOnFromItsStart() {
    const auto turn = [this](double start, double floor, const QList<int>& deltas) {
      m_area->setProperty("wheelFloor", floor);
      for (const int delta : deltas) {
        m_area->setProperty("wheelStart", m_told.isEmpty() ? start : 99.0);  // only the start of a pinch looks at it
        if (!turnWheel(delta)) return 0.0;
      }
      return std::exchange(m_told, {}).last();
    };
    QCOMPARE(turn(1, 0, QList<int>(7, -120)), 0.5);  // seven notches back halve
    QTRY_COMPARE(m_ended, 1);
    QCOMPARE(turn(3, 1, QList<int>(84, 10)), 6.0);  // parts of a notch
    QTRY_COMPARE(m_ended, 2);
    QCOMPARE(turn(1.5, 1, QList<int>(30, -120) + QList<int>(7, 120)), 2.0);  // up from the floor at once
  }

  void takesTheWheelWithCtrlOverItselfAlone() {
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
  }

  void followsTheTouchPad() {
    const auto pinch = [this](const QList<double>& values, QPointF at = {50, 50}) {
      gesture(Qt::BeginNativeGesture, 0, at);
      for (const double value : values) gesture(Qt::ZoomNativeGesture, value, at);
      gesture(Qt::EndNativeGesture, 0, at);
      return std::exchange(m_told, {});
    };
    QVERIFY(areNear(pinch({0.1, 0.1}), {1.1, 1.21}));
    QCOMPARE(m_ended, 1);
    QVERIFY(areNear(pinch({-0.004, -0.004, -0.004, 0.01}), {0.988047936, 0.99792841536}));  // past 0.01, then all
    QCOMPARE(m_ended, 2);
    QCOMPARE(pinch({0.005, -0.005}), QList<double>{});
    QCOMPARE(pinch({0.5}, {300, 50}), QList<double>{});  // elsewhere
    QCOMPARE(m_ended, 2);
    gesture(Qt::ZoomNativeGesture, 0.5);  // its begin was not seen
    QCOMPARE(m_told, QList<double>{1.5});
  }

  void followsTwoFingers() {
    const std::unique_ptr<QPointingDevice> screen(QTest::createTouchDevice());
    const auto pinch = [&](const QList<int>& distances) {
      const QPoint left(50, 100);
      auto touch = QTest::touchEvent(m_window.get(), screen.get(), false);
      touch.press(0, left - QPoint(40, 0)).commit();
      touch.move(0, left).commit();  // one finger is no pinch
      touch.stationary(0).press(1, left + QPoint(distances.first(), 0)).commit();
      for (const int distance : distances) touch.stationary(0).move(1, left + QPoint(distance, 0)).commit();
      touch.stationary(0).release(1, left + QPoint(distances.last(), 0)).commit();
      touch.release(0, left).commit();
      return std::exchange(m_told, {});
    };
    QCOMPARE(pinch({50, 75, 100, 50}), (QList<double>{1.5, 2, 1}));
    QCOMPARE(m_ended, 1);
    QCOMPARE(pinch({100, 101}), QList<double>{1.01});  // from its own start, and exactly the threshold
    QCOMPARE(m_ended, 2);
    QCOMPARE(pinch({300, 320}), QList<double>{});  // the second outside of the area
    QCOMPARE(m_ended, 2);
  }

 private:
  bool eventFilter(QObject*, QEvent* event) override {
    m_leavesWheel = m_leavesWheel || event->type() == QEvent::Wheel;
    return false;
  }
  // Whether the area took it.
  bool turnWheel(int delta, Qt::KeyboardModifiers modifiers = Qt::ControlModifier, QPointF position = {50, 50}) {
    m_leavesWheel = false;
    QWheelEvent event(position, m_window->mapToGlobal(position), {}, {0, delta}, Qt::NoButton, modifiers,
                      Qt::NoScrollPhase, false);
    QCoreApplication::sendEvent(m_window.get(), &event);
    return !m_leavesWheel;
  }
  void gesture(Qt::NativeGestureType type, double value = 0, QPointF position = {50, 50}) {
    QNativeGestureEvent event(type, QPointingDevice::primaryPointingDevice(), 2, position, position,
                              m_window->mapToGlobal(position), value, {});
    QCoreApplication::sendEvent(m_window.get(), &event);
  }

  std::unique_ptr<QQuickWindow> m_window;
  std::unique_ptr<MagnificationArea> m_area;
  bool m_leavesWheel = false;
  QList<double> m_told;
  int m_ended = 0;
};

QTEST_MAIN(MagnificationAreaTest)
#include "MagnificationAreaTest.moc"
