#pragma once

#include <QImage>
#include <QMargins>
#include <QRgb>
#include <QSizeF>

namespace lumagrid {

// One drawn part of a rectangle with continuous corners (ContinuousPath.h). Lengths are points.
struct Shape {
  enum class Part {
    fill,
    stroke,  // centered on the path: half of the line inside, half outside; miter joins
    shadow,  // the filled shape under a Gaussian of sigma blur / 2, cut off at three sigmas
  };

  Part part = Part::fill;
  double radius = 0;        // of the corners; 0: square ones; clamped to half the shorter side
  double lineWidth = 0;     // of a stroke
  double blur = 0;          // of a shadow
  QRgb color = 0xff000000;  // drawn opaque: translucency belongs to the node, so that states share one picture
  bool isHollow = false;    // something opaque hides all but the edges: what stretches both ways is not drawn

  friend bool operator==(const Shape&, const Shape&) = default;
};

// A small picture whose corners are drawn as they are and whose middle row and column are stretched.
struct NinePatch {
  enum class Middle { drawn, empty };

  QImage image = {};     // premultiplied ARGB, device pixels
  QMargins border = {};  // pixels from each edge that are never stretched; they leave a middle of one pixel, or of none
  int outset = 0;        // pixels by which the picture is larger than the shape, on every side
  Middle middle = Middle::drawn;  // empty: the part that stretches both ways is transparent, and need not be drawn
};

// The picture of `shape` for a shape of `size` points at `devicePixelRatio`. The shape's size in pixels is rounded to
// whole pixels, so corners meet the pixel grid at every ratio. Large shapes of any size share one picture; a side that
// is too short to stretch gets a picture of its own length. Pictures are kept in a process-wide cache bounded in bytes:
// asking again is a look-up. Any thread.
[[nodiscard]] NinePatch shapeImage(const Shape& shape, QSizeF size, double devicePixelRatio);

}  // namespace lumagrid
