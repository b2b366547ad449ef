#pragma once

#include <QImage>

namespace lumagrid {

// The pixels beyond the edge of a picture that its blur reaches: three sigmas.
[[nodiscard]] int blurReach(double sigma);

// A shadow in `color`: the opacity of `image` (32 bits, transparent at its edges for blurReach(sigma) pixels) under a
// Gaussian. Premultiplied. `sigma` in pixels.
[[nodiscard]] QImage blurredShadow(const QImage& image, double sigma, QRgb color);

}  // namespace lumagrid
