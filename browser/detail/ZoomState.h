#pragma once

#include <QSizeF>

namespace lumagrid {

// Zoom and pan of the photo on the detail stage. A value; the default is the fitted view.
struct ZoomState {
  double scale = 1.0;   // relative to the fitted size; never below 1
  QSizeF offset{0, 0};  // points, from the centre of the stage

  friend bool operator==(const ZoomState&, const ZoomState&) = default;
};

}  // namespace lumagrid
