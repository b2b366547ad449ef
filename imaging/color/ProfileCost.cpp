#include "ProfileCost.h"

#include <QtEndian>
#include <cstdint>

namespace lumagrid {
namespace {

// Numbers behind the end are 0.
template <typename Number>
std::int64_t numberAt(QByteArrayView bytes, std::int64_t at) {
  if (at < 0 || at > bytes.size() - static_cast<std::int64_t>(sizeof(Number))) return 0;
  return qFromBigEndian<Number>(bytes.data() + at);
}

QByteArrayView from(QByteArrayView bytes, std::int64_t at) {
  return at <= bytes.size() ? bytes.sliced(at) : QByteArrayView();
}

bool isOfType(QByteArrayView tag, QByteArrayView type) {
  return tag.startsWith(type);
}

// A table of colours with `points(channel)` points along each input.
template <typename Points>
bool isGridWithin(int inputs, std::int64_t outputs, std::int64_t valueBytes, std::int64_t limit, Points points) {
  constexpr int kMostChannels = 15;
  if (inputs > kMostChannels || outputs > kMostChannels) return false;
  std::int64_t bytes = outputs * valueBytes;
  for (int channel = 0; channel < inputs && bytes <= limit; ++channel) bytes *= points(channel);
  return bytes <= limit;
}

// lut8Type and lut16Type.
bool isTableAffordable(QByteArrayView tag, int valueBytes) {
  const auto inputs = static_cast<int>(numberAt<std::uint8_t>(tag, 8));
  return isGridWithin(inputs, numberAt<std::uint8_t>(tag, 9), valueBytes, tag.size(),
                      [&tag](int) { return numberAt<std::uint8_t>(tag, 10); });
}

// lutAToBType and lutBToAType.
bool isStagedTableAffordable(QByteArrayView tag) {
  const std::int64_t gridAt = numberAt<std::uint32_t>(tag, 24);
  if (gridAt == 0) return true;
  const QByteArrayView grid = from(tag, gridAt);
  const auto inputs = static_cast<int>(numberAt<std::uint8_t>(tag, 8));
  return isGridWithin(inputs, numberAt<std::uint8_t>(tag, 9), numberAt<std::uint8_t>(grid, 16), grid.size(),
                      [&grid](int channel) { return numberAt<std::uint8_t>(grid, channel); });
}

// A set of curves, each of segments that are searched one after the other for every colour.
bool areCurvesAffordable(QByteArrayView element) {
  constexpr std::int64_t kMostSegments = 64;
  const std::int64_t count = numberAt<std::uint16_t>(element, 8);
  constexpr std::int64_t kMostChannels = 15;
  if (count > kMostChannels) return false;
  for (std::int64_t index = 0; index < count; ++index) {
    const QByteArrayView curve = from(element, numberAt<std::uint32_t>(element, 12 + index * 8));
    if (numberAt<std::uint16_t>(curve, 8) > kMostSegments) return false;
  }
  return true;
}

// multiProcessElementsType: a chain of elements, any of which may point at the same place.
bool isChainAffordable(QByteArrayView tag) {
  constexpr std::int64_t kMostElements = 32;
  const std::int64_t count = numberAt<std::uint32_t>(tag, 12);
  if (count > kMostElements) return false;
  std::int64_t bytes = 0;
  for (std::int64_t index = 0; index < count; ++index) {
    const QByteArrayView element = from(tag, numberAt<std::uint32_t>(tag, 16 + index * 8));
    bytes += numberAt<std::uint32_t>(tag, 20 + index * 8);
    if (isOfType(element, "cvst") && !areCurvesAffordable(element)) return false;
    if (!isOfType(element, "clut")) continue;
    const auto inputs = static_cast<int>(numberAt<std::uint16_t>(element, 8));
    const bool isWithin = isGridWithin(inputs, numberAt<std::uint16_t>(element, 10), 4, element.size(),
                                       [&](int channel) { return numberAt<std::uint8_t>(element, 12 + channel); });
    if (!isWithin) return false;
  }
  return bytes / 2 <= tag.size();  // elements share no more than some of them
}

bool isTagAffordable(QByteArrayView tag) {
  if (isOfType(tag, "mft1")) return isTableAffordable(tag, 1);
  if (isOfType(tag, "mft2")) return isTableAffordable(tag, 2);
  if (isOfType(tag, "mAB ") || isOfType(tag, "mBA ")) return isStagedTableAffordable(tag);
  if (isOfType(tag, "mpet")) return isChainAffordable(tag);
  if (isOfType(tag, "curv")) return numberAt<std::uint32_t>(tag, 8) <= tag.size() / 2;
  return true;
}

}  // namespace

bool isProfileAffordable(QByteArrayView profile) {
  constexpr std::int64_t kTagsAt = 128;
  constexpr std::int64_t kEntryBytes = 12;
  constexpr std::int64_t kMostTags = 100;
  const std::int64_t count = numberAt<std::uint32_t>(profile, kTagsAt);
  if (count > kMostTags) return false;
  for (std::int64_t index = 0; index < count; ++index) {
    const std::int64_t entry = kTagsAt + 4 + index * kEntryBytes;
    const std::int64_t at = numberAt<std::uint32_t>(profile, entry + 4);
    const std::int64_t size = numberAt<std::uint32_t>(profile, entry + 8);
    if (at > profile.size() || size > profile.size() - at) continue;  // such tags are passed over
    if (!isTagAffordable(profile.sliced(at, size))) return false;
  }
  return true;
}

}  // namespace lumagrid
