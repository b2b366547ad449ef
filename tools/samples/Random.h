#pragma once

#include <array>
#include <cstdint>
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
  [[nodiscard]] int index(int count) { return static_cast<int>(between(0, count)); }

 private:
  std::mt19937_64 m_engine;
};

// A line of hills: value noise of several octaves, between about -1 and 1. `x` is in units of the widest hill.
class HillLine {
 public:
  explicit HillLine(Random& random);
  // `roughness` from 0 (only the widest hill) to 1 (every octave as strong as the first).
  [[nodiscard]] double at(double x, double roughness) const;

 private:
  [[nodiscard]] double octave(double x) const;
  std::array<double, 256> m_heights{};
};

}  // namespace lumagrid::samples
