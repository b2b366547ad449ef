#pragma once

#include <QtQml/qqmlregistration.h>
#include <QObject>
#include <QPointF>

namespace lumagrid {

// Zoom and pan of the photo on the detail stage: it is scaled about the center of the stage and then moved. A value;
// the default is the fitted view.
struct ZoomState {
  Q_GADGET
  QML_ANONYMOUS

 public:
  // How the displayed zoom follows another one: at once, or along a curve.
  enum class Curve { None, EaseOut, Spring };
  Q_ENUM(Curve)

  static constexpr double kFittedScale = 1.0;

  double scale = kFittedScale;  // relative to the fitted size; below 1 only where a spring swings through
  QPointF offset;               // points

  // Exact, as QPointF's own comparison is not.
  friend bool operator==(const ZoomState& a, const ZoomState& b) {
    return a.scale == b.scale && a.offset.x() == b.offset.x() && a.offset.y() == b.offset.y();
  }
};

}  // namespace lumagrid
