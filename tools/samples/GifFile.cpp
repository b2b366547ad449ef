#include <cstdint>
#include <unordered_map>

#include "PictureFiles.h"

namespace lumagrid::samples {

namespace {

constexpr int kClearCode = 256;
constexpr int kEndCode = 257;
constexpr int kFirstWidth = 9;    // bits of a code right after a clear code
constexpr int kLastCode = 4095;   // codes have 12 bits at most
constexpr int kBlockBytes = 255;  // the most that one data block holds

void appendNumber(QByteArray& file, int value) {
  file.append(static_cast<char>(value & 255));
  file.append(static_cast<char>(value >> 8 & 255));
}

// Lempel-Ziv-Welch as GIF has it: codes of growing width, lowest bit first.
class CodeWriter {
 public:
  void write(int code) {
    m_bits |= static_cast<std::uint32_t>(code) << m_count;
    m_count += m_width;
    while (m_count >= 8) {
      takeByte();
    }
  }
  void setWidth(int width) { m_width = width; }
  [[nodiscard]] int width() const { return m_width; }
  [[nodiscard]] QByteArray finished() {
    while (m_count > 0) {
      takeByte();
    }
    return m_bytes;
  }

 private:
  void takeByte() {
    m_bytes.append(static_cast<char>(m_bits & 255U));
    m_bits >>= 8U;
    m_count -= 8;
  }
  QByteArray m_bytes;
  std::uint32_t m_bits = 0;
  int m_count = 0;
  int m_width = kFirstWidth;
};

QByteArray compressed(const QImage& indexed) {
  CodeWriter writer;
  std::unordered_map<int, int> codes;  // prefix code × 256 + next colour → code
  int nextCode = kEndCode + 1;
  int prefix = -1;
  writer.write(kClearCode);
  for (int y = 0; y < indexed.height(); ++y) {
    const uchar* line = indexed.constScanLine(y);
    for (int x = 0; x < indexed.width(); ++x) {
      const int colour = line[x];
      if (prefix < 0) {
        prefix = colour;
        continue;
      }
      const int string = prefix * 256 + colour;
      if (const auto known = codes.find(string); known != codes.end()) {
        prefix = known->second;
        continue;
      }
      writer.write(prefix);
      prefix = colour;
      if (nextCode > kLastCode) {
        writer.write(kClearCode);
        writer.setWidth(kFirstWidth);
        codes.clear();
        nextCode = kEndCode + 1;
        continue;
      }
      codes.emplace(string, nextCode);
      if (nextCode == 1 << writer.width()) {
        writer.setWidth(writer.width() + 1);
      }
      ++nextCode;
    }
  }
  writer.write(prefix);
  writer.write(kEndCode);
  return writer.finished();
}

void appendFrame(QByteArray& file, const QImage& frame, int hundredths) {
  const QImage indexed = frame.convertToFormat(QImage::Format_RGB32).convertToFormat(QImage::Format_Indexed8);
  file.append(QByteArray::fromHex("21F90400"));  // graphic control: nothing transparent, nothing to dispose of
  appendNumber(file, hundredths);
  file.append(QByteArray::fromHex("00002C00000000"));
  appendNumber(file, indexed.width());
  appendNumber(file, indexed.height());
  file.append(static_cast<char>(0x87));  // a table of 256 colours of this frame's own
  QList<QRgb> table = indexed.colorTable();
  table.resize(256);
  for (const QRgb colour : std::as_const(table)) {
    file.append(static_cast<char>(qRed(colour)));
    file.append(static_cast<char>(qGreen(colour)));
    file.append(static_cast<char>(qBlue(colour)));
  }
  file.append(static_cast<char>(8));  // bits of a colour index
  const QByteArray data = compressed(indexed);
  for (qsizetype start = 0; start < data.size(); start += kBlockBytes) {
    const QByteArray block = data.mid(start, kBlockBytes);
    file.append(static_cast<char>(block.size()));
    file.append(block);
  }
  file.append('\0');
}

}  // namespace

QByteArray gifFile(const QList<QImage>& frames) {
  QByteArray file("GIF89a");
  appendNumber(file, frames.first().width());
  appendNumber(file, frames.first().height());
  file.append(QByteArray::fromHex("700000"));
  if (frames.size() > 1) {
    file.append(QByteArray::fromHex("21FF0B4E45545343415045322E300301000000"));  // repeat for ever
  }
  for (const QImage& frame : frames) {
    appendFrame(file, frame, 12);
  }
  file.append(';');
  return file;
}

}  // namespace lumagrid::samples
