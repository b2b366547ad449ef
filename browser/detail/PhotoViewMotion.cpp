#include "PhotoViewMotion.h"

#include <algorithm>
#include <cmath>
#include <numbers>

#include "Curves.h"

namespace lumagrid {

namespace {

constexpr double kResponse = 0.3;  // seconds
constexpr double kDampingFraction = 0.8;
constexpr double kEaseOutDuration = 0.12;  // seconds

constexpr double kFrequency = 2 * std::numbers::pi / kResponse;  // radians a second, undamped
constexpr double kDecay = kDampingFraction * kFrequency;         // 1/s
const double kDampedFrequency = kFrequency * std::sqrt(1 - kDampingFraction * kDampingFraction);

// What nobody sees: a tenth of a point on a stage of 2000 points, and a tenth of a point.
constexpr std::array<double, 3> kInvisible = {0.0001, 0.1, 0.1};

// The share of the way that an ease-out has gone after `seconds`.
double eased(double seconds) {
  static const QEasingCurve curve = Curves::easeOut();
  return curve.valueForProgress(seconds / kEaseOutDuration);
}

// The speed of an ease-out after `seconds`, in ways a second: the difference over the next millisecond.
double easedSpeed(double seconds) {
  constexpr double kStep = 0.001;
  return (eased(seconds + kStep) - eased(seconds)) / kStep;
}

std::array<double, 3> values(const ZoomState& zoom) {
  return {zoom.scale, zoom.offset.x(), zoom.offset.y()};
}

}  // namespace

PhotoViewMotion::PhotoViewMotion(Curve curve, const ZoomState& from, const ZoomState& to)
    : PhotoViewMotion(
          curve,
          [&] {
            State start;
            for (std::size_t i = 0; i < start.size(); ++i) {
              start[i].distance = values(from)[i] - values(to)[i];
            }
            return start;
          }(),
          to) {}

PhotoViewMotion::PhotoViewMotion(Curve curve, const State& start, const ZoomState& to)
    : m_curve(curve), m_start(start), m_target(to) {
  for (std::size_t i = 0; i < start.size(); ++i) {
    const auto& [distance, velocity] = start[i];
    if (curve == Curve::None || (distance == 0 && velocity == 0)) {
      continue;
    }
    if (curve == Curve::EaseOut) {
      m_duration = kEaseOutDuration;
    } else {
      const double amplitude = std::abs(distance) + std::abs(velocity + kDecay * distance) / kDampedFrequency;
      m_duration = std::max(m_duration, std::log(amplitude / kInvisible[i]) / kDecay);
    }
  }
}

PhotoViewMotion PhotoViewMotion::retargeted(Curve curve, const ZoomState& to, double seconds) const {
  State start = stateAt(seconds);
  for (std::size_t i = 0; i < start.size(); ++i) {
    start[i].distance += values(m_target)[i] - values(to)[i];
  }
  return {curve, start, to};
}

ZoomState PhotoViewMotion::at(double seconds) const {
  const State state = stateAt(seconds);
  return {m_target.scale + state[0].distance, m_target.offset + QPointF(state[1].distance, state[2].distance)};
}

PhotoViewMotion::State PhotoViewMotion::stateAt(double seconds) const {
  State state;
  if (seconds >= m_duration) {
    return state;
  }
  for (std::size_t i = 0; i < state.size(); ++i) {
    const auto& [distance, velocity] = m_start[i];
    if (m_curve == Curve::EaseOut) {
      state[i] = {distance * (1 - eased(seconds)), -distance * easedSpeed(seconds)};
    } else {
      const double sine = (velocity + kDecay * distance) / kDampedFrequency;
      const double c = std::cos(kDampedFrequency * seconds);
      const double s = std::sin(kDampedFrequency * seconds);
      const double envelope = std::exp(-kDecay * seconds);
      state[i].distance = envelope * (distance * c + sine * s);
      state[i].velocity = envelope * kDampedFrequency * (sine * c - distance * s) - kDecay * state[i].distance;
    }
  }
  return state;
}

}  // namespace lumagrid
