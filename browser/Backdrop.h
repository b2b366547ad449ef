#pragma once

#include <QImage>
#include <QRect>
#include <QSizeF>

#include "Appearance.h"

namespace lumagrid {

// The backdrop of a window of `size` points: a vertical gradient under a warm and a teal blurred disc that hang out of
// two corners. Draws `part` of it, in device pixels, as one opaque picture; parts agree to the pixel with the whole.
// The discs are drawn from the closed form of a disc of radius R under a Gaussian of sigma s: the normal distribution
// across the edge, which the edge's curvature moves inwards by s^2 / 2R. Any thread.
[[nodiscard]] QImage backdropImage(QSizeF size, double devicePixelRatio, ColorScheme colorScheme, QRect part);

}  // namespace lumagrid
