#include "TiffSamples.h"

#include <QFloat16>
#include <algorithm>
#include <cmath>
#include <cstring>
#include <limits>
#include <type_traits>

namespace lumagrid {
namespace {

template <typename Target, typename Sample>
Target scaled(Sample sample) {
  constexpr int kTargetBits = std::numeric_limits<Target>::digits;
  if constexpr (std::is_unsigned_v<Sample>) {
    constexpr int kBits = std::numeric_limits<Sample>::digits;
    if constexpr (kBits < kTargetBits) {
      return static_cast<Target>(sample * 257);
    } else {
      return static_cast<Target>(sample >> (kBits - kTargetBits));
    }
  } else {
    constexpr double kLargest = std::numeric_limits<Target>::max();
    const auto value = static_cast<double>(sample);
    return std::isnan(value) ? Target{0} : static_cast<Target>(std::lround(std::clamp(value, 0.0, 1.0) * kLargest));
  }
}

template <typename Sample, typename Target>
void scaleAll(const uchar* from, qsizetype fromStep, Target* to, qsizetype toStep, qsizetype count, Sample flip = {}) {
  for (qsizetype at = 0; at < count; ++at) {
    Sample sample;
    std::memcpy(&sample, from + at * fromStep * static_cast<qsizetype>(sizeof(Sample)), sizeof(Sample));
    if constexpr (std::is_unsigned_v<Sample>) sample = static_cast<Sample>(sample ^ flip);
    to[at * toStep] = scaled<Target>(sample);
  }
}

}  // namespace

bool isSupported(SampleType type) {
  return type.bits == 16 || type.bits == 32 || (type.bits == 8 && type.kind != SampleKind::floatingPoint);
}

template <typename Target>
void scaleSamples(SampleType type, const uchar* from, qsizetype fromStep, Target* to, qsizetype toStep,
                  qsizetype count) {
  if (type.kind == SampleKind::floatingPoint) {
    if (type.bits == 16) scaleAll<qfloat16>(from, fromStep, to, toStep, count);
    if (type.bits == 32) scaleAll<float>(from, fromStep, to, toStep, count);
    return;
  }
  const std::uint32_t sign = type.kind == SampleKind::signedInteger ? 1U << (type.bits - 1) : 0;
  if (type.bits == 8) scaleAll(from, fromStep, to, toStep, count, static_cast<std::uint8_t>(sign));
  if (type.bits == 16) scaleAll(from, fromStep, to, toStep, count, static_cast<std::uint16_t>(sign));
  if (type.bits == 32) scaleAll(from, fromStep, to, toStep, count, sign);
}

template void scaleSamples(SampleType, const uchar*, qsizetype, uchar*, qsizetype, qsizetype);
template void scaleSamples(SampleType, const uchar*, qsizetype, std::uint16_t*, qsizetype, qsizetype);

}  // namespace lumagrid
