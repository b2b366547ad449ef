#include "TiffDirectory.h"

#include <tiff.h>

#include <QtEndian>
#include <algorithm>
#include <array>
#include <map>

#include "MemoryLimit.h"

namespace lumagrid {
namespace {

// Numbers in the file's order of bytes; those behind its end are 0.
class TiffBytes {
 public:
  explicit TiffBytes(QByteArrayView bytes) : m_bytes(bytes), m_isBigEndian(bytes.startsWith("MM")) {}

  [[nodiscard]] std::uint64_t size() const { return static_cast<std::uint64_t>(m_bytes.size()); }
  [[nodiscard]] std::uint64_t number(std::uint64_t at, int count) const {
    if (at > size() || size() - at < static_cast<std::uint64_t>(count)) return 0;
    std::uint64_t value = 0;
    for (int index = 0; index < count; ++index) {
      const auto place = static_cast<qsizetype>(at) + (m_isBigEndian ? index : count - 1 - index);
      value = value << 8 | static_cast<uchar>(m_bytes[place]);
    }
    return value;
  }

 private:
  QByteArrayView m_bytes;
  bool m_isBigEndian;
};

std::uint64_t bytesOfType(std::uint64_t type) {
  constexpr std::array<std::uint8_t, 19> kBytes = {1, 1, 1, 2, 4, 8, 1, 1, 2, 4, 8, 4, 8, 4, 0, 0, 8, 8, 8};
  return type < kBytes.size() ? kBytes[type] : 1;
}

// The first number of each tag, by the tag; the first of several entries counts.
struct Directory {
  std::map<std::uint64_t, std::uint64_t> values;
  std::uint64_t bytes = 0;  // that all tags name outside of the directory, and that are there

  [[nodiscard]] std::int64_t value(std::uint64_t tag, std::uint64_t fallback) const {
    const auto found = values.find(tag);
    constexpr std::uint64_t kLargest = 0xffffffff;
    return static_cast<std::int64_t>(std::min(found == values.end() ? fallback : found->second, kLargest));
  }
};

Directory firstDirectory(QByteArrayView file) {
  const TiffBytes bytes(file);
  constexpr std::uint64_t kBigTiff = 43;
  const bool isBig = bytes.number(2, 2) == kBigTiff;
  const int wordBytes = isBig ? 8 : 4;  // of counts and places
  const std::uint64_t start = isBig ? bytes.number(8, 8) : bytes.number(4, 4);
  const std::uint64_t entryBytes = isBig ? 20 : 12;
  const std::uint64_t firstEntry = start + (isBig ? 8 : 2);
  Directory directory;
  if (start >= bytes.size()) return directory;
  const std::uint64_t count = std::min(bytes.number(start, isBig ? 8 : 2), (bytes.size() - start) / entryBytes);
  for (std::uint64_t index = 0; index < count; ++index) {
    const std::uint64_t entry = firstEntry + index * entryBytes;
    const std::uint64_t valueBytes = bytesOfType(bytes.number(entry + 2, 2));
    const std::uint64_t values = bytes.number(entry + 4, wordBytes);
    std::uint64_t at = entry + 4 + static_cast<std::uint64_t>(wordBytes);
    if (valueBytes == 0) continue;
    if (values > static_cast<std::uint64_t>(wordBytes) / valueBytes) {
      at = bytes.number(at, wordBytes);
      const std::uint64_t most = at < bytes.size() ? (bytes.size() - at) / valueBytes : 0;
      if (values <= most) directory.bytes += values * valueBytes;
    }
    directory.values.try_emplace(bytes.number(entry, 2), bytes.number(at, static_cast<int>(valueBytes)));
  }
  return directory;
}

std::int64_t parts(std::int64_t whole, std::int64_t part) {
  return part < 1 ? whole : (whole + part - 1) / part;
}

// Of black and white, a byte can give many more. What is not packed is shown while a sixteenth of it is there.
bool isSizeCredible(const Directory& directory, std::int64_t width, std::int64_t height, std::int64_t fileBytes) {
  constexpr std::int64_t kBlackAndWhiteBonus = 64;
  const std::int64_t bits = directory.value(TIFFTAG_BITSPERSAMPLE, 1);
  const std::int64_t bonus = bits == 1 ? kBlackAndWhiteBonus : 1;
  const bool isPacked = directory.value(TIFFTAG_COMPRESSION, COMPRESSION_NONE) != COMPRESSION_NONE;
  const std::int64_t samples = width * height * directory.value(TIFFTAG_SAMPLESPERPIXEL, 1);
  return isPictureSizeCredible(width, height, 0) || (isPictureSizeCredible(width, height, fileBytes * bonus) &&
                                                     (isPacked || samples / 8 * bits / 16 <= fileBytes));
}

}  // namespace

ImageError checkTiffDirectory(QByteArrayView file) {
  constexpr std::uint64_t kMostUses = 4;  // of each byte of the file
  constexpr std::uint64_t kBytesOnTrust = 1 << 20;
  constexpr std::int64_t kMostSamples = 32;
  constexpr std::int64_t kMostBits = 64;
  constexpr std::int64_t kBlocksOnTrust = 1 << 16;
  constexpr std::int64_t kLargestOverhang = 1024;
  const Directory directory = firstDirectory(file);
  const std::int64_t width = directory.value(TIFFTAG_IMAGEWIDTH, 0);
  const std::int64_t height = directory.value(TIFFTAG_IMAGELENGTH, 0);
  const std::int64_t samples = directory.value(TIFFTAG_SAMPLESPERPIXEL, 1);
  if (width < 1 || height < 1 || samples > kMostSamples) return ImageError::damaged;
  if (directory.value(TIFFTAG_BITSPERSAMPLE, 1) > kMostBits) return ImageError::damaged;
  if (!isPictureSizeSane(width, height)) return ImageError::tooLarge;
  if (!isSizeCredible(directory, width, height, file.size())) return ImageError::damaged;
  if (directory.bytes > kMostUses * static_cast<std::uint64_t>(file.size()) + kBytesOnTrust) return ImageError::damaged;

  const std::int64_t tileWidth = directory.value(TIFFTAG_TILEWIDTH, 0);
  const std::int64_t tileHeight = directory.value(TIFFTAG_TILELENGTH, 0);
  const bool isPlanar = directory.value(TIFFTAG_PLANARCONFIG, PLANARCONFIG_CONTIG) == PLANARCONFIG_SEPARATE;
  if (tileWidth / 2 > width + kLargestOverhang || tileHeight / 2 > height + kLargestOverhang) {
    return ImageError::damaged;
  }
  const std::int64_t blocks = tileWidth > 0 && tileHeight > 0
                                  ? parts(width, tileWidth) * parts(height, tileHeight)
                                  : parts(height, std::min(directory.value(TIFFTAG_ROWSPERSTRIP, 0xffffffff), height));
  const std::int64_t allBlocks = blocks * (isPlanar ? samples : 1);
  return allBlocks > kBlocksOnTrust && allBlocks > file.size() ? ImageError::damaged : ImageError::none;
}

}  // namespace lumagrid
