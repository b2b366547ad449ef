#pragma once

#include <QObject>
#include <functional>

namespace lumagrid {

// The dialogs of the application that are open. Each blocks all windows, and runs an event loop that still delivers
// drops, timers and results: whoever would change what a window shows asks here first. Main thread.
class OpenDialogs : public QObject {
  Q_OBJECT

 public:
  using QObject::QObject;

  [[nodiscard]] bool any() const { return m_count > 0; }

  // Calls `dialog`, which opens one, acts on its answer and returns.
  void run(const std::function<void()>& dialog) {
    ++m_count;
    dialog();
    if (--m_count == 0) Q_EMIT allClosed();
  }

  // Calls `act` at once, or when no dialog is open any more, in the order of asking; never after `context` has gone.
  void afterwards(const QObject* context, const std::function<void()>& act) {
    if (!any()) {
      act();
      return;
    }
    connect(this, &OpenDialogs::allClosed, context, act,
            static_cast<Qt::ConnectionType>(Qt::AutoConnection | Qt::SingleShotConnection));
  }

 Q_SIGNALS:
  void allClosed();

 private:
  int m_count = 0;
};

}  // namespace lumagrid
