#include "HeifCodedSize.h"

#include <QByteArray>
#include <algorithm>

namespace lumagrid {
namespace {

// From the highest bit of each byte on. Behind the end there are zeros, and the reader is broken.
class BitReader {
 public:
  explicit BitReader(QByteArrayView bytes) : m_bytes(bytes) {}

  [[nodiscard]] bool isBroken() const { return m_at > m_bytes.size() * 8; }
  // Of at most 32 bits.
  std::uint32_t bits(int count) {
    std::uint64_t value = 0;
    for (; count > 0; --count, ++m_at) {
      const bool isSet = m_at < m_bytes.size() * 8 && (m_bytes[m_at / 8] >> (7 - m_at % 8) & 1) != 0;
      value = value << 1 | (isSet ? 1 : 0);
    }
    return static_cast<std::uint32_t>(value);
  }
  bool flag() { return bits(1) != 0; }
  void skip(int count) { m_at += count; }
  // Exponential Golomb code: ue(v) of HEVC, uvlc() of AV1.
  std::uint32_t golomb() {
    int zeros = 0;
    while (zeros < 32 && !isBroken() && !flag()) ++zeros;
    return zeros >= 32 ? ~0U : (1U << zeros) - 1 + bits(zeros);
  }

 private:
  QByteArrayView m_bytes;
  qsizetype m_at = 0;  // in bits
};

void include(std::optional<HeifCodedSize>& all, const HeifCodedSize& one) {
  if (!all) {
    all = one;
    return;
  }
  all->width = std::max(all->width, one.width);
  all->height = std::max(all->height, one.height);
  all->widthInReach = std::max(all->widthInReach, one.widthInReach);
  all->heightInReach = std::max(all->heightInReach, one.heightInReach);
  all->bits = std::max(all->bits, one.bits);
  all->isSubsampled = all->isSubsampled && one.isSubsampled;
}

// What of an AV1 sequence header the frame headers' beginning depends on.
struct Av1Sequence {
  HeifCodedSize size;
  bool isReduced = false;
  int presentationTimeBits = 0;  // in each frame that is shown
  int frameIdBits = 0;
  int widthBits = 0;
  int heightBits = 0;
  std::uint32_t screenContentTools = 2;  // 2: each frame says
  std::uint32_t integerMotion = 2;       // 2: each frame says
};

// Returns how many bits the presentation time of a frame has.
int readAv1OperatingPoints(BitReader& reader) {
  bool hasModel = false;
  bool isEvenlyTimed = false;
  int delayBits = 0;
  int timeBits = 0;
  if (reader.flag()) {  // timing info
    reader.skip(64);
    isEvenlyTimed = reader.flag();
    if (isEvenlyTimed) reader.golomb();
    hasModel = reader.flag();
    if (hasModel) {
      delayBits = static_cast<int>(reader.bits(5)) + 1;
      reader.skip(32 + 5);
      timeBits = static_cast<int>(reader.bits(5)) + 1;
    }
  }
  const bool hasDisplayDelay = reader.flag();
  for (auto points = reader.bits(5) + 1; points > 0; --points) {
    reader.skip(12);
    constexpr std::uint32_t kLastLevelOfOneTier = 7;
    if (reader.bits(5) > kLastLevelOfOneTier) reader.skip(1);
    if (hasModel && reader.flag()) reader.skip(2 * delayBits + 1);
    if (hasDisplayDelay && reader.flag()) reader.skip(4);
  }
  return hasModel && !isEvenlyTimed ? timeBits : 0;
}

std::optional<Av1Sequence> av1Sequence(QByteArrayView content) {
  BitReader reader(content);
  Av1Sequence sequence;
  const auto profile = reader.bits(3);
  reader.skip(1);  // still picture
  sequence.isReduced = reader.flag();
  if (sequence.isReduced) {
    reader.skip(5);  // level
  } else {
    sequence.presentationTimeBits = readAv1OperatingPoints(reader);
  }
  sequence.widthBits = static_cast<int>(reader.bits(4)) + 1;
  sequence.heightBits = static_cast<int>(reader.bits(4)) + 1;
  sequence.size.width = sequence.size.widthInReach = std::int64_t{reader.bits(sequence.widthBits)} + 1;
  sequence.size.height = sequence.size.heightInReach = std::int64_t{reader.bits(sequence.heightBits)} + 1;
  if (!sequence.isReduced && reader.flag()) {
    sequence.frameIdBits = static_cast<int>(reader.bits(4)) + 3;
    sequence.frameIdBits += static_cast<int>(reader.bits(3));
  }
  reader.skip(3);
  if (!sequence.isReduced) {
    reader.skip(4);
    const bool hasOrder = reader.flag();
    if (hasOrder) reader.skip(2);
    if (!reader.flag()) sequence.screenContentTools = reader.bits(1);
    if (sequence.screenContentTools > 0 && !reader.flag()) sequence.integerMotion = reader.bits(1);
    if (hasOrder) reader.skip(3);
  }
  reader.skip(3);
  constexpr std::uint32_t kProfileOf420 = 0;
  sequence.size.isSubsampled = profile == kProfileOf420;
  if (reader.flag()) sequence.size.bits = profile == 2 && reader.flag() ? 12 : 10;
  return reader.isBroken() ? std::nullopt : std::optional(sequence);
}

// Whether a frame has a size of its own.
bool isAv1FrameResized(const Av1Sequence& sequence, QByteArrayView content) {
  enum { kKeyFrame, kInterFrame, kIntraFrame, kSwitchFrame };
  if (sequence.isReduced) return false;
  BitReader reader(content);
  if (reader.flag()) return false;  // one that was decoded before is shown
  const auto type = reader.bits(2);
  const bool isShown = reader.flag();
  if (isShown) reader.skip(sequence.presentationTimeBits);
  if (!isShown) reader.skip(1);
  if (type != kSwitchFrame && !(type == kKeyFrame && isShown)) reader.skip(1);
  reader.skip(1);
  const bool hasTools = sequence.screenContentTools == 2 ? reader.flag() : sequence.screenContentTools == 1;
  if (hasTools && sequence.integerMotion == 2) reader.skip(1);
  reader.skip(sequence.frameIdBits);
  return type == kSwitchFrame || reader.flag();
}

// One open bitstream unit: its type and content.
struct Av1Unit {
  int type = 0;
  QByteArrayView content;
};

std::optional<Av1Unit> takeAv1Unit(QByteArrayView& rest) {
  constexpr int kHasExtension = 4;
  constexpr int kHasSize = 2;
  const int header = static_cast<uchar>(rest[0]);
  qsizetype at = (header & kHasExtension) != 0 ? 2 : 1;
  if (at > rest.size()) return std::nullopt;
  std::uint64_t size = static_cast<std::uint64_t>(rest.size() - at);
  if ((header & kHasSize) != 0) {
    size = 0;
    for (int shift = 0; shift < 56; shift += 7) {  // LEB128
      if (at >= rest.size()) return std::nullopt;
      const auto byte = static_cast<uchar>(rest[at++]);
      size |= std::uint64_t{byte & 0x7fU} << shift;
      if (byte < 0x80) break;
    }
    if (size > static_cast<std::uint64_t>(rest.size() - at)) return std::nullopt;
  }
  const Av1Unit unit{header >> 3 & 15, rest.sliced(at, static_cast<qsizetype>(size))};
  rest = rest.sliced(at + unit.content.size());
  return unit;
}

constexpr qsizetype kLongestSequenceHeader = 512;

// A parameter set as it was before zeros were kept from looking like a start code.
QByteArray unescaped(QByteArrayView unit) {
  QByteArray bytes;
  int zeros = 0;
  for (const char byte : unit.first(std::min(unit.size(), kLongestSequenceHeader))) {
    if (zeros >= 2 && byte == 3) {
      zeros = 0;
      continue;
    }
    zeros = byte == 0 ? zeros + 1 : 0;
    bytes.append(byte);
  }
  return bytes;
}

// `unit` with its header of two bytes.
std::optional<HeifCodedSize> hevcSequence(QByteArrayView unit) {
  const QByteArray bytes = unescaped(unit);
  BitReader reader(bytes);
  reader.skip(16 + 4);
  const auto subLayers = reader.bits(3);
  reader.skip(1 + 96);  // profile, tier and level
  bool hasProfile[8] = {};
  bool hasLevel[8] = {};
  for (std::uint32_t layer = 0; layer < subLayers; ++layer) {
    hasProfile[layer] = reader.flag();
    hasLevel[layer] = reader.flag();
  }
  for (auto layer = subLayers; subLayers > 0 && layer < 8; ++layer) reader.skip(2);
  for (std::uint32_t layer = 0; layer < subLayers; ++layer) {
    reader.skip((hasProfile[layer] ? 88 : 0) + (hasLevel[layer] ? 8 : 0));
  }
  reader.golomb();  // its number
  HeifCodedSize size;
  const auto chroma = reader.golomb();
  if (chroma == 3) reader.skip(1);
  size.isSubsampled = chroma < 2;
  size.width = size.widthInReach = reader.golomb();
  size.height = size.heightInReach = reader.golomb();
  if (reader.flag()) {  // the window that is shown
    for (int side = 0; side < 4; ++side) reader.golomb();
  }
  const auto bitsAbove8 = std::max(reader.golomb(), reader.golomb());
  if (reader.isBroken() || bitsAbove8 > 8) return std::nullopt;
  size.bits = 8 + static_cast<int>(bitsAbove8);
  return size;
}

// False for a sequence header that is broken. Those of other layers than the first are nobody's business.
bool includeHevcUnit(std::optional<HeifCodedSize>& all, QByteArrayView unit) {
  constexpr int kSequence = 33;
  if (unit.size() < 2 || (unit[0] >> 1 & 63) != kSequence || (unit[0] & 1) != 0 || (unit[1] & 0xf8) != 0) return true;
  const auto size = hevcSequence(unit);
  if (size) include(all, *size);
  return size.has_value();
}

qsizetype bigEndian(QByteArrayView bytes) {
  qsizetype value = 0;
  for (const char byte : bytes) value = value << 8 | static_cast<uchar>(byte);
  return value;
}

}  // namespace

std::optional<HeifCodedSize> av1CodedSize(QByteArrayView configuration, QByteArrayView data) {
  enum { kSequence = 1, kFrameHeader = 3, kFrame = 6 };
  constexpr qsizetype kConfigurationHeader = 4;
  std::optional<HeifCodedSize> all;
  std::optional<Av1Sequence> sequence;
  for (QByteArrayView rest : {configuration.sliced(std::min(kConfigurationHeader, configuration.size())), data}) {
    while (!rest.isEmpty()) {
      const auto unit = takeAv1Unit(rest);
      if (!unit) break;  // the decoder stops there as well
      if (unit->type == kSequence) {
        sequence = av1Sequence(unit->content);
        if (!sequence) return std::nullopt;
        include(all, sequence->size);
      } else if ((unit->type == kFrame || unit->type == kFrameHeader) && sequence &&
                 isAv1FrameResized(*sequence, unit->content)) {
        all->widthInReach = std::max(all->widthInReach, std::int64_t{1} << sequence->widthBits);
        all->heightInReach = std::max(all->heightInReach, std::int64_t{1} << sequence->heightBits);
      }
    }
  }
  return all;
}

std::optional<HeifCodedSize> hevcCodedSize(QByteArrayView configuration, QByteArrayView data) {
  constexpr qsizetype kConfigurationHeader = 22;
  std::optional<HeifCodedSize> all;
  if (configuration.size() <= kConfigurationHeader) return std::nullopt;
  int arrays = static_cast<uchar>(configuration[kConfigurationHeader]);
  QByteArrayView rest = configuration.sliced(kConfigurationHeader + 1);
  for (; arrays > 0 && rest.size() >= 3; --arrays) {
    auto units = bigEndian(rest.sliced(1, 2));
    rest = rest.sliced(3);
    for (; units > 0 && rest.size() >= 2; --units) {
      const auto size = std::min(bigEndian(rest.first(2)), rest.size() - 2);
      if (!includeHevcUnit(all, rest.sliced(2, size))) return std::nullopt;
      rest = rest.sliced(2 + size);
    }
  }
  while (data.size() >= 4) {
    const auto size = std::min(bigEndian(data.first(4)), data.size() - 4);
    if (!includeHevcUnit(all, data.sliced(4, size))) return std::nullopt;
    data = data.sliced(4 + size);
  }
  return all;
}

}  // namespace lumagrid
