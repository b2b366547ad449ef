#include "IccProfile.h"

#include <lcms2.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <memory>
#include <optional>

namespace lumagrid {
namespace {

enum Transfer { kGamma22 = 4, kGamma28 = 5, kLinear = 8, kPerceptualQuantizer = 16, kHybridLogGamma = 18 };
constexpr int kSrgbPrimaries = 1;
constexpr double kPaperWhite = 203;  // cd/m2, ITU-R BT.2408

// Primaries of H.273, table 2, by code point.
std::optional<std::pair<cmsCIExyYTRIPLE, cmsCIExyY>> chromaticities(int primaries) {
  constexpr cmsCIExyY kD65 = {0.3127, 0.3290, 1};
  constexpr cmsCIExyY kC = {0.310, 0.316, 1};
  const auto with = [](double redX, double redY, double greenX, double greenY, double blueX, double blueY,
                       cmsCIExyY white) {
    return std::pair(cmsCIExyYTRIPLE{{redX, redY, 1}, {greenX, greenY, 1}, {blueX, blueY, 1}}, white);
  };
  switch (primaries) {
    case 1:
      return with(0.640, 0.330, 0.300, 0.600, 0.150, 0.060, kD65);
    case 4:
      return with(0.67, 0.33, 0.21, 0.71, 0.14, 0.08, kC);
    case 5:
      return with(0.64, 0.33, 0.29, 0.60, 0.15, 0.06, kD65);
    case 6:
    case 7:
      return with(0.630, 0.340, 0.310, 0.595, 0.155, 0.070, kD65);
    case 8:
      return with(0.681, 0.319, 0.243, 0.692, 0.145, 0.049, kC);
    case 9:
      return with(0.708, 0.292, 0.170, 0.797, 0.131, 0.046, kD65);
    case 11:
      return with(0.680, 0.320, 0.265, 0.690, 0.150, 0.060, {0.314, 0.351, 1});
    case 12:
      return with(0.680, 0.320, 0.265, 0.690, 0.150, 0.060, kD65);
    case 22:
      return with(0.630, 0.340, 0.295, 0.605, 0.155, 0.077, kD65);
    default:
      return std::nullopt;
  }
}

// Light in units of paper white to 0…1: straight up to a half, then a hyperbola of the same slope that never reaches 1.
double withShoulder(double light) {
  constexpr double kKnee = 0.5;
  if (light <= kKnee) return light;
  return 1 - (1 - kKnee) * (1 - kKnee) / (1 - kKnee + light - kKnee);
}

// SMPTE ST 2084, signal to cd/m2.
double perceptualQuantizerLight(double signal) {
  constexpr double kM1 = 2610.0 / 16384;
  constexpr double kM2 = 2523.0 / 4096 * 128;
  constexpr double kC1 = 3424.0 / 4096;
  constexpr double kC2 = 2413.0 / 4096 * 32;
  constexpr double kC3 = 2392.0 / 4096 * 32;
  const double power = std::pow(signal, 1 / kM2);
  return 10000 * std::pow(std::max(power - kC1, 0.0) / (kC2 - kC3 * power), 1 / kM1);
}

// ARIB STD-B67, signal to cd/m2 on a display of 1000 cd/m2 (system gamma 1.2).
double hybridLogGammaLight(double signal) {
  constexpr double kA = 0.17883277;
  constexpr double kB = 1 - 4 * kA;
  const double c = 0.5 - kA * std::log(4 * kA);
  const double scene = signal <= 0.5 ? signal * signal / 3 : (std::exp((signal - c) / kA) + kB) / 12;
  return 1000 * std::pow(scene, 1.2);
}

using ToneCurve = std::unique_ptr<cmsToneCurve, decltype(&cmsFreeToneCurve)>;

ToneCurve curveOf(int transfer) {
  constexpr size_t kEntries = 4096;
  std::array<cmsUInt16Number, kEntries> table{};
  switch (transfer) {
    case kGamma22:
      return {cmsBuildGamma(nullptr, 2.2), &cmsFreeToneCurve};
    case kGamma28:
      return {cmsBuildGamma(nullptr, 2.8), &cmsFreeToneCurve};
    case kLinear:
      return {cmsBuildGamma(nullptr, 1.0), &cmsFreeToneCurve};
    case kPerceptualQuantizer:
    case kHybridLogGamma:
      for (size_t index = 0; index < kEntries; ++index) {
        const double signal = static_cast<double>(index) / (kEntries - 1);
        const double light =
            transfer == kPerceptualQuantizer ? perceptualQuantizerLight(signal) : hybridLogGammaLight(signal);
        table[index] = static_cast<cmsUInt16Number>(std::lround(withShoulder(light / kPaperWhite) * 65535));
      }
      return {cmsBuildTabulatedToneCurve16(nullptr, kEntries, table.data()), &cmsFreeToneCurve};
    default: {
      constexpr std::array<double, 5> kSrgb = {2.4, 1 / 1.055, 0.055 / 1.055, 1 / 12.92, 0.04045};
      return {cmsBuildParametricToneCurve(nullptr, 4, kSrgb.data()), &cmsFreeToneCurve};
    }
  }
}

bool isSrgbLike(int transfer) {
  return transfer != kGamma22 && transfer != kGamma28 && transfer != kLinear && transfer != kPerceptualQuantizer &&
         transfer != kHybridLogGamma;
}

// Empty where no profile can be made of it.
QByteArray profileOf(const cmsCIExyYTRIPLE& primaries, const cmsCIExyY& white, const ToneCurve& curve) {
  if (!curve) return {};
  cmsToneCurve* const curves[3] = {curve.get(), curve.get(), curve.get()};
  const std::unique_ptr<void, decltype(&cmsCloseProfile)> profile(cmsCreateRGBProfile(&white, &primaries, curves),
                                                                  &cmsCloseProfile);
  cmsUInt32Number size = 0;
  if (!profile || !cmsSaveProfileToMem(profile.get(), nullptr, &size)) return {};
  QByteArray bytes(static_cast<qsizetype>(size), Qt::Uninitialized);
  return cmsSaveProfileToMem(profile.get(), bytes.data(), &size) ? bytes : QByteArray();
}

}  // namespace

QByteArray iccProfileOf(const CicpColors& colors) {
  const auto known = chromaticities(colors.primaries);
  const auto [primaries, white] = known.value_or(*chromaticities(kSrgbPrimaries));
  if ((!known || colors.primaries == kSrgbPrimaries) && isSrgbLike(colors.transfer)) return {};
  return profileOf(primaries, white, curveOf(colors.transfer));
}

QByteArray iccProfileOf(const GammaColors& colors) {
  constexpr double kTolerance = 0.002;  // of a coordinate; the primaries of other standards are five times as far away
  const auto& [whiteX, whiteY, redX, redY, greenX, greenY, blueX, blueY] = colors.chromaticities;
  if (colors.gamma < 0.1 || colors.gamma > 10) return {};
  for (const double y : {whiteY, redY, greenY, blueY}) {
    if (y < kTolerance) return {};
  }
  const bool isSrgb =
      std::abs(colors.gamma - 2.2) < 0.01 &&
      std::equal(colors.chromaticities.begin(), colors.chromaticities.end(), GammaColors().chromaticities.begin(),
                 [](double one, double other) { return std::abs(one - other) < kTolerance; });
  if (isSrgb) return {};
  return profileOf({{redX, redY, 1}, {greenX, greenY, 1}, {blueX, blueY, 1}}, {whiteX, whiteY, 1},
                   {cmsBuildGamma(nullptr, colors.gamma), &cmsFreeToneCurve});
}

}  // namespace lumagrid
