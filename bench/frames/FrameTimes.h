#pragma once

#include <QElapsedTimer>
#include <QEvent>
#include <QEventLoop>
#include <QQuickWindow>
#include <QTimer>
#include <algorithm>
#include <atomic>
#include <cstdio>
#include <utility>
#include <vector>

// What each frame costs this process, in milliseconds, from the moment the window is asked to draw until its buffers
// are swapped. The beginning is the request on the main thread, so that polishing counts; with a render thread of its
// own the end comes from there.
class FrameTimes : public QObject {
 public:
  explicit FrameTimes(QQuickWindow* window) : QObject(window) {
    m_clock.start();
    window->installEventFilter(this);
    connect(
        window, &QQuickWindow::frameSwapped, this, [this] { finish(); }, Qt::DirectConnection);
  }

  [[nodiscard]] std::vector<double> take() { return std::exchange(m_milliseconds, {}); }

  bool eventFilter(QObject*, QEvent* event) override {
    if (event->type() == QEvent::UpdateRequest) m_begin = m_clock.nsecsElapsed();
    return false;
  }

 private:
  void finish() {
    const qint64 begin = m_begin.exchange(0);
    if (begin != 0) m_milliseconds.push_back(static_cast<double>(m_clock.nsecsElapsed() - begin) / 1e6);
  }

  QElapsedTimer m_clock;
  std::atomic<qint64> m_begin = 0;
  std::vector<double> m_milliseconds;
};

// One line that tells how `milliseconds` are distributed; none for none.
inline void report(const char* name, std::vector<double> milliseconds) {
  if (milliseconds.empty()) return;
  std::sort(milliseconds.begin(), milliseconds.end());
  const auto at = [&](double share) {
    return milliseconds[static_cast<std::size_t>(share * static_cast<double>(milliseconds.size() - 1))];
  };
  const auto above = [&](double limit) {
    const auto count = milliseconds.end() - std::upper_bound(milliseconds.begin(), milliseconds.end(), limit);
    return 100.0 * static_cast<double>(count) / static_cast<double>(milliseconds.size());
  };
  std::printf(
      "%-24s %4zu times  median %6.2f  p95 %6.2f  p99 %6.2f  max %6.2f ms  >16.7 ms %5.1f %%  >33 ms %5.1f %%\n", name,
      milliseconds.size(), at(0.5), at(0.95), at(0.99), milliseconds.back(), above(16.7), above(33));
}

// Turns the event loop until the next frame is on screen.
inline void nextFrame(QQuickWindow& window) {
  QEventLoop loop;
  QObject::connect(&window, &QQuickWindow::frameSwapped, &loop, &QEventLoop::quit, Qt::QueuedConnection);
  window.update();
  loop.exec();
}

// Turns it until `clock` shows that many milliseconds.
inline void waitUntil(const QElapsedTimer& clock, qint64 milliseconds) {
  QEventLoop rest;
  QTimer::singleShot(static_cast<int>(std::max<qint64>(0, milliseconds - clock.elapsed())), Qt::PreciseTimer, &rest,
                     &QEventLoop::quit);
  rest.exec();
}
