#include "Tuning.h"

#include <cstdlib>

// jemalloc reads this. Huge pages, since fresh memory is paid for by the page: a window's start touches thousands, at
// some microseconds each, on a virtual machine ten. Two arenas that share the large pieces too, and so take again what
// another thread gave back; what stays free goes back to the system within a minute.
extern "C" {
extern const char* malloc_conf;
[[gnu::visibility("default")]] const char* malloc_conf =
    "thp:always,metadata_thp:always,narenas:2,oversize_threshold:0,dirty_decay_ms:60000";
}

namespace lumagrid {

void tuneToolkit() {
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
