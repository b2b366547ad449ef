#include "JpegStrips.h"

#include <algorithm>
#include <atomic>
#include <numeric>
#include <optional>
#include <vector>

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
  explicit McuGrid(const jpeg_decompress_struct& header) {
    // The sampling factors of a lone component mean nothing.
    const bool isGray = header.num_components == 1;
    const int width = isGray ? DCTSIZE : DCTSIZE * header.max_h_samp_factor;
    height = isGray ? DCTSIZE : DCTSIZE * header.max_v_samp_factor;
    columns = (static_cast<int>(header.image_width) + width - 1) / width;
    rows = (static_cast<int>(header.image_height) + height - 1) / height;
  }
  int height = 0;  // of an MCU, pixels
  int columns = 0;
  int rows = 0;
};

std::vector<int> rowsToCutAt(const McuGrid& grid, int restartInterval, int strips) {
  const int cycle = kRestartCycle * restartInterval;  // in MCUs
  const int step = std::max(cycle / std::gcd(grid.columns, cycle), 1);
  std::vector<int> rows = {0};
  for (int strip = 1; strip < strips; ++strip) {
    const int row = (grid.rows * strip / strips + step / 2) / step * step;
    // No strip without rows of its own between those that it lends.
    if (row > rows.back() + 2 * kContextRows && row + 2 * kContextRows < grid.rows) rows.push_back(row);
  }
  return rows;
}

// Nothing unless the restart markers are those that the header promises, and the image ends after them.
std::optional<Cuts> findCuts(QByteArrayView data, const McuGrid& grid, int restartInterval, int strips) {
  Cuts cuts{rowsToCutAt(grid, restartInterval, strips), {0}};
  if (cuts.rows.size() < 2) return std::nullopt;
  const qsizetype intervals = (qsizetype{grid.columns} * grid.rows + restartInterval - 1) / restartInterval;
  qsizetype interval = 0;
  for (qsizetype at = 0;; at += 2) {
    at = data.indexOf('\xff', at);
    if (at < 0 || at + 1 >= data.size()) return std::nullopt;
    const int marker = static_cast<unsigned char>(data[at + 1]);
    if (marker == 0) continue;
    ++interval;
    if (marker == JPEG_EOI) break;
    if (marker != JPEG_RST0 + (interval - 1) % kRestartCycle) return std::nullopt;
    const std::size_t next = cuts.at.size();
    if (next < cuts.rows.size() && interval * restartInterval == qsizetype{grid.columns} * cuts.rows[next]) {
      cuts.at.push_back(at + 2);
    }
  }
  if (interval != intervals) return std::nullopt;
  return cuts;
}

}  // namespace

QImage jpegInStrips(const JpegReader& whole, int strips) {
  const QByteArrayView data = whole.sequentialData();
  const auto restartInterval = static_cast<int>(whole.header().restart_interval);
  if (data.isEmpty() || restartInterval == 0) return {};
  const McuGrid grid(whole.header());
  const auto cuts = findCuts(data, grid, restartInterval, strips);
  if (!cuts) return {};
  QImage pixels = unsetPixels(whole.size(), QImage::Format_RGBX8888);
  if (pixels.isNull()) return {};

  const auto count = static_cast<int>(cuts->rows.size());
  std::atomic<bool> isWhole = true;
  parallelFor(count, [&, bits = pixels.bits(), stride = pixels.bytesPerLine(), height = pixels.height()](int index) {
    const auto cut = static_cast<std::size_t>(index);
    const auto belowCut = [&](std::size_t at) { return (cuts->rows[at] + kContextRows) * grid.height; };
    const JpegReader::Strip strip = {.data = data.sliced(cuts->at[cut]),
                                     .top = cuts->rows[cut] * grid.height,
                                     .first = cut == 0 ? 0 : belowCut(cut),
                                     .end = cut + 1 < cuts->rows.size() ? belowCut(cut + 1) : height};
    JpegReader reader(whole.file());
    if (!reader.readHeader(JpegReader::Markers::skipped) || !reader.decodeStrip(strip, bits, stride)) isWhole = false;
  });
  return isWhole ? pixels : QImage();
}

}  // namespace lumagrid
