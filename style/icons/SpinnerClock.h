#pragma once

#include <QBasicTimer>
#include <QHash>
#include <QObject>
#include <QPointer>
#include <QQuickWindow>

namespace lumagrid {

// The one clock of all spinners. It ticks 8 times a second, and twice a second once no spinner has started for ten
// seconds; it stands still unless somebody holds a Running for a window that is exposed. Main thread.
class SpinnerClock : public QObject {
  Q_OBJECT

 public:
  // While it lives, the clock ticks for its window. Hold it while a spinner is visible in that window, and only then.
  class Running {
   public:
    Running() = default;
    explicit Running(QQuickWindow* window);
    Running(Running&& other) noexcept : m_window(std::exchange(other.m_window, nullptr)) {}
    Running& operator=(Running&& other) noexcept;
    ~Running() { stop(); }

   private:
    void stop();

    QPointer<QQuickWindow> m_window;
  };

  [[nodiscard]] static SpinnerClock* instance();

  // Grows by one with each tick.
  [[nodiscard]] int step() const { return m_step; }
  [[nodiscard]] bool isTicking() const { return m_timer.isActive(); }

 Q_SIGNALS:
  void ticked();

 protected:
  bool eventFilter(QObject* watched, QEvent* event) override;
  void timerEvent(QTimerEvent* event) override;

 private:
  SpinnerClock() = default;
  void start(QQuickWindow* window);
  void stop(QQuickWindow* window);
  void updateTimer();

  QHash<QQuickWindow*, int> m_holders;
  int m_step = 0;
  int m_ticksSinceStart = 0;
  QBasicTimer m_timer;
};

}  // namespace lumagrid
