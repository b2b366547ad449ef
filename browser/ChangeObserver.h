#pragma once

#include <QCoreApplication>
#include <QEvent>
#include <QObject>
#include <functional>
#include <utility>

namespace lumagrid {

// Runs a reaction when a value has changed: once per turn of the event loop and before the next frame, against the
// value that it saw last. What changes and changes back within a turn is no change, and the initial value is none
// either. Main thread.
template <typename Value>
class ChangeObserver : public QObject {
 public:
  ChangeObserver(std::function<Value()> read, std::function<void(const Value&)> changed)
      : m_read(std::move(read)), m_changed(std::move(changed)), m_seen(m_read()) {}

  // Tells that the value may have changed.
  void notice() {
    if (std::exchange(m_noticed, true)) return;
    QCoreApplication::postEvent(this, new QEvent(QEvent::User), Qt::HighEventPriority);
  }

 protected:
  void customEvent(QEvent*) override {
    m_noticed = false;
    Value value = m_read();
    if (value == m_seen) return;
    m_seen = value;
    m_changed(value);
  }

 private:
  std::function<Value()> m_read;
  std::function<void(const Value&)> m_changed;
  Value m_seen;
  bool m_noticed = false;
};

}  // namespace lumagrid
