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
    const qsizetype length = qFromLittleEndian<std::uint32_t>(file.data() + at + 4);
    if (length > file.size() - at - kChunkHeader) break;
    const QByteArrayView name = file.sliced(at, 4);
    const QByteArrayView chunk = file.sliced(at + kChunkHeader, length);
    if (name == QByteArrayView("ICCP") && length <= kLargestProfileBytes) metadata.iccProfile = chunk.toByteArray();
    if (name == QByteArrayView("EXIF")) metadata.orientation = exifOrientationOfBlock(chunk);
    at += kChunkHeader + length + length % 2;
  }
  return metadata;
}

}  // namespace lumagrid
