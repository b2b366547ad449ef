#pragma once

#include <QByteArrayView>
#include <optional>

namespace lumagrid {

// Of ITU-T T.81, table B.1, and the habits of applications.
enum JpegMarker : unsigned char {
  kStartOfFrameBaseline = 0xc0,
  kStartOfFrameExtended = 0xc1,
  kStartOfFrameProgressive = 0xc2,
  kDefineHuffman = 0xc4,
  kReservedFrame = 0xc8,
  kDefineArithmetic = 0xcc,
  kStartOfFrame15 = 0xcf,
  kRestart0 = 0xd0,
  kRestart7 = 0xd7,
  kStartOfImage = 0xd8,
  kEndOfImage = 0xd9,
  kStartOfScan = 0xda,
  kDefineQuantization = 0xdb,
  kDefineRestart = 0xdd,
  kApp0 = 0xe0,
  kApp1 = 0xe1,
  kApp2 = 0xe2,
  kApp14 = 0xee,
  kApp15 = 0xef,
  kComment = 0xfe,
};

[[nodiscard]] bool isJpegFrame(int marker);

[[nodiscard]] int byteAt(QByteArrayView data, qsizetype at);
[[nodiscard]] int wordAt(QByteArrayView data, qsizetype at);

struct JpegSegment {
  int marker = 0;
  QByteArrayView content;  // without the marker and the length
  qsizetype begin = 0;     // of the marker in the file
  qsizetype end = 0;
};

// The segment that begins at `at` in a file, padding before it or not; the end of the image is one without content.
// Nothing where there is anything else, or less than all of it.
[[nodiscard]] std::optional<JpegSegment> jpegSegment(QByteArrayView file, qsizetype at);

}  // namespace lumagrid
