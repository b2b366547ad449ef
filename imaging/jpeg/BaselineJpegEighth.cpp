#include "BaselineJpegEighth.h"

#include <algorithm>
#include <array>
#include <cstdlib>
#include <memory>
#include <vector>

#include "BaselineJpegBits.h"
#include "BaselineJpegHuffman.h"
#include "BaselineJpegPixels.h"
#include "PixelBuffer.h"

namespace lumagrid {
namespace {

// The library computes with 16 bits where the processor has vector instructions and with 32 elsewhere: larger
// coefficients could overflow in one and not in the other, and its pixels, which ours have to equal, would differ. What
// encoders write stays below 1200.
constexpr int kLargestCoefficient = 2047;

// The place of each coefficient of a file (zigzag order) in the 8 rows of 8, which is also the order of the library's
// quantization tables.
constexpr std::array<std::uint8_t, 64> kNaturalOrder = {0,  1,  8,  16, 9,  2,  3,  10, 17, 24, 32, 25, 18, 11, 4,  5,
                                                        12, 19, 26, 33, 40, 48, 41, 34, 27, 20, 13, 6,  7,  14, 21, 28,
                                                        35, 42, 49, 56, 57, 50, 43, 36, 29, 22, 15, 23, 30, 37, 44, 51,
                                                        58, 59, 52, 45, 38, 31, 39, 46, 53, 60, 61, 54, 47, 55, 62, 63};

std::uint8_t sampleOf(int centered) {
  return static_cast<std::uint8_t>(std::clamp(centered + 128, 0, 255));
}

// The inverse cosine transform of a block of 8 × 8 coefficients into 2 × 2 samples, each the mean of a quarter of the
// block: first down the columns, then along the rows. Over half a column, coefficient 0 (`even`) has one value, those
// of the odd frequencies (`odd`) have a mean of one sign in the upper half and of the other in the lower, and those of
// the frequencies 2, 4 and 6 have the mean 0. So the two samples are even + odd and even - odd. Integers and roundings
// are those of libjpeg's jpeg_idct_2x2.
class QuarterTransform {
 public:
  void start(int dc) {
    m_columns = {};
    m_columns[0].even = dc * kEvenWeight;
  }

  void add(size_t place, int coefficient) {
    Column& column = m_columns[place & 7];
    const size_t row = place >> 3;
    if (row == 0) {
      column.even = coefficient * kEvenWeight;
    } else {
      column.odd += coefficient * kOddWeights[row];
    }
  }

  // False where a sample is so far out of range that it depends on the processor.
  bool store(std::uint8_t* upper, std::uint8_t* lower) const { return storeRow(1, upper) && storeRow(-1, lower); }

 private:
  // What each frequency adds up to over half a column, 4 for coefficient 0; with 13 fraction bits.
  static constexpr int kEvenWeight = 1 << 15;
  static constexpr std::array<int, 8> kOddWeights = {0, 29692, 0, -10426, 0, 6967, 0, -5906};

  bool storeRow(int sign, std::uint8_t* to) const {
    constexpr int kColumnShift = 13;
    constexpr int kRowShift = 20;
    const auto ofColumn = [&](size_t index) {
      const Column& column = m_columns[index];
      return (column.even + sign * column.odd + (1 << (kColumnShift - 1))) >> kColumnShift;
    };
    const std::int64_t even = std::int64_t{ofColumn(0)} * kEvenWeight;
    std::int64_t odd = 0;
    for (const size_t column : {1, 3, 5, 7}) odd += std::int64_t{ofColumn(column)} * kOddWeights[column];
    constexpr std::int64_t kHalf = std::int64_t{1} << (kRowShift - 1);
    const std::int64_t left = (even + odd + kHalf) >> kRowShift;
    const std::int64_t right = (even - odd + kHalf) >> kRowShift;
    to[0] = sampleOf(static_cast<int>(left));
    to[1] = sampleOf(static_cast<int>(right));
    const auto isSafe = [](std::int64_t sample) { return sample >= -512 && sample < 512; };
    return isSafe(left) && isSafe(right);
  }

