#include "PictureFiles.h"

namespace lumagrid::samples {

namespace {

void appendNumber(QByteArray& file, int value) {
  file.append(static_cast<char>(value & 255)).append(static_cast<char>(value >> 8 & 255));
}

// Color indices as codes of nine bits, lowest bit first, with a clear code (256) before codes would have to grow: four
// times as long as compressed, and as valid. The last is the end code (257).
QByteArray codes(const QImage& indexed) {
  constexpr int kCodesUntilClear = 254;
  QByteArray bytes;
  quint32 bits = 0;
  int bitCount = 0;
  const auto write = [&](quint32 code) {
    bits |= code << bitCount;
    for (bitCount += 9; bitCount >= 8; bitCount -= 8, bits >>= 8) bytes.append(static_cast<char>(bits & 255));
  };
  int written = 0;
  for (int y = 0; y < indexed.height(); ++y) {
    for (int x = 0; x < indexed.width(); ++x) {
      if (written++ % kCodesUntilClear == 0) write(256);
      write(indexed.constScanLine(y)[x]);
    }
  }
  write(257);
  return bytes.append(static_cast<char>(bits));
}

void appendFrame(QByteArray& file, const QImage& frame) {
  constexpr int kHundredths = 50;   // of a second, for each frame
  constexpr int kBlockBytes = 255;  // the most that one data block holds
  const QImage indexed = frame.convertToFormat(QImage::Format_Indexed8);
  file.append(QByteArray::fromHex("21F90400"));  // graphic control: nothing transparent, nothing to dispose of
  appendNumber(file, kHundredths);
  file.append(QByteArray::fromHex("00002C00000000"));
  appendNumber(file, indexed.width());
  appendNumber(file, indexed.height());
  file.append(static_cast<char>(0x87));  // a table of 256 colors of this frame's own
  QList<QRgb> table = indexed.colorTable();
  table.resize(256);
  for (const QRgb color : std::as_const(table)) {
    for (const int channel : {qRed(color), qGreen(color), qBlue(color)}) file.append(static_cast<char>(channel));
  }
  file.append(static_cast<char>(8));  // bits of a color index
  const QByteArray data = codes(indexed);
  for (qsizetype start = 0; start < data.size(); start += kBlockBytes) {
    const QByteArray block = data.mid(start, kBlockBytes);
    file.append(static_cast<char>(block.size())).append(block);
  }
  file.append('\0');
}

}  // namespace

QByteArray gifFile(const QList<QImage>& frames) {
  QByteArray file("GIF89a");
  appendNumber(file, frames.first().width());
  appendNumber(file, frames.first().height());
  file.append(QByteArray::fromHex("700000"));
  for (const QImage& frame : frames) appendFrame(file, frame);
  return file.append(';');
}

}  // namespace lumagrid::samples
