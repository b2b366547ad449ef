#include "ToolkitEnvironment.h"

#include <cstdlib>

namespace lumagrid {

void setToolkitEnvironment() {
  // What the user has set stays.
  constexpr int kKeep = 0;
  // On X11 the toolkit makes a whole context and throws it away, to know drivers that cannot draw on a thread of their
  // own. There have been none for ten years.
  ::setenv("QT_OPENGL_NO_SANITY_CHECK", "1", kKeep);
  // Only nine-patches are in the atlas; it would take 8 MB.
  ::setenv("QSG_ATLAS_WIDTH", "512", kKeep);
  ::setenv("QSG_ATLAS_HEIGHT", "512", kKeep);
}

}  // namespace lumagrid
