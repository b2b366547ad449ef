#include "DialogWindow.h"

#include <QGuiApplication>
#include <QWidget>
#include <QWindow>

namespace lumagrid {

QWindow* activeWindow() {
  if (QWindow* focused = QGuiApplication::focusWindow()) return focused;
  for (QWindow* window : QGuiApplication::topLevelWindows()) {
    if (window->isVisible() && window->type() != Qt::Popup && window->type() != Qt::ToolTip) return window;
  }
  return nullptr;
}

void setTransientParent(QWidget& dialog, QWindow* parent) {
  if (!parent) return;
  static_cast<void>(dialog.winId());  // makes its window
  dialog.windowHandle()->setTransientParent(parent);
}

}  // namespace lumagrid
