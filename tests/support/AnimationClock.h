#pragma once

#include <QAnimationDriver>
#include <QBasicTimer>
#include <QCoreApplication>
#include <QVariantAnimation>

namespace lumagrid {

// While it lives, every animation and QML timer of the process goes by this clock, which stands still until it is told
// to go on. Where a renderer brings a clock of its own, make this one before the first window (the toolkit says so).
class AnimationClock : public QAnimationDriver {
 public:
  AnimationClock() {
    install();
    m_forever.setStartValue(0);
    m_forever.setEndValue(1);
    m_forever.setLoopCount(-1);
    m_forever.start();
  }

  // What was started before begins with the time that passes now.
  void pass(int milliseconds) {
    QCoreApplication::processEvents();
    advanceBy(milliseconds);
  }

  // Time passes by itself until the clock is held.
  void run() { m_frames.start(kFrame, this); }
  void hold() { m_frames.stop(); }

  [[nodiscard]] qint64 elapsed() const override { return m_elapsed; }

 protected:
  void timerEvent(QTimerEvent*) override { advanceBy(kFrame); }

 private:
  static constexpr int kFrame = 16;  // ms

  void advanceBy(int milliseconds) {
    m_elapsed += milliseconds;
    advance();
  }

  QBasicTimer m_frames;
  qint64 m_elapsed = 0;
  QVariantAnimation m_forever;  // while nothing moves, the toolkit goes by the clock on the wall
};

}  // namespace lumagrid
