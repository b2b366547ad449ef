#pragma once

#include <QByteArray>
#include <array>

namespace lumagrid {

// Colours given by CICP code points (ITU-T H.273), as in an nclx box or a cICP chunk, instead of a profile.
struct CicpColors {
  int primaries = 1;
  int transfer = 13;
};

// An ICC profile for the code points; empty for sRGB and its kin (the curve of BT.709 counts as that of sRGB, as
// pictures made with it are meant) and for unknown ones. The two curves of high dynamic range end in a shoulder: what
// is as bright as paper (203 cd/m2) lands at three quarters of the light, and brighter parts share the rest.
[[nodiscard]] QByteArray iccProfileOf(const CicpColors& colors);

// Colours given by the power from signal to light, and by where white, red, green and blue lie (x and y of each, CIE
// 1931).
struct GammaColors {
  double gamma = 2.2;
  std::array<double, 8> chromaticities = {0.3127, 0.3290, 0.64, 0.33, 0.30, 0.60, 0.15, 0.06};
};

// An ICC profile for them; empty for the gamma 2.2 with the primaries of sRGB, which is how files spell sRGB, and for
// what no colours can be.
[[nodiscard]] QByteArray iccProfileOf(const GammaColors& colors);

}  // namespace lumagrid
