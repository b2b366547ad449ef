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

#include "Figures.h"

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

// Reports how `milliseconds` are distributed, against a frame of a display of 60 Hz; nothing for none.
inline void report(const char* name, const char* meaning, std::vector<double> milliseconds) {
  if (milliseconds.empty()) return;
  std::sort(milliseconds.begin(), milliseconds.end());
  const auto at = [&](double share) {
    return milliseconds[static_cast<std::size_t>(share * static_cast<double>(milliseconds.size() - 1))];
  };
  constexpr double kFrame = 16.7;
  const auto late = milliseconds.end() - std::upper_bound(milliseconds.begin(), milliseconds.end(), kFrame);
  char distribution[96];
  std::snprintf(distribution, sizeof(distribution), "p95 %.1f  p99 %.1f  max %.1f ms, %td of %zu later", at(0.95),
                at(0.99), milliseconds.back(), late, milliseconds.size());
  lumagrid::report(
      lumagrid::Figure{name, lumagrid::milliseconds(at(0.5)), "a frame of 60 Hz, 16.7 ms", distribution, meaning});
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
