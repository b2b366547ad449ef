#pragma once

#include <QByteArrayView>
#include <QSize>
#include <array>
#include <cstdint>
#include <optional>
#include <vector>

namespace lumagrid {

// The codes of one Huffman table, as a JPEG file lists them: how many there are of each length in bits (1 to 16), and
// their symbols in the order of the codes.
struct JpegCodeList {
  std::array<std::uint8_t, 17> countOfLength{};
  std::array<std::uint8_t, 256> symbols{};
  bool isDefined = false;
};

enum class JpegColors : unsigned char { gray, rgb, yCbCr, cmyk, ycck };

struct BaselineJpegComponent {
  int id = 0;
  int horizontal = 1;  // sampling factors, 1 to 4
  int vertical = 1;
  int dcTable = 0;  // 0 to 3
  int acTable = 0;
  std::array<std::uint16_t, 64> quantization{};  // in zigzag order, none 0
};

// What stands before the entropy-coded data of a sequential JPEG file of 8 bits per sample (ITU-T T.81, B.2) whose
// components share one scan: all that its decoding needs.
struct BaselineJpeg {
  QSize size;
  JpegColors colors = JpegColors::gray;
  std::vector<BaselineJpegComponent> components;  // 1, 3 or 4, in the order of the scan
  int horizontal = 1;                             // the largest of the sampling factors
  int vertical = 1;
  int restartInterval = 0;  // in MCUs; 0: none
  std::array<JpegCodeList, 4> dcCodes;
  std::array<JpegCodeList, 4> acCodes;
  qsizetype scanStart = 0;  // of the entropy-coded data in the file
};

// Nothing for every other kind of JPEG file, and for every one in which something is missing, contradictory or
// doubtful. Reads no further than the end of the file. Any thread.
[[nodiscard]] std::optional<BaselineJpeg> baselineJpegHeader(QByteArrayView file);

}  // namespace lumagrid
