#include <cmath>

#include "Random.h"

namespace lumagrid::samples {

HillLine::HillLine(Random& random) {
  for (double& height : m_heights) {
    height = random.between(-1, 1);
  }
}

double HillLine::octave(double x) const {
  const double whole = std::floor(x);
  const double part = x - whole;
  const double eased = part * part * (3 - 2 * part);
  const auto first = static_cast<std::size_t>(static_cast<std::int64_t>(whole) & 255);
  const double left = m_heights.at(first);
  const double right = m_heights.at((first + 1) & 255U);
  return left + (right - left) * eased;
}

double HillLine::at(double x, double roughness) const {
  constexpr int kOctaves = 7;  // the narrowest hill is then a few pixels wide
  double sum = 0;
  double strength = 1;
  double total = 0;
  for (int i = 0; i < kOctaves; ++i) {
    sum += octave(x * std::exp2(i) + 17.0 * i) * strength;
    total += strength;
    strength *= roughness;
  }
  return sum / total * 1.4;
}

}  // namespace lumagrid::samples
