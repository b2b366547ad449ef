#pragma once

namespace lumagrid {

// For threads whose work the main thread must not wait for: it wins a core at once, and they still get all that it
// leaves. Any thread.
void lowerPriorityOfThisThread();

}  // namespace lumagrid
