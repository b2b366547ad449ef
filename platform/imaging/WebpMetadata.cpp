#include <QtEndian>

#include "ExifOrientation.h"
#include "PictureMetadata.h"

namespace lumagrid {

PictureMetadata webpMetadata(QByteArrayView file) {
  constexpr qsizetype kFileHeader = 12;
  constexpr qsizetype kChunkHeader = 8;
  PictureMetadata metadata;
  qsizetype at = kFileHeader;
  while (at + kChunkHeader <= file.size()) {
    const qsizetype length = qFromLittleEndian<quint32>(file.data() + at + 4);
    if (length > file.size() - at - kChunkHeader) break;
    const QByteArrayView name = file.sliced(at, 4);
    const QByteArrayView chunk = file.sliced(at + kChunkHeader, length);
    if (name == QByteArrayView("ICCP") && length <= kLargestProfileBytes) metadata.iccProfile = chunk.toByteArray();
    if (name == QByteArrayView("EXIF")) metadata.orientation = exifOrientationOfBlock(chunk);
    at += kChunkHeader + length + length % 2;
  }
  return metadata;
}

// The profile stands in a version 5 header (124 bytes) whose colour space is "embedded"; its place counts from the
// beginning of that header.
PictureMetadata bmpMetadata(QByteArrayView file) {
  constexpr qsizetype kFileHeader = 14;
  constexpr quint32 kVersion5HeaderBytes = 124;
  constexpr quint32 kEmbedded = 0x4d424544;  // "MBED"
  PictureMetadata metadata;
  if (file.size() < kFileHeader + qsizetype{kVersion5HeaderBytes} || !file.startsWith("BM")) return metadata;
  const char* header = file.data() + kFileHeader;
  if (qFromLittleEndian<quint32>(header) != kVersion5HeaderBytes) return metadata;
  if (qFromLittleEndian<quint32>(header + 56) != kEmbedded) return metadata;
  const qsizetype offset = kFileHeader + qsizetype{qFromLittleEndian<quint32>(header + 112)};
  const qsizetype length = qFromLittleEndian<quint32>(header + 116);
  if (length <= kLargestProfileBytes && offset <= file.size() && length <= file.size() - offset) {
    metadata.iccProfile = file.sliced(offset, length).toByteArray();
  }
  return metadata;
}

}  // namespace lumagrid
