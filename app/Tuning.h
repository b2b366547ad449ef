#pragma once

namespace lumagrid {

// How the toolkit draws and where the process gets its memory. Programs that link this use jemalloc, unless they are
// built with the sanitizers. Call before the application object is made, while there is one thread.
void tuneToolkit();

}  // namespace lumagrid
