#include "BmpFile.h"

#include <QtEndian>
#include <algorithm>
#include <cstdlib>
#include <limits>

#include "IccProfile.h"

namespace lumagrid {
namespace {

constexpr qsizetype kFileHeaderBytes = 14;
constexpr std::uint32_t kCoreHeaderBytes = 12;
constexpr std::uint32_t kInfoHeaderBytes = 40;
constexpr std::uint32_t kVersion3Bytes = 56;  // the first with a mask for alpha
constexpr std::uint32_t kVersion5Bytes = 124;

enum Compression { kNone, kRuns8, kRuns4, kMasks, kJpegOrRuns24, kPng, kMasksWithAlpha };

// The second header, read as if it went on with zeros.
class Header {
 public:
  explicit Header(QByteArrayView fromHere) : m_bytes(fromHere), m_size(number(0, 4)) {
    m_bytes = m_bytes.first(std::min<qsizetype>(m_size, m_bytes.size()));
  }

  [[nodiscard]] std::uint32_t size() const { return m_size; }
  [[nodiscard]] bool isCore() const { return m_size == kCoreHeaderBytes; }
  [[nodiscard]] bool isWhole() const { return m_size >= kCoreHeaderBytes && m_bytes.size() == m_size; }
  [[nodiscard]] std::uint32_t number(qsizetype at, qsizetype count) const {
    std::uint32_t value = 0;
    for (qsizetype index = std::min(at + count, m_bytes.size()) - 1; index >= at; --index) {
      value = value << 8 | static_cast<uchar>(m_bytes[index]);
    }
    return value;
  }

  [[nodiscard]] std::int64_t width() const {
    return isCore() ? std::int32_t(number(4, 2)) : std::int32_t(number(4, 4));
  }
  [[nodiscard]] std::int64_t height() const {
    return isCore() ? std::int32_t(number(6, 2)) : std::int32_t(number(8, 4));
  }
  [[nodiscard]] int bits() const { return static_cast<int>(number(isCore() ? 10 : 14, 2)); }
  [[nodiscard]] std::uint32_t compression() const { return number(16, 4); }
  [[nodiscard]] std::uint32_t paletteColors() const { return number(32, 4); }

  // What follows a header of the plain version, where later ones have it within.
  [[nodiscard]] qsizetype masksBehind() const {
    if (m_size != kInfoHeaderBytes) return 0;
    return compression() == kMasks ? 12 : compression() == kMasksWithAlpha ? 16 : 0;
  }

