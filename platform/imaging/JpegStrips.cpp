#include "JpegStrips.h"

#include <QByteArray>
#include <algorithm>
#include <array>
#include <atomic>
#include <csetjmp>
#include <cstdio>  // jpeglib.h needs it first
#include <cstring>
#include <numeric>
#include <optional>
#include <vector>

#include <jpeglib.h>

#include "BaselineJpegHeader.h"
#include "JpegSegments.h"
#include "PixelBuffer.h"
#include "WorkerPool.h"

namespace lumagrid {
namespace {

constexpr int kRestartCycle = 8;  // restart markers count from 0 to 7
constexpr int kContextRows = 1;   // of MCUs

// Where the strips are cut: `rows` are rows of MCUs whose first interval follows the restart marker 7, so that the data
// from there on counts its markers like a file of its own, and `at` are the places of that data.
struct Cuts {
  std::vector<int> rows;
  std::vector<qsizetype> at;
};

struct McuGrid {
  explicit McuGrid(const BaselineJpeg& jpeg)
      : height(8 * jpeg.vertical),
        columns((jpeg.size.width() + 8 * jpeg.horizontal - 1) / (8 * jpeg.horizontal)),
        rows((jpeg.size.height() + height - 1) / height) {}
  int height;  // of an MCU, pixels
  int columns;
  int rows;
};

std::vector<int> rowsToCutAt(const McuGrid& grid, int restartInterval, int strips) {
  const int step = kRestartCycle * restartInterval / std::gcd(grid.columns, kRestartCycle * restartInterval);
  std::vector<int> rows = {0};
  for (int strip = 1; strip < strips; ++strip) {
    const int row = (grid.rows * strip / strips + step / 2) / step * step;
    // No strip without rows of its own between those that it lends.
    if (row > rows.back() + 2 * kContextRows && row + 2 * kContextRows < grid.rows) rows.push_back(row);
  }
  return rows;
}

// Nothing unless the restart markers are those that the header promises, and the image ends after them.
std::optional<Cuts> findCuts(QByteArrayView file, const BaselineJpeg& jpeg, int strips) {
  const McuGrid grid(jpeg);
  Cuts cuts{rowsToCutAt(grid, jpeg.restartInterval, strips), {jpeg.scanStart}};
  if (cuts.rows.size() < 2) return std::nullopt;
  const qsizetype intervals = (qsizetype{grid.columns} * grid.rows + jpeg.restartInterval - 1) / jpeg.restartInterval;
  qsizetype interval = 0;
  for (qsizetype at = jpeg.scanStart;; at += 2) {
    at = file.indexOf('\xff', at);
    if (at < 0 || at + 1 >= file.size()) return std::nullopt;
    const int marker = byteAt(file, at + 1);
    if (marker == 0) continue;
    ++interval;
    if (marker == kEndOfImage) break;
    if (marker != kRestart0 + (interval - 1) % kRestartCycle) return std::nullopt;
    const std::size_t next = cuts.at.size();
    if (next < cuts.rows.size() && interval * jpeg.restartInterval == qsizetype{grid.columns} * cuts.rows[next]) {
      cuts.at.push_back(at + 2);
    }
  }
  if (interval != intervals) return std::nullopt;
  return cuts;
}

// What stands before the entropy-coded data, for a picture of another height.
QByteArray headerForHeight(QByteArrayView header, int height) {
  QByteArray changed = header.toByteArray();
  for (qsizetype at = 2;;) {
    const auto segment = jpegSegment(header, at);
    if (!segment || segment->marker == kStartOfScan) return changed;
    at = segment->end;
    if (!isJpegFrame(segment->marker)) continue;
    constexpr qsizetype kHeightAt = 5;  // after the marker, the length and the precision
    changed[segment->begin + kHeightAt] = static_cast<char>(height >> 8);
    changed[segment->begin + kHeightAt + 1] = static_cast<char>(height);
  }
}

// libjpeg's decoder for a file in two pieces. What goes wrong in it, warnings too, comes back as false.
class StripDecoder {
 public:
  StripDecoder(QByteArrayView header, QByteArrayView data) : m_pieces{header, data} {
    m_jpeg.err = jpeg_std_error(&m_errors);
    m_errors.error_exit = [](j_common_ptr jpeg) { std::longjmp(of(jpeg).m_onError, 1); };
    m_errors.emit_message = [](j_common_ptr jpeg, int level) {
      if (level < 0) jpeg->err->error_exit(jpeg);
    };
    m_jpeg.client_data = this;
  }
  Q_DISABLE_COPY_MOVE(StripDecoder)
  ~StripDecoder() { jpeg_destroy_decompress(&m_jpeg); }

