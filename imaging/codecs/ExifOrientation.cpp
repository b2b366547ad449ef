#include "ExifOrientation.h"

#include <QtEndian>

namespace lumagrid {
namespace {

constexpr int kUpright = 1;
constexpr std::uint16_t kOrientationTag = 274;
constexpr std::uint16_t kTypeShort = 3;
constexpr std::uint16_t kTypeLong = 4;
constexpr qsizetype kEntryBytes = 12;

struct TiffReader {
  QByteArrayView bytes;
  bool isBigEndian = false;

  template <typename Number>
  [[nodiscard]] Number at(qsizetype offset) const {
    const char* from = bytes.data() + offset;
    return isBigEndian ? qFromBigEndian<Number>(from) : qFromLittleEndian<Number>(from);
  }
};

}  // namespace

int exifOrientation(QByteArrayView tiff) {
  const bool isBigEndian = tiff.startsWith("MM");
  if (tiff.size() < 8 || (!isBigEndian && !tiff.startsWith("II"))) return kUpright;
  const TiffReader reader{tiff, isBigEndian};
  const qsizetype directory = reader.at<std::uint32_t>(4);
  if (directory > tiff.size() - 2) return kUpright;
  const qsizetype entryCount = reader.at<std::uint16_t>(directory);
  for (qsizetype index = 0; index < entryCount; ++index) {
    const qsizetype entry = directory + 2 + index * kEntryBytes;
    if (entry + kEntryBytes > tiff.size()) return kUpright;
    if (reader.at<std::uint16_t>(entry) != kOrientationTag) continue;
    const auto type = reader.at<std::uint16_t>(entry + 2);
    if (type != kTypeShort && type != kTypeLong) return kUpright;
    const std::int64_t value =
        type == kTypeShort ? reader.at<std::uint16_t>(entry + 8) : reader.at<std::uint32_t>(entry + 8);
    return value >= 1 && value <= 8 ? static_cast<int>(value) : kUpright;
  }
  return kUpright;
}

int exifOrientationOfBlock(QByteArrayView block) {
  constexpr QByteArrayView kPrefix("Exif\0\0", 6);
  return exifOrientation(block.startsWith(kPrefix) ? block.sliced(kPrefix.size()) : block);
}

}  // namespace lumagrid
