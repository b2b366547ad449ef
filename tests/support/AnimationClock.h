#pragma once

#include <QAnimationDriver>
#include <QCoreApplication>

namespace lumagrid {

// While it lives, the animations of the process run by this clock, which stands still until it is told to go on.
class AnimationClock : public QAnimationDriver {
 public:
  AnimationClock() { install(); }
  ~AnimationClock() override { uninstall(); }

  // What was started before begins with the time that passes now.
  void pass(int milliseconds) {
    QCoreApplication::processEvents();
    m_elapsed += milliseconds;
    advance();
  }

  [[nodiscard]] qint64 elapsed() const override { return m_elapsed; }

 protected:
  void start() override {
    m_elapsed = 0;
    QAnimationDriver::start();
  }

 private:
  qint64 m_elapsed = 0;
};

}  // namespace lumagrid
