#pragma once

#include <array>

#include "ZoomState.h"

namespace lumagrid {

// One movement of the displayed photo from one zoom to another. A value; pure.
// The spring is a damped oscillator in closed form: response 0.3 s (the period it would have undamped), damping
// fraction 0.8, so it passes its target by 1.5 % of the way. The ease-out takes 0.12 s.
class PhotoViewMotion {
 public:
  using Curve = ZoomState::Curve;

  // At rest at its target.
  PhotoViewMotion() = default;
  PhotoViewMotion(Curve curve, const ZoomState& from, const ZoomState& to);

  // A movement to another target that leaves from where this one is after `seconds`; a spring keeps its velocity.
  [[nodiscard]] PhotoViewMotion retargeted(Curve curve, const ZoomState& to, double seconds) const;

  // The zoom `seconds` after the start; exactly the target from duration() on.
  [[nodiscard]] ZoomState at(double seconds) const;

  // Seconds until what remains is less than can be seen.
  [[nodiscard]] double duration() const { return m_duration; }
  [[nodiscard]] const ZoomState& target() const { return m_target; }

 private:
  // One number of a ZoomState on its way.
  struct Component {
    double distance = 0;  // from the target
    double velocity = 0;  // per second
  };
  using State = std::array<Component, 3>;  // the scale, and the offset across and down

  PhotoViewMotion(Curve curve, const State& start, const ZoomState& to);
  [[nodiscard]] State stateAt(double seconds) const;

  Curve m_curve = Curve::None;
  State m_start;
  ZoomState m_target;
  double m_duration = 0;
};

}  // namespace lumagrid