 private:
  QByteArrayView m_bytes;
  std::uint32_t m_size;
};

std::optional<BmpPacking> packingOf(const Header& header) {
  const int bits = header.bits();
  const bool isIndexed = bits == 1 || bits == 2 || bits == 4 || bits == 8;
  const bool isDirect = bits == 16 || bits == 24 || bits == 32 || bits == 64;
  switch (header.compression()) {
    case kNone:
      return isIndexed || isDirect ? std::optional(BmpPacking::none) : std::nullopt;
    case kRuns8:
      return bits == 8 ? std::optional(BmpPacking::runs8) : std::nullopt;
    case kRuns4:
      return bits == 4 ? std::optional(BmpPacking::runs4) : std::nullopt;
    case kMasks:
    case kMasksWithAlpha:
      return bits == 16 || bits == 32 ? std::optional(BmpPacking::none) : std::nullopt;
    case kJpegOrRuns24:
      return bits == 24  ? std::optional(BmpPacking::runs24)
             : bits == 0 ? std::optional(BmpPacking::jpeg)
                         : std::nullopt;
    case kPng:
      return bits == 0 ? std::optional(BmpPacking::png) : std::nullopt;
    default:
      return std::nullopt;
  }
}

std::array<std::uint32_t, 4> masksOf(QByteArrayView fromHeader, const Header& header) {
  const std::uint32_t compression = header.compression();
  if (compression != kMasks && compression != kMasksWithAlpha) {
    return header.bits() == 16 ? std::array<std::uint32_t, 4>{0x7c00, 0x3e0, 0x1f}
                               : std::array<std::uint32_t, 4>{0xff0000, 0xff00, 0xff};
  }
  constexpr qsizetype kMasksAt = 40;
  const bool hasAlpha = compression == kMasksWithAlpha || header.size() >= kVersion3Bytes;
  std::array<std::uint32_t, 4> masks{};
  for (qsizetype index = 0; index < (hasAlpha ? 4 : 3); ++index) {
    const qsizetype at = kMasksAt + index * 4;
    if (at + 4 > fromHeader.size()) break;
    masks[static_cast<size_t>(index)] = qFromLittleEndian<std::uint32_t>(fromHeader.data() + at);
  }
  return masks;
}

// As many bytes as the palette should have; it may end before, where the pixels begin.
qsizetype paletteBytes(const Header& header) {
  if (header.bits() < 1 || header.bits() > 8) return 0;
  const qsizetype most = qsizetype{1} << header.bits();
  const qsizetype count = header.paletteColors() == 0 ? most : std::min<qsizetype>(header.paletteColors(), most);
  return count * (header.isCore() ? 3 : 4);
}

std::array<BmpFile::Color, 256> paletteOf(QByteArrayView bytes, const Header& header) {
  const qsizetype entryBytes = header.isCore() ? 3 : 4;
  std::array<BmpFile::Color, 256> palette;
  palette.fill({0, 0, 0, 255});
  for (qsizetype index = 0; (index + 1) * entryBytes <= bytes.size(); ++index) {
    const auto* entry = reinterpret_cast<const uchar*>(bytes.data()) + index * entryBytes;
    palette[static_cast<size_t>(index)] = {entry[2], entry[1], entry[0], 255};
  }
  return palette;
}

// A profile stands in a version 5 header whose colour space is "embedded"; its place counts from that header on.
QByteArray profileOf(QByteArrayView fromHeader, const Header& header) {
  constexpr std::uint32_t kEmbedded = 0x4d424544;  // "MBED"
  // The pixels of 64 bits are linear light by definition.
  if (header.bits() == 64) return iccProfileOf(GammaColors{1});
  if (header.size() < kVersion5Bytes || header.number(56, 4) != kEmbedded) return {};
  const qsizetype offset = header.number(112, 4);
  const qsizetype length = header.number(116, 4);
  if (length > kLargestProfileBytes || offset > fromHeader.size() || length > fromHeader.size() - offset) return {};
  return fromHeader.sliced(offset, length).toByteArray();
}

}  // namespace

std::optional<BmpFile> bmpFile(QByteArrayView bytes) {
  const qsizetype start = bytes.startsWith("BA") ? 14 : 0;  // the header of an array stands before its first picture
  if (bytes.size() < start + kFileHeaderBytes + kCoreHeaderBytes) return std::nullopt;
  const QByteArrayView fromHeader = bytes.sliced(start + kFileHeaderBytes);
  const Header header(fromHeader);
  const auto packing = packingOf(header);
  const std::int64_t width = header.width();
  const std::int64_t height = header.height();
  if (!header.isWhole() || !packing || width < 1 || height == 0 || height <= std::numeric_limits<std::int32_t>::min()) {
    return std::nullopt;
  }
  BmpFile file;
  file.size = {static_cast<int>(width), static_cast<int>(std::abs(height))};
  file.isTopDown = height < 0;
  file.bits = header.bits();
  file.packing = *packing;
  file.masks = masksOf(fromHeader, header);
  file.metadata.iccProfile = profileOf(fromHeader, header);

  const auto behindHeaders =
      bytes.sliced(std::min(start + kFileHeaderBytes + qsizetype{header.size()} + header.masksBehind(), bytes.size()));
  const qsizetype paletteEnd = paletteBytes(header);
  // Counted from the beginning of the file; some writers leave it out.
  qsizetype pixelsAt =
      qFromLittleEndian<std::uint32_t>(bytes.data() + start + 10) - (behindHeaders.data() - bytes.data());
  if (pixelsAt < 0) pixelsAt = paletteEnd;
  pixelsAt = std::min(pixelsAt, behindHeaders.size());
  file.palette = paletteOf(behindHeaders.first(std::min(paletteEnd, pixelsAt)), header);
  file.pixels = behindHeaders.sliced(pixelsAt);
  return file;
}

}  // namespace lumagrid
