#pragma once

class QWidget;
class QWindow;

namespace lumagrid {

// The window that has the focus, else one that is on screen; null when there is none.
[[nodiscard]] QWindow* activeWindow();

// Keeps a dialog or menu that is not yet shown above `parent`, so that the desktop places and raises them together.
// A null parent leaves it alone.
void setTransientParent(QWidget& dialog, QWindow* parent);

}  // namespace lumagrid
