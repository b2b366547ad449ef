#include "UiWindow.h"

#include <QMimeData>
#include <QNativeGestureEvent>
#include <QPointingDevice>

#include "QmlPlugins.h"

namespace lumagrid {

namespace {

QQuickWindow& shown(QQuickWindow* window) {
  if (!window) qFatal("The window cannot be made");
  window->show();
  window->requestActivate();
  if (!QTest::qWaitForWindowExposed(window, 60'000) || !QTest::qWaitForWindowActive(window, 60'000)) {
    qFatal("The window does not show");
  }
  return *window;
}

QAccessibleInterface* findBelow(QAccessibleInterface* parent, const QString& name, QAccessible::Role role) {
  for (int i = 0; i < parent->childCount(); ++i) {
    QAccessibleInterface* child = parent->child(i);
    if (!child || child->state().invisible) continue;
    if (child->text(QAccessible::Name) == name && (role == QAccessible::NoRole || child->role() == role)) return child;
    if (QAccessibleInterface* found = findBelow(child, name, role)) return found;
  }
  return nullptr;
}

}  // namespace

UiWindow::UiWindow(UiApp& app)
    : window(shown(app.app.makeWindow())), view(*app.app.contentView(&window)), library(*view.library()), m_app(app) {}

void UiWindow::open(const FileUrl& folder) {
  m_app.platform.chooser.answer = folder;
  click("Choose Folder");
  QVERIFY(library.photoCount() > 0);
  library.openPhoto(0);
  view.exitDetailMode();
  QRect place;  // from one look to the next: the grid may scroll there
  QTRY_VERIFY(std::exchange(place, rectOf(library.currentPhoto()->displayName())) == place && !place.isEmpty());
}

void UiWindow::openPhoto(QAnyStringView name) {
  click(name);
  QTRY_VERIFY(shows("Next photo"));
}

QAccessibleInterface* UiWindow::find(QAnyStringView name, QAccessible::Role role) const {
  return findBelow(QAccessible::queryAccessibleInterface(&window), name.toString(), role);
}

bool UiWindow::isEnabled(QAnyStringView name) const {
  const QAccessibleInterface* found = find(name);
  const auto* item = found ? qobject_cast<QQuickItem*>(found->object()) : nullptr;
  return item && item->isEnabled();
}

bool UiWindow::isChecked(QAnyStringView name) const {
  const QAccessibleInterface* found = find(name);
  return found && found->state().checked;
}

QRect UiWindow::rectOf(QAnyStringView name) const {
  const QAccessibleInterface* found = find(name);
  return found ? found->rect().translated(-window.mapToGlobal(QPoint())) : QRect();
}

void UiWindow::click(QAnyStringView name, Qt::KeyboardModifiers modifiers) {
  const QRect rect = rectOf(name);
  if (rect.isEmpty()) QFAIL(qPrintable(QStringLiteral("Nothing shows as ") + name.toString()));
  QTest::mouseClick(&window, Qt::LeftButton, modifiers, rect.center());
}

void UiWindow::pointTo(QPoint position, Qt::MouseButtons buttons, Qt::KeyboardModifiers modifiers) {
  const auto send = [&](QEvent::Type type, Qt::MouseButton button) {
    QMouseEvent event(type, position, window.mapToGlobal(position), button, m_heldButtons, modifiers);
    QCoreApplication::sendEvent(&window, &event);
  };
  send(QEvent::MouseMove, Qt::NoButton);
  for (const auto button : {Qt::LeftButton, Qt::RightButton, Qt::MiddleButton, Qt::BackButton}) {
    const bool isHeld = buttons.testFlag(button);
    if (isHeld == m_heldButtons.testFlag(button)) continue;
    m_heldButtons.setFlag(button, isHeld);
    send(isHeld ? QEvent::MouseButtonPress : QEvent::MouseButtonRelease, button);
  }
}

void UiWindow::turnWheel(int angle, Qt::KeyboardModifiers modifiers, int pixels) {
  QWheelEvent event(middle(), window.mapToGlobal(middle()), {0, pixels}, {0, angle}, Qt::NoButton, modifiers,
                    Qt::NoScrollPhase, false);
  QCoreApplication::sendEvent(&window, &event);
}

void UiWindow::pinch(const QList<double>& magnifications) {
  const auto send = [this](Qt::NativeGestureType type, double value) {
    QNativeGestureEvent event(type, QPointingDevice::primaryPointingDevice(), 2, middle(), middle(),
                              window.mapToGlobal(middle()), value, {});
    QCoreApplication::sendEvent(&window, &event);
  };
  send(Qt::BeginNativeGesture, 0);
  double before = 1;
  for (const double now : magnifications) send(Qt::ZoomNativeGesture, now / std::exchange(before, now) - 1);
  send(Qt::EndNativeGesture, 0);
}

std::optional<bool> UiWindow::drop(const QUrl& url) {
  QMimeData data;
  data.setUrls({url});
  const auto accepts = [&](QDropEvent&& event) {
    QCoreApplication::sendEvent(&window, &event);
    return event.isAccepted();
  };
  constexpr auto kActions = Qt::CopyAction | Qt::MoveAction;
  if (!accepts(QDragEnterEvent(middle(), kActions, &data, Qt::LeftButton, Qt::ShiftModifier)) ||
      !accepts(QDragMoveEvent(middle(), kActions, &data, Qt::LeftButton, Qt::ShiftModifier))) {
    QDragLeaveEvent leave;
    QCoreApplication::sendEvent(&window, &leave);
    return std::nullopt;
  }
  QDropEvent drop(middle(), kActions, &data, Qt::LeftButton, Qt::ShiftModifier);
  QCoreApplication::sendEvent(&window, &drop);
  return drop.isAccepted() && drop.dropAction() == Qt::CopyAction;
}

}  // namespace lumagrid
