#include "SpinnerClock.h"

#include <QEvent>
#include <QTimerEvent>
#include <algorithm>

namespace lumagrid {

namespace {

// Each tick costs a frame of the whole window. Who waits wants to see that work goes on; what has been spinning for
// long will not end, such as that of a photo that cannot be read.
constexpr int kIntervalMs = 125;
constexpr int kLaterIntervalMs = 500;
constexpr int kTicksUntilLater = 80;

}  // namespace

SpinnerClock::Running::Running(QQuickWindow* window) : m_window(window) {
  if (window) instance()->start(window);
}

SpinnerClock::Running& SpinnerClock::Running::operator=(Running&& other) noexcept {
  if (this != &other) {
    stop();
    m_window = std::exchange(other.m_window, nullptr);
  }
  return *this;
}

void SpinnerClock::Running::stop() {
  if (m_window) instance()->stop(m_window);
  m_window = nullptr;
}

SpinnerClock* SpinnerClock::instance() {
  static SpinnerClock clock;
  return &clock;
}

bool SpinnerClock::eventFilter(QObject* watched, QEvent* event) {
  // The window handles the event after this filter: isExposed() tells the new state only then.
  if (event->type() == QEvent::Expose) {
    QMetaObject::invokeMethod(
        this, [this] { updateTimer(); }, Qt::QueuedConnection);
  }
  return QObject::eventFilter(watched, event);
}

void SpinnerClock::timerEvent(QTimerEvent*) {
  ++m_step;
  if (++m_ticksSinceStart == kTicksUntilLater) m_timer.start(kLaterIntervalMs, this);
  Q_EMIT ticked();
}

void SpinnerClock::start(QQuickWindow* window) {
  if (m_ticksSinceStart >= kTicksUntilLater) m_timer.stop();
  m_ticksSinceStart = 0;
  if (m_holders[window]++ == 0) {
    window->installEventFilter(this);
    connect(window, &QObject::destroyed, this, [this, window] {
      m_holders.remove(window);
      updateTimer();
    });
  }
  updateTimer();
}

void SpinnerClock::stop(QQuickWindow* window) {
  const auto found = m_holders.find(window);
  if (found == m_holders.end()) return;
  if (--found.value() == 0) {
    m_holders.erase(found);
    window->removeEventFilter(this);
    window->disconnect(this);
  }
  updateTimer();
}

void SpinnerClock::updateTimer() {
  const auto windows = m_holders.keyBegin();
  const bool wanted =
      std::any_of(windows, m_holders.keyEnd(), [](QQuickWindow* window) { return window->isExposed(); });
  if (wanted == isTicking()) return;
  if (wanted) {
    m_timer.start(kIntervalMs, this);
  } else {
    m_timer.stop();
  }
}

}  // namespace lumagrid
