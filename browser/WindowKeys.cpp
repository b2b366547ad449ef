#include "WindowKeys.h"

#include <QKeyEvent>
#include <QTimerEvent>

namespace lumagrid {

bool WindowKeys::windowEvent(QEvent& event) {
  if (event.type() == QEvent::KeyPress) return handlePress(static_cast<QKeyEvent&>(event));
  if (event.type() == QEvent::KeyRelease && !static_cast<QKeyEvent&>(event).isAutoRepeat()) {
    m_heldKey.reset();
    m_stepTimer.stop();
  }
  return false;
}

bool WindowKeys::handlePress(const QKeyEvent& event) {
  if ((event.modifiers() & ~Qt::KeypadModifier) != Qt::NoModifier) return false;
  if (event.key() == Qt::Key_Escape) {
    if (!event.isAutoRepeat()) m_view->handleExitCommand();
    return true;
  }
  if (m_view->showsGrid()) return false;
  switch (event.key()) {
    case Qt::Key_Left:
    case Qt::Key_Right:
      if (!event.isAutoRepeat()) {
        step(event.key());
      } else {
        // Due when every event that already waits, a release among them, has been seen.
        m_heldKey = event.key();
        if (!m_stepTimer.isActive()) m_stepTimer.start(0, this);
      }
      return true;
    case Qt::Key_Delete:
    case Qt::Key_Backspace:
      if (!event.isAutoRepeat()) m_view->deleteCurrentPhoto();
      return true;
    default:
      return false;
  }
}

void WindowKeys::timerEvent(QTimerEvent* event) {
  if (event->timerId() != m_stepTimer.timerId()) return;
  m_stepTimer.stop();
  if (const auto key = std::exchange(m_heldKey, std::nullopt); key && !m_view->showsGrid()) step(*key);
}

void WindowKeys::step(int key) {
  PhotoLibrary* library = m_view->library();
  if (key == Qt::Key_Left) {
    library->showPrevious();
  } else {
    library->showNext();
  }
}

}  // namespace lumagrid
