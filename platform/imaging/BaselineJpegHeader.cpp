#include "BaselineJpegHeader.h"

#include <algorithm>

#include "JpegSegments.h"

namespace lumagrid {
namespace {

// What the markers of applications say about the colours.
struct ColorHints {
  bool isJfif = false;
  std::optional<int> adobeTransform;
};

class HeaderReader {
 public:
  explicit HeaderReader(QByteArrayView file) : m_file(file) {}

  std::optional<BaselineJpeg> read() {
    if (m_file.size() < 4 || wordAt(m_file, 0) != (0xff00 | kStartOfImage)) return std::nullopt;
    for (qsizetype at = 2;;) {
      const auto segment = jpegSegment(m_file, at);
      if (!segment) return std::nullopt;
      at = segment->end;
      if (segment->marker == kStartOfScan) {
        m_jpeg.scanStart = at;
        if (!readScan(segment->content)) return std::nullopt;
        return std::move(m_jpeg);
      }
      if (!readSegment(segment->marker, segment->content)) return std::nullopt;
    }
  }

 private:
  bool readSegment(int marker, QByteArrayView segment) {
    switch (marker) {
      case kStartOfFrameBaseline:
      case kStartOfFrameExtended:
        return readFrame(segment);
      case kDefineHuffman:
        return readCodes(segment);
      case kDefineQuantization:
        return readQuantization(segment);
      case kDefineRestart:
        if (segment.size() != 2) return false;
        m_jpeg.restartInterval = wordAt(segment, 0);
        return true;
      case kApp0:
        if (segment.size() >= 14 && segment.startsWith(QByteArrayView("JFIF\0", 5))) m_hints.isJfif = true;
        return true;
      case kApp14:
        if (segment.size() >= 12 && segment.startsWith("Adobe")) m_hints.adobeTransform = byteAt(segment, 11);
        return true;
      default:
        return (marker >= kApp0 && marker <= kApp15) || marker == kComment;
    }
  }

  bool readFrame(QByteArrayView segment) {
    if (m_jpeg.size.isValid() || segment.size() < 6 || byteAt(segment, 0) != 8) return false;
    m_jpeg.size = QSize(wordAt(segment, 3), wordAt(segment, 1));
    const int count = byteAt(segment, 5);
    if (m_jpeg.size.isEmpty() || (count != 1 && count != 3 && count != 4) || segment.size() != 6 + 3 * count) {
      return false;
    }
    for (int index = 0; index < count; ++index) {
      const qsizetype at = 6 + 3 * index;
      BaselineJpegComponent component;
      component.id = byteAt(segment, at);
      component.horizontal = byteAt(segment, at + 1) >> 4;
      component.vertical = byteAt(segment, at + 1) & 15;
      const int table = byteAt(segment, at + 2);
      const auto isFactor = [](int factor) { return factor >= 1 && factor <= 4; };
      if (!isFactor(component.horizontal) || !isFactor(component.vertical) || table > 3) return false;
      for (const auto& other : m_jpeg.components) {
        if (other.id == component.id) return false;
      }
      m_jpeg.horizontal = std::max(m_jpeg.horizontal, component.horizontal);
      m_jpeg.vertical = std::max(m_jpeg.vertical, component.vertical);
      m_jpeg.components.push_back(component);
      m_quantizationOf.push_back(static_cast<size_t>(table));
    }
    return true;
  }

  bool readCodes(QByteArrayView segment) {
    while (!segment.isEmpty()) {
      if (segment.size() < 17) return false;
      const int place = byteAt(segment, 0);
      if ((place & ~0x13) != 0) return false;
      JpegCodeList& list = (place >> 4 == 0 ? m_jpeg.dcCodes : m_jpeg.acCodes)[static_cast<size_t>(place & 3)];
      list = {};
      qsizetype count = 0;
      int code = 0;
      for (int length = 1; length <= 16; ++length) {
        const int ofLength = byteAt(segment, length);
        list.countOfLength[static_cast<size_t>(length)] = static_cast<std::uint8_t>(ofLength);
        count += ofLength;
        code = code * 2 + ofLength;
        if (code > 1 << length) return false;  // more codes than there can be
      }
      if (count > 256 || segment.size() < 17 + count) return false;
      std::copy_n(reinterpret_cast<const std::uint8_t*>(segment.data()) + 17, count, list.symbols.begin());
      const bool isDc = place >> 4 == 0;
      if (isDc && std::any_of(list.symbols.begin(), list.symbols.end(), [](int symbol) { return symbol > 15; })) {
        return false;
      }
      list.isDefined = true;
      segment = segment.sliced(17 + count);
    }
    return true;
  }

