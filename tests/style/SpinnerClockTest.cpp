#include <QQuickWindow>
#include <QSignalSpy>
#include <QTest>

#include "SpinnerClock.h"
#include "SpinnerImage.h"

using namespace lumagrid;

class SpinnerClockTest : public QObject {
  Q_OBJECT

 private Q_SLOTS:
  void ticksOnlyWhileASpinnerCanBeSeen();
  void outlivesItsWindows();
  void stepsDifferAndRepeat();
};

void SpinnerClockTest::ticksOnlyWhileASpinnerCanBeSeen() {
  const SpinnerClock* clock = SpinnerClock::instance();
  QQuickWindow window;
  SpinnerClock::Running spinner(&window);
  SpinnerClock::Running other(&window);
  QVERIFY(!clock->isTicking());  // not shown yet

  window.show();
  QVERIFY(QTest::qWaitForWindowExposed(&window));
  QTRY_VERIFY(clock->isTicking());
  QSignalSpy ticks(clock, &SpinnerClock::ticked);
  QVERIFY(ticks.wait());

  spinner = {};
  QVERIFY(clock->isTicking());
  window.hide();
  QTRY_VERIFY(!clock->isTicking());
  window.show();
  QTRY_VERIFY(clock->isTicking());
  other = {};
  QVERIFY(!clock->isTicking());
}

void SpinnerClockTest::outlivesItsWindows() {
  auto window = std::make_unique<QQuickWindow>();
  window->show();
  QVERIFY(QTest::qWaitForWindowExposed(window.get()));
  SpinnerClock::Running running(window.get());
  QTRY_VERIFY(SpinnerClock::instance()->isTicking());
  window.reset();
  QVERIFY(!SpinnerClock::instance()->isTicking());
  running = {};
  QVERIFY(!SpinnerClock::instance()->isTicking());
}

void SpinnerClockTest::stepsDifferAndRepeat() {
  const QRgb color = qRgb(90, 90, 90);
  const QImage first = spinnerImage(0, 20, color, 2);
  QCOMPARE(first.size(), QSize(40, 40));
  for (int step = 1; step < kSpinnerSteps; ++step) QVERIFY(spinnerImage(step, 20, color, 2) != first);
  QCOMPARE(spinnerImage(kSpinnerSteps, 20, color, 2), first);
  QCOMPARE(spinnerImage(-kSpinnerSteps, 20, color, 2), first);
}

QTEST_MAIN(SpinnerClockTest)
#include "SpinnerClockTest.moc"
