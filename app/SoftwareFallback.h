#pragma once

class QQuickWindow;

namespace lumagrid {

// Where no OpenGL driver works, the program starts once more with `arguments` (a list that ends with null; it outlives
// the window) and draws without one. Whether a driver works shows when the window first draws, and by then the renderer
// is chosen for the life of the process; to try one before costs every start a context.
void fallBackToSoftware(QQuickWindow& window, char* const* arguments);

}  // namespace lumagrid