  bool readQuantization(QByteArrayView segment) {
    while (!segment.isEmpty()) {
      const int place = byteAt(segment, 0);
      const bool isWide = place >> 4 == 1;
      const qsizetype bytes = isWide ? 128 : 64;
      if (place >> 4 > 1 || (place & 15) > 3 || segment.size() < 1 + bytes) return false;
      auto& table = m_quantization[static_cast<size_t>(place & 15)];
      for (qsizetype index = 0; index < 64; ++index) {
        const int step = isWide ? wordAt(segment, 1 + 2 * index) : byteAt(segment, 1 + index);
        if (step == 0) return false;
        table[static_cast<size_t>(index)] = static_cast<std::uint16_t>(step);
      }
      segment = segment.sliced(1 + bytes);
    }
    return true;
  }

  bool readScan(QByteArrayView segment) {
    const auto count = static_cast<qsizetype>(m_jpeg.components.size());
    if (count == 0 || segment.size() != 4 + 2 * count || byteAt(segment, 0) != count) return false;
    // All coefficients at once, and with all of their bits.
    if (byteAt(segment, 1 + 2 * count) != 0 || byteAt(segment, 2 + 2 * count) != 63 ||
        byteAt(segment, 3 + 2 * count) != 0) {
      return false;
    }
    int blocks = 0;
    for (qsizetype index = 0; index < count; ++index) {
      BaselineJpegComponent& component = m_jpeg.components[static_cast<size_t>(index)];
      const int tables = byteAt(segment, 2 + 2 * index);
      component.dcTable = tables >> 4;
      component.acTable = tables & 15;
      if (byteAt(segment, 1 + 2 * index) != component.id || component.dcTable > 3 || component.acTable > 3) {
        return false;
      }
      component.quantization = m_quantization[m_quantizationOf[static_cast<size_t>(index)]];
      if (component.quantization[0] == 0 || !m_jpeg.dcCodes[static_cast<size_t>(component.dcTable)].isDefined ||
          !m_jpeg.acCodes[static_cast<size_t>(component.acTable)].isDefined) {
        return false;
      }
      blocks += component.horizontal * component.vertical;
    }
    constexpr int kMostBlocks = 10;  // in an MCU, says the standard
    if (count > 1 && blocks > kMostBlocks) return false;
    if (count == 1) {
      // The factors of a lone component mean nothing: its MCU is one block.
      BaselineJpegComponent& component = m_jpeg.components.front();
      component.horizontal = component.vertical = m_jpeg.horizontal = m_jpeg.vertical = 1;
    }
    m_jpeg.colors = colors();
    return true;
  }

  // The rules of old habit: the word of JFIF, of Adobe's marker, then the names of the components.
  [[nodiscard]] JpegColors colors() const {
    const auto& components = m_jpeg.components;
    if (components.size() == 1) return JpegColors::gray;
    if (components.size() == 4) {
      return m_hints.adobeTransform.value_or(0) == 0 ? JpegColors::cmyk : JpegColors::ycck;
    }
    if (m_hints.isJfif) return JpegColors::yCbCr;
    if (m_hints.adobeTransform) return *m_hints.adobeTransform == 0 ? JpegColors::rgb : JpegColors::yCbCr;
    const bool isNamedRgb = components[0].id == 'R' && components[1].id == 'G' && components[2].id == 'B';
    return isNamedRgb ? JpegColors::rgb : JpegColors::yCbCr;
  }

  QByteArrayView m_file;
  BaselineJpeg m_jpeg;
  ColorHints m_hints;
  std::vector<size_t> m_quantizationOf;  // the table of each component
  std::array<std::array<std::uint16_t, 64>, 4> m_quantization{};
};

}  // namespace

std::optional<BaselineJpeg> baselineJpegHeader(QByteArrayView file) {
  return HeaderReader(file).read();
}

}  // namespace lumagrid
