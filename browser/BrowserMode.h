#pragma once

namespace lumagrid {

// Which of the window's two stages exists.
enum class BrowserMode { grid, detail };

}  // namespace lumagrid
