#include <array>
#include <cmath>

#include "Scenes.h"

namespace lumagrid::samples {

const Hour& hour(HourName name) {
  static const std::array<Hour, static_cast<std::size_t>(HourName::Count)> kHours{{
      {0x4860a0, 0xac96be, 0xfcceb0, 0xffe0b2, 0x9686ac, 0x282a4a},
      {0x246ec4, 0x70b2e8, 0xdef0fa, 0xfff8dc, 0x7ca0be, 0x1c3e46},
      {0x5c82a8, 0xeec482, 0xffe2a0, 0xffecaa, 0xce9660, 0x462c24},
      {0x3a2460, 0xda545c, 0xffb05c, 0xffce78, 0xa04664, 0x261234},
      {0x161c48, 0x54468c, 0xe88e96, 0xffd6be, 0x584a86, 0x12122e},
      {0x06081c, 0x121c44, 0x344a7c, 0xe8eeff, 0x24325c, 0x060816},
      {0xa06ea0, 0xf4aab4, 0xffded4, 0xfff0e2, 0xce829c, 0x5c264a},
      {0x1e6e80, 0x78c8be, 0xe2f6de, 0xfffcd6, 0x68aca4, 0x0e3c40},
      {0x60748c, 0xcebaa0, 0xfadeaa, 0xffce60, 0xd07034, 0x521e18},
      {0x345c8c, 0x94bedc, 0xecf6fc, 0xffffff, 0x96b8d0, 0x264264},
  }};
  return kHours.at(static_cast<std::size_t>(name));
}

QColor mix(const QColor& from, const QColor& to, double share) {
  const auto blend = [share](int first, int second) {
    return static_cast<int>(std::lround(first + (second - first) * share));
  };
  return {blend(from.red(), to.red()), blend(from.green(), to.green()), blend(from.blue(), to.blue())};
}

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
