#pragma once

#include <array>
#include <cmath>
#include <cstdint>
#include <numbers>
#include <random>

namespace lumagrid::samples {

// Numbers that are the same on every machine for the same seed: the standard's distributions are not.
class Random {
 public:
  explicit Random(std::uint64_t seed) : m_engine(seed * 0x9E3779B97F4A7C15U + 1) {}

  // At least `low`, below `high`.
  [[nodiscard]] double between(double low, double high) {
    constexpr double kUnit = 1.0 / 9007199254740992.0;  // 2^-53: the top 53 bits fill a double exactly
    return low + (high - low) * static_cast<double>(m_engine() >> 11) * kUnit;
  }
  // Around 0, nearly normal: the sum of four even throws, between -2 and 2.
  [[nodiscard]] double aroundZero() {
    return between(-0.5, 0.5) + between(-0.5, 0.5) + between(-0.5, 0.5) + between(-0.5, 0.5);
  }

 private:
  std::mt19937_64 m_engine;
};

// A line of hills, between about -1 and 1: waves of a random phase, each half as long as the one before. `x` is in
// units of the longest.
class HillLine {
 public:
  explicit HillLine(Random& random) {
    for (double& phase : m_phases) phase = random.between(0, 2 * std::numbers::pi);
  }

  // `roughness` from 0 (only the longest wave) to 1 (all waves as high as the first).
  [[nodiscard]] double at(double x, double roughness) const {
    double height = 0;
    double strength = 1 - roughness;
    for (double phase : m_phases) {
      height += strength * std::sin(phase + 2 * std::numbers::pi * x);
      strength *= roughness;
      x *= 1.93;  // not exactly twice, or the whole line would repeat
    }
    return height;
  }

 private:
  std::array<double, 9> m_phases{};
};

}  // namespace lumagrid::samples
