#pragma once

#include <QImage>
#include <QRgb>

namespace lumagrid {

// A spinner turns by one of these steps at a time: each costs a frame of the whole window.
inline constexpr int kSpinnerSteps = 8;

// The side of a spinner of the default size, in points.
inline constexpr double kSpinnerSide = 20;

// The spinner at `step` (any integer; they repeat after kSpinnerSteps), `side` points square, in device pixels; spokes
// in `color` (opaque) that fade out behind the leading one. Cached for the process. Any thread.
[[nodiscard]] QImage spinnerImage(int step, double side, QRgb color, double devicePixelRatio);

}  // namespace lumagrid
