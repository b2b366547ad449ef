#include "BaselineJpegEighth.h"

#include <algorithm>
#include <array>
#include <cstdlib>
#include <memory>
#include <vector>

#include "BaselineJpegBits.h"
#include "BaselineJpegCodes.h"
#include "BaselineJpegHeader.h"
#include "BaselineJpegPixels.h"
#include "PixelBuffer.h"

namespace lumagrid {
namespace {

// Above it, decoders differ in how sums overflow. Coefficients of pictures stay below 1200.
constexpr int kLargestCoefficient = 2047;

constexpr std::array<std::uint8_t, 64> kPlaceOfZigzag = {
    0,  1,  8,  16, 9,  2,  3,  10, 17, 24, 32, 25, 18, 11, 4,  5,  12, 19, 26, 33, 40, 48,
    41, 34, 27, 20, 13, 6,  7,  14, 21, 28, 35, 42, 49, 56, 57, 50, 43, 36, 29, 22, 15, 23,
    30, 37, 44, 51, 58, 59, 52, 45, 38, 31, 39, 46, 53, 60, 61, 54, 47, 55, 62, 63};

std::uint8_t sampleOf(int centered) {
  return static_cast<std::uint8_t>(std::clamp(centered + 128, 0, 255));
}

// The inverse transform of 8 × 8 coefficients to 2 × 2 samples, in the arithmetic of the Independent JPEG Group's
// "jidctred": integers with 13 fraction bits, rounded after the columns and after the rows. The even columns and rows
// but the first have no part in it.
class ReducedTransform {
 public:
  void start(int dc) {
    m_columns = {};
    m_columns[0].even = dc * kOne;
  }

  void add(size_t zigzag, int coefficient) {
    const size_t place = kPlaceOfZigzag[zigzag];
    Column& column = m_columns[place & 7];
    const size_t row = place >> 3;
    if (row == 0) {
      column.even = coefficient * kOne;
    } else {
      column.odd += coefficient * kWeights[row];
    }
  }

  // False when decoders may differ in the result.
  bool store(std::uint8_t* upper, std::uint8_t* lower) const { return storeRow(1, upper) && storeRow(-1, lower); }

 private:
  static constexpr int kOne = 1 << 15;  // 4 fraction-free bits beyond those 13 are dropped with them
  static constexpr std::array<int, 8> kWeights = {0, 29692, 0, -10426, 0, 6967, 0, -5906};

  bool storeRow(int sign, std::uint8_t* to) const {
    constexpr int kColumnShift = 13;
    constexpr int kRowShift = 20;
    const auto ofColumn = [&](size_t index) {
      const Column& column = m_columns[index];
      return (column.even + sign * column.odd + (1 << (kColumnShift - 1))) >> kColumnShift;
    };
    const std::int64_t even = std::int64_t{ofColumn(0)} * kOne;
    std::int64_t odd = 0;
    for (const size_t column : {1, 3, 5, 7}) odd += std::int64_t{ofColumn(column)} * kWeights[column];
    constexpr std::int64_t kHalf = std::int64_t{1} << (kRowShift - 1);
    const std::int64_t first = (even + odd + kHalf) >> kRowShift;
    const std::int64_t second = (even - odd + kHalf) >> kRowShift;
    to[0] = sampleOf(static_cast<int>(first));
    to[1] = sampleOf(static_cast<int>(second));
    const auto isSafe = [](std::int64_t sample) { return sample >= -512 && sample < 512; };
    return isSafe(first) && isSafe(second);
  }

