#include <zlib.h>

#include <QtEndian>

#include "ExifOrientation.h"
#include "PictureMetadata.h"

namespace lumagrid {
namespace {

// Unpacks a zlib stream; empty when it is damaged or gives more than a profile may have.
QByteArray inflated(QByteArrayView packed) {
  z_stream stream{};
  if (inflateInit(&stream) != Z_OK) return {};
  stream.next_in = reinterpret_cast<Bytef*>(const_cast<char*>(packed.data()));
  stream.avail_in = static_cast<uInt>(packed.size());
  QByteArray unpacked;
  int status = Z_OK;
  while (status == Z_OK && unpacked.size() < kLargestProfileBytes) {
    char part[16384];
    stream.next_out = reinterpret_cast<Bytef*>(part);
    stream.avail_out = sizeof(part);
    status = inflate(&stream, Z_NO_FLUSH);
    unpacked.append(part, static_cast<qsizetype>(sizeof(part) - stream.avail_out));
  }
  inflateEnd(&stream);
  return status == Z_STREAM_END ? unpacked : QByteArray();
}

// "name", a zero byte, the method (0: zlib), the packed profile.
QByteArray profileOfChunk(QByteArrayView chunk) {
  const qsizetype nameEnd = chunk.indexOf('\0');
  if (nameEnd < 0 || nameEnd + 2 >= chunk.size() || chunk[nameEnd + 1] != 0) return {};
  return inflated(chunk.sliced(nameEnd + 2));
}

}  // namespace

PictureMetadata pngMetadata(QByteArrayView file) {
  constexpr qsizetype kSignatureBytes = 8;
  constexpr qsizetype kLengthAndName = 8;
  constexpr qsizetype kChecksum = 4;
  PictureMetadata metadata;
  qsizetype at = kSignatureBytes;
  while (at + kLengthAndName <= file.size()) {
    const qsizetype length = qFromBigEndian<quint32>(file.data() + at);
    if (length > file.size() - at - kLengthAndName) break;
    const QByteArrayView name = file.sliced(at + 4, 4);
    const QByteArrayView chunk = file.sliced(at + kLengthAndName, length);
    if (name == QByteArrayView("iCCP")) {
      metadata.iccProfile = profileOfChunk(chunk);
    } else if (name == QByteArrayView("pHYs") && length >= 8) {
      metadata.pixelAspect =
          pixelAspectOf(qFromBigEndian<quint32>(chunk.data()), qFromBigEndian<quint32>(chunk.data() + 4));
    } else if (name == QByteArrayView("eXIf")) {  // also valid after the pixels
      metadata.orientation = exifOrientationOfBlock(chunk);
    } else if (name == QByteArrayView("IEND")) {
      break;
    }
    at += kLengthAndName + length + kChecksum;
  }
  return metadata;
}

}  // namespace lumagrid
