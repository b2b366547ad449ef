#include "MagnificationArea.h"

#include <QQuickWindow>
#include <QTest>
#include <QWheelEvent>

using namespace lumagrid;

// The area covers the left half of the window.
class MagnificationAreaTest : public QObject {
  Q_OBJECT

 private Q_SLOTS:
  void initTestCase() {
    m_window.resize(400, 200);
    m_area.setParentItem(m_window.contentItem());
    m_area.setSize({200, 200});
    connect(&m_area, &MagnificationArea::magnified, this, [this](double told) { m_told.append(told); });
    connect(&m_area, &MagnificationArea::ended, this, [this] { ++m_ended; });
    m_window.show();
  }
  void init() { m_ended = 0; }

  void theWheelGoesOnFromItsStart() {
    const auto turn = [this](double start, double floor, const QList<int>& deltas) {
      m_area.setProperty("wheelFloor", floor);
      m_area.setProperty("wheelStart", start);
      for (const int delta : deltas) {
        turnWheel(delta);
        m_area.setProperty("wheelStart", 99.0);  // only the start of a pinch looks at it
      }
      return std::exchange(m_told, {}).last();
    };
    QCOMPARE(turn(1, 0, QList<int>(7, -120)), 0.5);  // seven notches back halve
    QTRY_COMPARE(m_ended, 1);
    QCOMPARE(turn(3, 1, QList<int>(84, 10)), 6.0);  // parts of a notch
    QTRY_COMPARE(m_ended, 2);
    QCOMPARE(turn(1.5, 1, QList<int>(30, -120) + QList<int>(7, 120)), 2.0);  // up from the floor at once
    QTRY_COMPARE(m_ended, 3);
    turnWheel(120, Qt::ShiftModifier);
    turnWheel(120, Qt::ControlModifier, {300, 50});
    turnWheel(0);  // sideways
    m_area.setEnabled(false);
    turnWheel(120);
    m_area.setEnabled(true);
    QVERIFY(m_told.isEmpty());
  }

  void followsTheTouchPad() {
    const auto pinch = [this](const QList<double>& values, QPointF at = {50, 50}) {
      const auto send = [&](Qt::NativeGestureType type, double value) {
        QNativeGestureEvent event(type, QPointingDevice::primaryPointingDevice(), 2, at, at, at, value, {});
        QCoreApplication::sendEvent(&m_window, &event);
      };
      send(Qt::BeginNativeGesture, 0);
      for (const double value : values) send(Qt::ZoomNativeGesture, value);
      send(Qt::EndNativeGesture, 0);
      return std::exchange(m_told, {});
    };
    QCOMPARE(pinch({0.5, 0.5}), (QList<double>{1.5, 2.25}));
    QCOMPARE(pinch({-0.004, -0.004, -0.004, 0.01}).size(), 2);  // past 0.01, then all
    QCOMPARE(pinch({0.5}, {300, 50}), QList<double>{});         // elsewhere
    QCOMPARE(m_ended, 2);
  }

  void followsTwoFingers() {
    const std::unique_ptr<QPointingDevice> screen(QTest::createTouchDevice());
    const auto pinch = [&](const QList<int>& distances) {
      const QPoint left(50, 100);
      auto touch = QTest::touchEvent(&m_window, screen.get(), false);
      touch.press(0, left - QPoint(40, 0)).commit();
      touch.move(0, left).commit();  // one finger is no pinch
      touch.stationary(0).press(1, left + QPoint(distances.first(), 0)).commit();
      for (const int distance : distances) touch.stationary(0).move(1, left + QPoint(distance, 0)).commit();
      touch.stationary(0).release(1, left + QPoint(distances.last(), 0)).commit();
      touch.release(0, left).commit();
      return std::exchange(m_told, {});
    };
    QCOMPARE(pinch({50, 75, 100, 50}), (QList<double>{1.5, 2, 1}));
    QCOMPARE(pinch({100, 101}), QList<double>{1.01});  // from its own start, and exactly the threshold
    QCOMPARE(pinch({300, 320}), QList<double>{});      // the second outside of the area
    QCOMPARE(m_ended, 2);
  }

 private:
  void turnWheel(int delta, Qt::KeyboardModifiers modifiers = Qt::ControlModifier, QPointF position = {50, 50}) {
    QWheelEvent event(position, position, {}, {0, delta}, Qt::NoButton, modifiers, Qt::NoScrollPhase, false);
    QCoreApplication::sendEvent(&m_window, &event);
  }

  QQuickWindow m_window;
  MagnificationArea m_area;
  QList<double> m_told;
  int m_ended = 0;
};

QTEST_MAIN(MagnificationAreaTest)
#include "MagnificationAreaTest.moc"
