#pragma once

#include <QImage>
#include <QObject>
#include <QRgb>

namespace lumagrid {

// A spinner turns by one of these steps at a time: at 8 steps a second it costs next to nothing without a GPU.
inline constexpr int kSpinnerSteps = 8;

// The side of a spinner of the default size, in points.
inline constexpr double kSpinnerSide = 20;

// The spinner at `step` (any integer; they repeat after kSpinnerSteps), `side` points square, in device pixels; spokes
// in `color` (opaque) that fade out behind the leading one. Cached for the process. Any thread.
[[nodiscard]] QImage spinnerImage(int step, double side, QRgb color, double devicePixelRatio);

// The one clock of all spinners: it ticks only while somebody holds a Running. Main thread.
class SpinnerClock : public QObject {
  Q_OBJECT

 public:
  // While it lives, the clock ticks. Movable; hold it while the spinner can be seen, and only then.
  class Running {
   public:
    Running() = default;
    Running(Running&& other) noexcept;
    Running& operator=(Running&& other) noexcept;
    ~Running();

    [[nodiscard]] explicit operator bool() const { return m_clock != nullptr; }

   private:
    friend class SpinnerClock;
    explicit Running(SpinnerClock* clock);
    SpinnerClock* m_clock = nullptr;
  };

  [[nodiscard]] static SpinnerClock* instance();

  [[nodiscard]] Running run();
  [[nodiscard]] int step() const { return m_step; }

 Q_SIGNALS:
  void ticked();

 protected:
  void timerEvent(QTimerEvent* event) override;

 private:
  SpinnerClock() = default;

  int m_step = 0;
  int m_timer = 0;
  int m_holders = 0;
};

}  // namespace lumagrid