  struct Column {
    int even = 0;
    int odd = 0;
  };
  std::array<Column, 8> m_columns;
};

// How the blocks of one component are decoded, and where their samples go.
struct EighthComponent {
  int blocksAcross = 1;  // in an MCU
  int blocksDown = 1;
  int blockSide = 1;  // samples of a block each way, 1 or 2
  const UINT16* quantization = nullptr;
  const JpegCoefficientTable* dcTable = nullptr;
  const JpegAcSkipper* acSkipper = nullptr;       // for one sample per block
  const JpegCoefficientTable* acTable = nullptr;  // for 2 × 2
  int lastDc = 0;
  JpegSampleRows* rows = nullptr;
};

class EighthDecoder {
 public:
  explicit EighthDecoder(const JpegReader& reader) : m_header(reader.header()), m_bits(reader.sequentialData()) {}

  QImage decode() {
    if (!prepare()) return {};
    const QSize size(static_cast<int>(m_header.output_width), static_cast<int>(m_header.output_height));
    QImage pixels = unsetPixels(size, QImage::Format_RGBX8888);
    if (pixels.isNull()) return {};
    const int rows = (size.height() + m_mcuHeight - 1) / m_mcuHeight;
    const auto restartInterval = static_cast<int>(m_header.restart_interval);
    int untilRestart = restartInterval;
    for (int row = 0; row < rows; ++row) {
      for (int column = 0; column < m_columns; ++column) {
        if (restartInterval > 0 && untilRestart-- == 0) {
          if (!restart()) return {};
          untilRestart = restartInterval - 1;
        }
        if (!m_bits.prepare()) return {};
        JpegBitCursor bits = m_bits.cursor();
        for (EighthComponent& component : m_components) {
          if (!readMcu(bits, component, column)) return {};
        }
        m_bits.setCursor(bits);
      }
      const int first = row * m_mcuHeight;
      const int count = std::min(m_mcuHeight, size.height() - first);
      for (int line = 0; line < count; ++line) {
        writeJpegRow(m_header.jpeg_color_space, m_rows, line, pixels.scanLine(first + line), size.width());
      }
    }
    if (!m_bits.endInterval(JPEG_EOI)) return {};
    return pixels;
  }

 private:
  // False for what only the library can decode.
  bool prepare() {
    const int count = m_header.num_components;
    if (count != 1 && count != 3 && count != 4) return false;
    // The sampling factors of a lone component mean nothing: its MCU is one block.
    const bool isAlone = count == 1;
    const int mcuWidth = isAlone ? 1 : m_header.max_h_samp_factor;
    m_mcuHeight = isAlone ? 1 : m_header.max_v_samp_factor;
    m_columns = (static_cast<int>(m_header.output_width) + mcuWidth - 1) / mcuWidth;
    m_rows.resize(static_cast<size_t>(count));
    int blocks = 0;
    for (int index = 0; index < count; ++index) {
      const jpeg_component_info& info = m_header.comp_info[index];
      EighthComponent component;
      if (!isAlone) component = {.blocksAcross = info.h_samp_factor, .blocksDown = info.v_samp_factor};
      component.blockSide = jpegBlockSide(info);
      const int across = component.blocksAcross * component.blockSide;
      const int down = component.blocksDown * component.blockSide;
      if (m_header.cur_comp_info[index] != &info || component.blockSide > 2) return false;
      if (mcuWidth % across != 0 || m_mcuHeight % down != 0 || !findTables(info, component)) return false;
      blocks += component.blocksAcross * component.blocksDown;
      component.rows = &m_rows[static_cast<size_t>(index)];
      component.rows->stride = static_cast<size_t>(m_columns) * static_cast<size_t>(across);
      component.rows->samples.resize(component.rows->stride * static_cast<size_t>(down));
      component.rows->horizontalRepeat = mcuWidth / across;
      component.rows->verticalRepeat = m_mcuHeight / down;
      m_components.push_back(component);
    }
    return blocks <= D_MAX_BLOCKS_IN_MCU;
  }

