#pragma once

#include <QImage>
#include <QRect>
#include <QSizeF>

#include "Appearance.h"

namespace lumagrid {

// What lies behind everything in a window of `size` points.
struct Backdrop {
  QSizeF size;
  double devicePixelRatio = 1;
  ColorScheme colorScheme = ColorScheme::light;
  QRectF card = {};  // of the stage, in points; none when empty

  bool operator==(const Backdrop&) const = default;
};

// Draws `part` of the backdrop, in device pixels, as one opaque picture: a vertical gradient under a warm and a teal
// blurred disc that hang out of two corners, and over them the card, a gradient from its top left to its bottom right
// corner, with square corners. Parts agree to the pixel with the whole.
// The discs are drawn from the closed form of a disc of radius R under a Gaussian of sigma s: the normal distribution
// across the edge, which the edge's curvature moves inwards by s^2 / 2R. Any thread.
[[nodiscard]] QImage backdropImage(const Backdrop& backdrop, QRect part);

}  // namespace lumagrid
