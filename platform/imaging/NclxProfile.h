#pragma once

#include <QByteArray>

namespace lumagrid {

// Colours given by code points (ITU-T H.273) instead of a profile.
struct NclxColors {
  int primaries = 1;
  int transfer = 13;
};

// An ICC profile for the code points; empty for sRGB and its kin (the curve of BT.709 counts as that of sRGB, as
// pictures made with it are meant) and for unknown ones. The two curves of high dynamic range end in a shoulder: what
// is as bright as paper (203 cd/m2) lands at three quarters of the light, and brighter parts share the rest.
[[nodiscard]] QByteArray iccProfileOf(const NclxColors& colors);

}  // namespace lumagrid
