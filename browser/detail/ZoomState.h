#pragma once

#include <QPointF>

namespace lumagrid {

// Zoom and pan of the photo on the detail stage: it is scaled about the center of the stage and then moved. A value; the
// default is the fitted view.
struct ZoomState {
  double scale = 1.0;  // relative to the fitted size; below 1 only where a spring swings through
  QPointF offset;      // points

  // Exact, as QPointF's own comparison is not.
  friend bool operator==(const ZoomState& a, const ZoomState& b) {
    return a.scale == b.scale && a.offset.x() == b.offset.x() && a.offset.y() == b.offset.y();
  }
};

}  // namespace lumagrid
