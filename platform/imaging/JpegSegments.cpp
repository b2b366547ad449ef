#include "JpegSegments.h"

#include <QtEndian>

namespace lumagrid {

bool isJpegFrame(int marker) {
  return marker >= kStartOfFrameBaseline && marker <= kStartOfFrame15 && marker != kDefineHuffman &&
         marker != kReservedFrame && marker != kDefineArithmetic;
}

int byteAt(QByteArrayView data, qsizetype at) {
  return static_cast<unsigned char>(data[at]);
}

int wordAt(QByteArrayView data, qsizetype at) {
  return qFromBigEndian<quint16>(data.data() + at);
}

std::optional<JpegSegment> jpegSegment(QByteArrayView file, qsizetype at) {
  while (at + 2 <= file.size() && wordAt(file, at) == 0xffff) ++at;
  if (at + 2 > file.size() || byteAt(file, at) != 0xff) return std::nullopt;
  const int marker = byteAt(file, at + 1);
  if (marker == kEndOfImage) return JpegSegment{marker, {}, at, at + 2};
  if (marker <= 1 || (marker >= kRestart0 && marker <= kStartOfImage)) return std::nullopt;
  if (at + 4 > file.size()) return std::nullopt;
  const int length = wordAt(file, at + 2);
  if (length < 2 || at + 2 + length > file.size()) return std::nullopt;
  return JpegSegment{marker, file.sliced(at + 4, length - 2), at, at + 2 + length};
}

}  // namespace lumagrid