  struct Column {
    int even = 0;
    int odd = 0;
  };
  std::array<Column, 8> m_columns;
};

// One component of the scan: how its blocks are read and where its samples go.
struct Reader {
  const BaselineJpegComponent* component = nullptr;
  const JpegCoefficientTable* dcTable = nullptr;
  const JpegAcSkipper* skipper = nullptr;         // for one sample per block
  const JpegCoefficientTable* acTable = nullptr;  // for 2 × 2
  int lastDc = 0;
  int blockSide = 1;  // samples
  JpegSampleRows* rows = nullptr;
};

// libjpeg's rule: a component grows in its transform instead of afterwards, as long as it does so both ways.
int blockSideOf(const BaselineJpegComponent& component, const BaselineJpeg& jpeg) {
  int side = 1;
  while (side < 8 && jpeg.horizontal % (component.horizontal * side * 2) == 0 &&
         jpeg.vertical % (component.vertical * side * 2) == 0) {
    side *= 2;
  }
  return side;
}

class EighthDecoder {
 public:
  EighthDecoder(const BaselineJpeg& jpeg, QByteArrayView file) : m_jpeg(jpeg), m_bits(file.sliced(jpeg.scanStart)) {}

  QImage decode() {
    const QSize size((m_jpeg.size.width() + 7) / 8, (m_jpeg.size.height() + 7) / 8);
    const int columns = (size.width() + m_jpeg.horizontal - 1) / m_jpeg.horizontal;
    const int rows = (size.height() + m_jpeg.vertical - 1) / m_jpeg.vertical;
    if (!prepareReaders(columns)) return {};
    QImage pixels = unsetPixels(size, QImage::Format_RGBX8888);
    if (pixels.isNull()) return {};
    int untilRestart = m_jpeg.restartInterval;
    for (int row = 0; row < rows; ++row) {
      for (int column = 0; column < columns; ++column) {
        if (m_jpeg.restartInterval > 0 && untilRestart-- == 0) {
          if (!restart()) return {};
          untilRestart = m_jpeg.restartInterval - 1;
        }
        if (!m_bits.prepare()) return {};
        JpegBitCursor bits = m_bits.cursor();
        for (Reader& reader : m_readers) {
          if (!readMcu(bits, reader, column)) return {};
        }
        m_bits.setCursor(bits);
      }
      const int first = row * m_jpeg.vertical;
      const int count = std::min(m_jpeg.vertical, size.height() - first);
      for (int line = 0; line < count; ++line) {
        writeJpegRow(m_jpeg.colors, m_rows, line, pixels.scanLine(first + line), size.width());
      }
    }
    constexpr int kEndOfImage = 0xd9;
    if (!m_bits.endInterval(kEndOfImage)) return {};
    return pixels;
  }

 private:
  bool prepareReaders(int columns) {
    using Kind = JpegCoefficientTable::Kind;
    m_rows.resize(m_jpeg.components.size());
    for (const BaselineJpegComponent& component : m_jpeg.components) {
      Reader reader;
      reader.rows = &m_rows[m_readers.size()];
      reader.component = &component;
      reader.blockSide = blockSideOf(component, m_jpeg);
      const int across = component.horizontal * reader.blockSide;
      const int down = component.vertical * reader.blockSide;
      if (reader.blockSide > 2 || m_jpeg.horizontal % across != 0 || m_jpeg.vertical % down != 0) return false;
      const auto dc = static_cast<size_t>(component.dcTable);
      const auto ac = static_cast<size_t>(component.acTable);
      if (!m_dcTables[dc]) m_dcTables[dc] = std::make_unique<JpegCoefficientTable>(m_jpeg.dcCodes[dc], Kind::dc);
      reader.dcTable = m_dcTables[dc].get();
      if (reader.blockSide == 1) {
        if (!m_skippers[ac]) m_skippers[ac] = std::make_unique<JpegAcSkipper>(m_jpeg.acCodes[ac]);
        reader.skipper = m_skippers[ac].get();
      } else {
        if (!m_acTables[ac]) m_acTables[ac] = std::make_unique<JpegCoefficientTable>(m_jpeg.acCodes[ac], Kind::ac);
        reader.acTable = m_acTables[ac].get();
      }
      reader.rows->stride = static_cast<size_t>(columns) * static_cast<size_t>(across);
      reader.rows->samples.resize(reader.rows->stride * static_cast<size_t>(down));
      reader.rows->horizontalRepeat = m_jpeg.horizontal / across;
      reader.rows->verticalRepeat = m_jpeg.vertical / down;
      m_readers.push_back(reader);
    }
    return true;
  }