  bool findTables(const jpeg_component_info& info, EighthComponent& component) {
    using Kind = JpegHuffmanTable::Kind;
    const auto isThere = [](int number) { return number >= 0 && number < NUM_HUFF_TBLS; };
    if (!isThere(info.dc_tbl_no) || !isThere(info.ac_tbl_no) || !isThere(info.quant_tbl_no)) return false;
    const JQUANT_TBL* const quantization = m_header.quant_tbl_ptrs[info.quant_tbl_no];
    const JHUFF_TBL* const dc = m_header.dc_huff_tbl_ptrs[info.dc_tbl_no];
    const JHUFF_TBL* const ac = m_header.ac_huff_tbl_ptrs[info.ac_tbl_no];
    if (!quantization || !dc || !ac) return false;
    if (!JpegHuffmanTable::isValid(*dc, Kind::dc) || !JpegHuffmanTable::isValid(*ac, Kind::ac)) return false;
    component.quantization = quantization->quantval;
    auto& dcTable = m_dcTables[static_cast<size_t>(info.dc_tbl_no)];
    if (!dcTable) dcTable = std::make_unique<JpegCoefficientTable>(*dc, Kind::dc);
    component.dcTable = dcTable.get();
    if (component.blockSide == 1) {
      auto& skipper = m_acSkippers[static_cast<size_t>(info.ac_tbl_no)];
      if (!skipper) skipper = std::make_unique<JpegAcSkipper>(*ac);
      component.acSkipper = skipper.get();
    } else {
      auto& acTable = m_acTables[static_cast<size_t>(info.ac_tbl_no)];
      if (!acTable) acTable = std::make_unique<JpegCoefficientTable>(*ac, Kind::ac);
      component.acTable = acTable.get();
    }
    return true;
  }

  bool restart() {
    for (EighthComponent& component : m_components) component.lastDc = 0;
    const int marker = JPEG_RST0 + m_restarts;
    m_restarts = (m_restarts + 1) & 7;
    return m_bits.endInterval(marker);
  }

  // The component's part of the MCU in `column`.
  static bool readMcu(JpegBitCursor& bits, EighthComponent& component, int column) {
    const auto side = static_cast<size_t>(component.blockSide);
    const size_t left = static_cast<size_t>(column * component.blocksAcross) * side;
    for (int y = 0; y < component.blocksDown; ++y) {
      std::uint8_t* to = component.rows->samples.data() + static_cast<size_t>(y) * side * component.rows->stride + left;
      for (int x = 0; x < component.blocksAcross; ++x, to += side) {
        const bool isRead =
            component.acSkipper != nullptr ? readMean(bits, component, to) : readQuarter(bits, component, to);
        if (!isRead) return false;
      }
    }
    return true;
  }

  // The first coefficient of the next block, dequantized.
  static bool readDc(JpegBitCursor& bits, EighthComponent& component, int& dc) {
    bits.refill();
    JpegCoefficient difference;
    if (!component.dcTable->take(bits, difference)) return false;
    component.lastDc += difference.value;
    dc = component.lastDc * component.quantization[0];
    // The first test keeps the product from overflowing in the next block.
    return std::abs(component.lastDc) <= kLargestCoefficient && std::abs(dc) <= kLargestCoefficient;
  }

  static bool readMean(JpegBitCursor& bits, EighthComponent& component, std::uint8_t* to) {
    int dc = 0;
    if (!readDc(bits, component, dc)) return false;
    *to = sampleOf((dc + 4) >> 3);
    return component.acSkipper->skipBlock(bits);
  }

  static bool readQuarter(JpegBitCursor& bits, EighthComponent& component, std::uint8_t* to) {
    int dc = 0;
    if (!readDc(bits, component, dc)) return false;
    QuarterTransform transform;
    transform.start(dc);
    JpegCoefficient coefficient;
    for (size_t position = 1; position < 64; ++position) {
      bits.refill();
      if (!component.acTable->take(bits, coefficient)) return false;
      if (coefficient.isEndOfBlock) break;
      position += coefficient.run;
      if (position > 63) return false;
      const size_t place = kNaturalOrder[position];
      const int dequantized = coefficient.value * component.quantization[place];
      if (std::abs(dequantized) > kLargestCoefficient) return false;
      transform.add(place, dequantized);
    }
    return transform.store(to, to + component.rows->stride);
  }

  const jpeg_decompress_struct& m_header;
  BaselineJpegBits m_bits;
  int m_mcuHeight = 1;  // in pixels of an eighth
  int m_columns = 0;    // of MCUs
  std::vector<EighthComponent> m_components;
  std::vector<JpegSampleRows> m_rows;  // of the same components
  std::array<std::unique_ptr<JpegCoefficientTable>, NUM_HUFF_TBLS> m_dcTables;
  std::array<std::unique_ptr<JpegCoefficientTable>, NUM_HUFF_TBLS> m_acTables;
  std::array<std::unique_ptr<JpegAcSkipper>, NUM_HUFF_TBLS> m_acSkippers;
  int m_restarts = 0;
};

}  // namespace

QImage baselineJpegAtEighth(const JpegReader& reader) {
  return reader.sequentialData().isEmpty() ? QImage() : EighthDecoder(reader).decode();
}

}  // namespace lumagrid
