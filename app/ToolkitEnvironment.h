#pragma once

namespace lumagrid {

// Sets the variables that tell the toolkit how to draw, but for those that the user has set. Call before the
// application object is made, while there is one thread.
void setToolkitEnvironment();

}  // namespace lumagrid