  // Rows `first` to `end` of the picture, the first of them to `to`. Once. Nothing with a destructor may live in here:
  // errors jump out of it.
  [[nodiscard]] bool decodeRows(JDIMENSION first, JDIMENSION end, JSAMPROW unwanted, JSAMPROW to,
                                std::ptrdiff_t stride) {
    if (setjmp(m_onError) != 0) return false;  // NOLINT(cert-err52-cpp): how libjpeg reports errors
    jpeg_create_decompress(&m_jpeg);
    setSource();
    jpeg_read_header(&m_jpeg, TRUE);
    m_jpeg.out_color_space = JCS_EXT_RGBA;
    jpeg_start_decompress(&m_jpeg);
    while (m_jpeg.output_scanline < end) {
      JSAMPROW row = m_jpeg.output_scanline < first
                         ? unwanted
                         : to + static_cast<std::ptrdiff_t>(m_jpeg.output_scanline - first) * stride;
      jpeg_read_scanlines(&m_jpeg, &row, 1);
    }
    return true;
  }

 private:
  static StripDecoder& of(j_common_ptr jpeg) { return *static_cast<StripDecoder*>(jpeg->client_data); }

  void setSource() {
    m_source.init_source = [](j_decompress_ptr) {};
    m_source.term_source = [](j_decompress_ptr) {};
    m_source.resync_to_restart = jpeg_resync_to_restart;
    m_source.fill_input_buffer = [](j_decompress_ptr jpeg) -> boolean {
      StripDecoder& self = of(reinterpret_cast<j_common_ptr>(jpeg));
      if (self.m_nextPiece == self.m_pieces.size()) std::longjmp(self.m_onError, 1);
      const QByteArrayView piece = self.m_pieces[self.m_nextPiece++];
      self.m_source.next_input_byte = reinterpret_cast<const JOCTET*>(piece.data());
      self.m_source.bytes_in_buffer = static_cast<std::size_t>(piece.size());
      return TRUE;
    };
    m_source.skip_input_data = [](j_decompress_ptr jpeg, long count) {
      StripDecoder& self = of(reinterpret_cast<j_common_ptr>(jpeg));
      // Segments are skipped, and the header has them whole.
      if (count > static_cast<long>(self.m_source.bytes_in_buffer)) std::longjmp(self.m_onError, 1);
      self.m_source.next_input_byte += count;
      self.m_source.bytes_in_buffer -= static_cast<std::size_t>(count);
    };
    m_jpeg.src = &m_source;
  }

  std::array<QByteArrayView, 2> m_pieces;
  std::size_t m_nextPiece = 0;
  jpeg_decompress_struct m_jpeg{};
  jpeg_error_mgr m_errors{};
  jpeg_source_mgr m_source{};
  std::jmp_buf m_onError{};
};

}  // namespace

QImage jpegInStrips(QByteArrayView file, int strips) {
  const auto jpeg = baselineJpegHeader(file);
  if (!jpeg || jpeg->restartInterval == 0 || jpeg->components.size() == 4) return {};
  const auto cuts = findCuts(file, *jpeg, strips);
  if (!cuts) return {};
  const McuGrid grid(*jpeg);
  QImage pixels = unsetPixels(jpeg->size, QImage::Format_RGBX8888);
  if (pixels.isNull()) return {};

  const QByteArrayView header = file.first(jpeg->scanStart);
  const auto count = static_cast<int>(cuts->rows.size());
  const qsizetype stride = pixels.bytesPerLine();
  std::atomic<bool> isWhole = true;
  parallelFor(count, [&, bits = pixels.bits()](int strip) {
    const auto index = static_cast<std::size_t>(strip);
    const int top = cuts->rows[index] * grid.height;
    const auto rowsAfterCut = [&](std::size_t cut, int mcuRows) {
      return cut < cuts->rows.size() ? (cuts->rows[cut] + mcuRows) * grid.height : jpeg->size.height();
    };
    const int first = strip == 0 ? 0 : rowsAfterCut(index, kContextRows);
    const int end = rowsAfterCut(index + 1, kContextRows);
    const int bottom = rowsAfterCut(index + 1, 2 * kContextRows);
    const QByteArray stripHeader = headerForHeight(header, bottom - top);
    std::vector<JSAMPLE> unwanted(static_cast<std::size_t>(stride));
    StripDecoder decoder(stripHeader, file.sliced(cuts->at[index]));
    if (!decoder.decodeRows(static_cast<JDIMENSION>(first - top), static_cast<JDIMENSION>(end - top), unwanted.data(),
                            bits + first * stride, stride)) {
      isWhole = false;
    }
  });
  return isWhole ? pixels : QImage();
}

}  // namespace lumagrid
