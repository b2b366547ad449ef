#include "WindowKeys.h"

#include <QKeyEvent>
#include <QRunnable>
#include <QTimerEvent>

#include "OpenDialogs.h"

namespace lumagrid {

namespace {

PhotosAhead::Step directionOf(int key) {
  return key == Qt::Key_Left ? PhotosAhead::Step::previous : PhotosAhead::Step::next;
}

}  // namespace

bool WindowKeys::windowEvent(QEvent& event) {
  switch (event.type()) {
    case QEvent::KeyPress:
      return handlePress(static_cast<QKeyEvent&>(event));
    case QEvent::KeyRelease:
      if (!static_cast<QKeyEvent&>(event).isAutoRepeat()) release();
      return false;
    case QEvent::FocusOut:
      release();
      return false;
    case QEvent::MouseButtonPress:
    case QEvent::TouchBegin:
      forgetWaiting();
      return false;
    case QEvent::Expose:
      if (awaitsFrame()) m_nextTurn.start(0, this);
      return false;
    default:
      return false;
  }
}

bool WindowKeys::handlePress(const QKeyEvent& event) {
  if (m_view->dialogs().any()) return true;  // one that was not given the focus
  if ((event.modifiers() & ~Qt::KeypadModifier) != Qt::NoModifier) return false;
  if (event.key() == Qt::Key_Escape) {
    forgetWaiting();
    if (!event.isAutoRepeat()) m_view->handleExitCommand();
    return true;
  }
  if (m_view->showsGrid()) return false;
  switch (event.key()) {
    case Qt::Key_Left:
    case Qt::Key_Right:
      event.isAutoRepeat() ? hold(event.key()) : press(event.key());
      return true;
    case Qt::Key_Delete:
    case Qt::Key_Backspace:
      if (!event.isAutoRepeat()) press(Qt::Key_Delete);
      return true;
    default:
      return false;
  }
}

void WindowKeys::press(int key) {
  release();
  m_waiting.push_back(key);
  if (m_waiting.size() == 1 && !awaitsFrame()) actOnWaiting();
}

void WindowKeys::hold(int key) {
  if (!m_heldKey) {
    connect(m_view->photosAhead(), &PhotosAhead::photoReady, this, &WindowKeys::stepInNextTurn, Qt::UniqueConnection);
  }
  m_heldKey = key;
  m_view->photosAhead()->setHeld(directionOf(key));
  stepInNextTurn();
}

void WindowKeys::release() {
  if (std::exchange(m_heldKey, std::nullopt)) m_view->photosAhead()->setHeld(std::nullopt);
}

// After every event that waits already, among them perhaps the release of the key.
void WindowKeys::stepInNextTurn() {
  if (m_heldKey && !m_nextTurn.isActive()) m_nextTurn.start(0, this);
}

void WindowKeys::timerEvent(QTimerEvent* event) {
  if (event->timerId() != m_nextTurn.timerId()) return;
  m_nextTurn.stop();
  if (!window()->isExposed()) m_shownStep = m_lastStep;  // no frame will come
  if (m_view->dialogs().any() || m_view->showsGrid()) forgetWaiting();
  if (!m_waiting.empty()) {
    actOnWaiting();
  } else if (m_heldKey && !awaitsFrame() && m_view->photosAhead()->isReady(directionOf(*m_heldKey))) {
    step(*m_heldKey);
  }
}

void WindowKeys::actOnWaiting() {
  while (!m_waiting.empty() && !awaitsFrame()) {
    const int key = m_waiting.front();
    m_waiting.pop_front();
    if (key != Qt::Key_Delete) {
      step(key);
      continue;
    }
    forgetWaiting();  // what was pressed after it was meant for the dialog
    m_view->deleteCurrentPhoto();
    awaitFrame();
  }
}

void WindowKeys::forgetWaiting() {
  m_waiting.clear();
  release();
}

void WindowKeys::step(int key) {
  const bool isBack = key == Qt::Key_Left;
  if (isBack ? !m_view->shown()->hasPreviousPhoto() : !m_view->shown()->canGoNext()) return;
  isBack ? m_view->showPrevious() : m_view->showNext();
  awaitFrame();
}

// A frame that was begun before the step does not show it. So the first job waits until a frame takes over the scene
// with the step; that frame shows it once the second job, after the swap, has run.
void WindowKeys::awaitFrame() {
  QQuickWindow* const shownIn = window();
  const auto swapped = [this, step = ++m_lastStep] {
    m_shownStep = std::max(m_shownStep, step);
    // Behind the events that already wait: Esc and clicks go before what waits here.
    if (!m_waiting.empty() || m_heldKey) m_nextTurn.start(0, this);
  };
  const auto sceneTakenOver = [this, shownIn, swapped] {
    auto* const job =
        QRunnable::create([this, swapped] { QMetaObject::invokeMethod(this, swapped, Qt::QueuedConnection); });
    shownIn->scheduleRenderJob(job, QQuickWindow::AfterSwapStage);
  };
  shownIn->scheduleRenderJob(QRunnable::create(sceneTakenOver), QQuickWindow::BeforeSynchronizingStage);
  shownIn->update();
  if (!shownIn->isExposed()) m_nextTurn.start(0, this);
}

}  // namespace lumagrid
