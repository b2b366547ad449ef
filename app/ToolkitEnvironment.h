#pragma once

namespace lumagrid {

// How the toolkit draws. Call before the application object is made, while there is one thread.
void tuneToolkit();

}  // namespace lumagrid
