#pragma once

#include <QtGlobal>

namespace lumagrid {

enum class SampleKind : unsigned char { unsignedInteger, signedInteger, floatingPoint };

struct SampleType {
  SampleKind kind = SampleKind::unsignedInteger;
  int bits = 8;
};

// Integers of 8, 16 and 32 bits, IEEE numbers of 16 and 32 bits.
[[nodiscard]] bool isSupported(SampleType type);

// Brings `count` samples to the full range of the target (uchar or std::uint16_t). Integers keep their upper bits,
// signed ones count from their smallest value; of IEEE numbers 0 to 1 is the range, and the rest is cut off. The
// samples stand `fromStep` samples apart, native byte order, any alignment; the targets `toStep` apart.
template <typename Target>
void scaleSamples(SampleType type, const uchar* from, qsizetype fromStep, Target* to, qsizetype toStep,
                  qsizetype count);

}  // namespace lumagrid