  bool restart() {
    constexpr int kRestart0 = 0xd0;
    for (Reader& reader : m_readers) reader.lastDc = 0;
    const int marker = kRestart0 + m_restarts;
    m_restarts = (m_restarts + 1) & 7;
    return m_bits.endInterval(marker);
  }

  static bool readMcu(JpegBitCursor& bits, Reader& reader, int column) {
    const BaselineJpegComponent& component = *reader.component;
    const auto side = static_cast<size_t>(reader.blockSide);
    const size_t left = static_cast<size_t>(column * component.horizontal) * side;
    for (int y = 0; y < component.vertical; ++y) {
      std::uint8_t* to = reader.rows->samples.data() + static_cast<size_t>(y) * side * reader.rows->stride + left;
      for (int x = 0; x < component.horizontal; ++x, to += side) {
        const bool isRead = reader.skipper != nullptr ? readMean(bits, reader, to) : readReduced(bits, reader, to);
        if (!isRead) return false;
      }
    }
    return true;
  }

  // The first coefficient of the next block, dequantised.
  static bool readDc(JpegBitCursor& bits, Reader& reader, int& dc) {
    bits.refill();
    JpegCoefficient difference;
    if (!reader.dcTable->take(bits, difference)) return false;
    reader.lastDc += difference.value;
    dc = reader.lastDc * reader.component->quantization[0];
    // The first test keeps the product from overflowing in the next block.
    return std::abs(reader.lastDc) <= kLargestCoefficient && std::abs(dc) <= kLargestCoefficient;
  }

  static bool readMean(JpegBitCursor& bits, Reader& reader, std::uint8_t* to) {
    int dc = 0;
    if (!readDc(bits, reader, dc)) return false;
    *to = sampleOf((dc + 4) >> 3);
    return reader.skipper->skipBlock(bits);
  }

  static bool readReduced(JpegBitCursor& bits, Reader& reader, std::uint8_t* to) {
    int dc = 0;
    if (!readDc(bits, reader, dc)) return false;
    ReducedTransform transform;
    transform.start(dc);
    JpegCoefficient coefficient;
    for (size_t position = 1; position < 64; ++position) {
      bits.refill();
      if (!reader.acTable->take(bits, coefficient)) return false;
      if (coefficient.isEndOfBlock) break;
      position += coefficient.run;
      if (position > 63) return false;
      const int dequantized = coefficient.value * reader.component->quantization[position];
      if (std::abs(dequantized) > kLargestCoefficient) return false;
      transform.add(position, dequantized);
    }
    return transform.store(to, to + reader.rows->stride);
  }

  const BaselineJpeg& m_jpeg;
  BaselineJpegBits m_bits;
  std::vector<Reader> m_readers;
  std::vector<JpegSampleRows> m_rows;  // of the same components
  std::array<std::unique_ptr<JpegCoefficientTable>, 4> m_dcTables;
  std::array<std::unique_ptr<JpegCoefficientTable>, 4> m_acTables;
  std::array<std::unique_ptr<JpegAcSkipper>, 4> m_skippers;
  int m_restarts = 0;
};

}  // namespace

QImage baselineJpegAtEighth(QByteArrayView file) {
  const auto jpeg = baselineJpegHeader(file);
  // At such sizes, several scales give the same size, and libjpeg-turbo takes the largest of them.
  constexpr int kSmallestSide = 5;
  if (!jpeg || std::max(jpeg->size.width(), jpeg->size.height()) < kSmallestSide) return {};
  return EighthDecoder(*jpeg, file).decode();
}

}  // namespace lumagrid
