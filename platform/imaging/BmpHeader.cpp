#include "BmpHeader.h"

#include <QtEndian>
#include <algorithm>

#include "PictureMetadata.h"

namespace lumagrid {
namespace {

constexpr qsizetype kFileHeaderBytes = 14;
constexpr qsizetype kArrayHeaderBytes = 14;
constexpr qsizetype kPixelsOffsetAt = 10;
constexpr quint32 kCompressionAt = 16;  // in the second header, from here on
constexpr quint32 kMasksAt = 40;
constexpr quint32 kVersion4Bytes = 108;
constexpr quint32 kVersion5Bytes = 124;

quint32 numberAt(QByteArrayView bytes, qsizetype at) {
  return qFromLittleEndian<quint32>(bytes.data() + at);
}

bool isCommon(quint32 headerBytes) {
  return headerBytes == 12 || headerBytes == 40 || headerBytes == kVersion4Bytes || headerBytes == kVersion5Bytes;
}

}  // namespace

QByteArray bmpWithCommonHeader(QByteArrayView file) {
  const qsizetype start = file.startsWith("BA") ? kArrayHeaderBytes : 0;
  if (file.size() < start + kFileHeaderBytes + 4) return {};
  const QByteArrayView header = file.sliced(start + kFileHeaderBytes);
  const quint32 headerBytes = numberAt(header, 0);
  if (headerBytes < 12 || headerBytes > kVersion5Bytes || header.size() < qsizetype{headerBytes}) return {};
  if (start == 0 && isCommon(headerBytes)) return {};

  QByteArray common = file.sliced(start, kFileHeaderBytes).toByteArray();
  qsizetype grown = 0;
  if (isCommon(headerBytes)) {
    common += file.sliced(start + kFileHeaderBytes);
  } else {
    QByteArray second(kVersion4Bytes, '\0');
    std::copy_n(header.data(), std::min(headerBytes, kVersion4Bytes), second.data());
    qToLittleEndian<quint32>(kVersion4Bytes, second.data());
    // Masks belong to the header from version 2 on; OS/2 has other things there, or Huffman and RLE24 as compression.
    const bool isVersion2Or3 = headerBytes == 52 || headerBytes == 56;
    const bool isOs2 = !isVersion2Or3;
    if (isOs2 && headerBytes > kCompressionAt && numberAt(second, kCompressionAt) > 2) return {};
    if (isOs2) std::fill(second.begin() + kMasksAt, second.end(), '\0');
    common += second;
    common += header.sliced(headerBytes);
    grown = qsizetype{kVersion4Bytes} - qsizetype{headerBytes};
  }
  const qint64 pixels = qint64{numberAt(common, kPixelsOffsetAt)} - start + grown;
  if (pixels < 0 || pixels > common.size()) return {};
  qToLittleEndian<quint32>(static_cast<quint32>(pixels), common.data() + kPixelsOffsetAt);
  return common;
}

// The profile stands in a version 5 header (124 bytes) whose colour space is "embedded"; its place counts from the
// beginning of that header.
PictureMetadata bmpMetadata(QByteArrayView file) {
  constexpr quint32 kEmbedded = 0x4d424544;  // "MBED"
  PictureMetadata metadata;
  if (file.size() < kFileHeaderBytes + qsizetype{kVersion5Bytes} || !file.startsWith("BM")) return metadata;
  const char* header = file.data() + kFileHeaderBytes;
  if (qFromLittleEndian<quint32>(header) != kVersion5Bytes) return metadata;
  if (qFromLittleEndian<quint32>(header + 56) != kEmbedded) return metadata;
  const qsizetype offset = kFileHeaderBytes + qsizetype{qFromLittleEndian<quint32>(header + 112)};
  const qsizetype length = qFromLittleEndian<quint32>(header + 116);
  if (length <= kLargestProfileBytes && offset <= file.size() && length <= file.size() - offset) {
    metadata.iccProfile = file.sliced(offset, length).toByteArray();
  }
  return metadata;
}

}  // namespace lumagrid
