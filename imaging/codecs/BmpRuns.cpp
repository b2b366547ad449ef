#include "BmpRuns.h"

#include <algorithm>

#include "PixelBuffer.h"

namespace lumagrid {
namespace {

// Where the next pixel goes; whatever lies outside of the picture is left out.
class Pen {
 public:
  Pen(QImage& pixels, bool isTopDown) : m_pixels(pixels), m_isTopDown(isTopDown) {}

  [[nodiscard]] bool isDone() const { return m_y >= m_pixels.height(); }
  [[nodiscard]] bool hasDrawn() const { return m_hasDrawn; }
  void draw(const BmpFile::Color& color) {
    if (m_x < m_pixels.width()) {
      const int row = m_isTopDown ? m_y : m_pixels.height() - 1 - m_y;
      std::copy_n(color.data(), 4, m_pixels.scanLine(row) + qsizetype{m_x} * 4);
      m_hasDrawn = true;
      ++m_x;
    }
  }
  void move(int right, int rows) {
    m_x = std::min(m_x + right, m_pixels.width());
    m_y = std::min(m_y + rows, m_pixels.height());
  }
  void nextRow() {
    m_x = 0;
    move(0, 1);
  }

 private:
  QImage& m_pixels;
  bool m_isTopDown;
  bool m_hasDrawn = false;
  int m_x = 0;
  int m_y = 0;
};

// The colours that one run or one list of pixels names.
class RunColors {
 public:
  explicit RunColors(const BmpFile& file) : m_file(file) {}

  [[nodiscard]] qsizetype bytesOf(int count) const { return (qsizetype{count} * bits() + 7) / 8; }
  [[nodiscard]] BmpFile::Color color(QByteArrayView bytes, int index) const {
    const auto* from = reinterpret_cast<const uchar*>(bytes.data());
    if (m_file.packing == BmpPacking::runs24) return {from[index * 3 + 2], from[index * 3 + 1], from[index * 3], 255};
    if (m_file.packing == BmpPacking::runs8) return m_file.palette[from[index]];
    return m_file.palette[index % 2 == 0 ? from[index / 2] >> 4 : from[index / 2] & 15];
  }
  // Pixels of a run: two colours take turns with 4 bits.
  [[nodiscard]] int period() const { return m_file.packing == BmpPacking::runs4 ? 2 : 1; }

 private:
  [[nodiscard]] int bits() const {
    return m_file.packing == BmpPacking::runs4 ? 4 : m_file.packing == BmpPacking::runs8 ? 8 : 24;
  }

  const BmpFile& m_file;
};

}  // namespace

QImage bmpRuns(const BmpFile& file) {
  QImage pixels = unsetPixels(file.size, QImage::Format_RGBA8888);
  if (pixels.isNull()) return pixels;
  pixels.fill(Qt::transparent);
  Pen pen(pixels, file.isTopDown);
  const RunColors colors(file);
  QByteArrayView rest = file.pixels;
  const auto take = [&rest](qsizetype count) {
    const QByteArrayView taken = rest.first(std::min(count, rest.size()));
    rest = rest.sliced(taken.size());
    return taken;
  };
  enum Escape { kEndOfRow, kEndOfPicture, kMove, kShortestList };
  while (rest.size() >= 2 && !pen.isDone()) {
    const QByteArrayView code = take(2);
    const int count = static_cast<uchar>(code[0]);
    const int escape = static_cast<uchar>(code[1]);
    if (count > 0) {
      // The second byte of the code is the first of the colour.
      rest = QByteArrayView(code.data() + 1, rest.data() + rest.size());
      const QByteArrayView run = take(colors.bytesOf(1));
      if (run.size() < colors.bytesOf(1)) break;
      for (int index = 0; index < count; ++index) pen.draw(colors.color(run, index % colors.period()));
    } else if (escape >= kShortestList) {
      const qsizetype bytes = colors.bytesOf(escape);
      const QByteArrayView list = take(bytes + bytes % 2);
      if (list.size() < bytes) break;
      for (int index = 0; index < escape; ++index) pen.draw(colors.color(list, index));
    } else if (escape == kMove) {
      const QByteArrayView distance = take(2);
      if (distance.size() < 2) break;
      pen.move(static_cast<uchar>(distance[0]), static_cast<uchar>(distance[1]));
    } else if (escape == kEndOfPicture) {
      break;
    } else {
      pen.nextRow();
    }
  }
  return pen.hasDrawn() ? pixels : QImage();
}

}  // namespace lumagrid
