#include "JpegReader.h"

#include <algorithm>
#include <cstdlib>
#include <memory>
#include <new>
#include <type_traits>

#include <jerror.h>

#include "ExifOrientation.h"
#include "PixelBuffer.h"

namespace lumagrid {
namespace {

constexpr int kExifMarker = JPEG_APP0 + 1;
constexpr int kProfileMarker = JPEG_APP0 + 2;
constexpr unsigned kLongestSegment = 0xffff;

JpegReader& readerOf(j_common_ptr jpeg) {
  return *static_cast<JpegReader*>(jpeg->client_data);
}

bool isCmyk(const jpeg_decompress_struct& jpeg) {
  return jpeg.jpeg_color_space == JCS_CMYK || jpeg.jpeg_color_space == JCS_YCCK;
}

// Whether the scan that has begun is of AC coefficients, and no pixel of their component depends on more than a mean.
bool isScanUnused(const jpeg_decompress_struct& jpeg) {
  return jpeg.progressive_mode && jpeg.comps_in_scan == 1 && jpeg.Ss > 0 && jpegBlockSide(*jpeg.cur_comp_info[0]) == 1;
}

// Whether the scans so far have all bits of all coefficients. The library smooths blocks that lack some, depending on
// how far the last scan got.
bool isComplete(const jpeg_decompress_struct& jpeg) {
  const int* const bitsLacking = jpeg.coef_bits[0];
  return std::all_of(bitsLacking, bitsLacking + jpeg.num_components * DCTSIZE2, [](int bits) { return bits == 0; });
}

// Of all components.
std::int64_t blockCount(const jpeg_component_info& component) {
  return std::int64_t{component.width_in_blocks} * component.height_in_blocks;
}

std::int64_t allBlocks(const jpeg_decompress_struct& jpeg) {
  std::int64_t count = 0;
  for (int index = 0; index < jpeg.num_components; ++index) count += blockCount(jpeg.comp_info[index]);
  return count;
}

// How many blocks scans may pass over before no more are read. Encoders pass over each about six times, and 20 at the
// most; a picture that is soon decoded may have more scans.
std::int64_t mostBlocksPassed(const jpeg_decompress_struct& jpeg) {
  constexpr std::int64_t kPassesOverEach = 32;
  constexpr std::int64_t kBlocksOnTrust = std::int64_t{1} << 22;
  return std::max(kPassesOverEach * allBlocks(jpeg), kBlocksOnTrust);
}

std::int64_t blocksOfScan(const jpeg_decompress_struct& jpeg) {
  std::int64_t count = 0;
  for (int index = 0; index < jpeg.comps_in_scan; ++index) count += blockCount(*jpeg.cur_comp_info[index]);
  return count;
}

// Moves on to the next marker that is no restart. To the library, the scan is then one whose data is cut short.
void skipScan(jpeg_source_mgr& source) {
  const QByteArrayView data(source.next_input_byte, static_cast<qsizetype>(source.bytes_in_buffer));
  const auto endsAt = [data](qsizetype at) {
    const int code = at + 1 < data.size() ? static_cast<unsigned char>(data[at + 1]) : JPEG_EOI;
    return code != 0 && code != 0xff && (code < JPEG_RST0 || code > JPEG_RST0 + 7);
  };
  qsizetype end = data.indexOf('\xff');
  while (end >= 0 && !endsAt(end)) end = data.indexOf('\xff', end + 1);
  if (end < 0) end = data.size();
  source.next_input_byte += end;
  source.bytes_in_buffer -= static_cast<std::size_t>(end);
}

}  // namespace

// The library reports an error by jumping out of its own calls. Nothing with a destructor may live in `calls`, nor in
// what these call.
template <typename Calls>
bool JpegReader::succeeds(Calls calls) {
  static_assert(std::is_trivially_destructible_v<Calls>);
  if (setjmp(m_onError) != 0) return false;  // NOLINT(cert-err52-cpp): how libjpeg reports errors
  calls();
  return true;
}

JpegReader::JpegReader(QByteArrayView file) : m_file(file) {
  m_jpeg.err = jpeg_std_error(&m_errors);
  m_errors.error_exit = [](j_common_ptr jpeg) { readerOf(jpeg).fail(); };
  m_errors.output_message = [](j_common_ptr) {};
  m_jpeg.client_data = this;
}

JpegReader::~JpegReader() {
  jpeg_destroy_decompress(&m_jpeg);
}

bool JpegReader::readHeader(Markers markers) {
  return succeeds([&] {
    jpeg_create_decompress(&m_jpeg);
    if (markers == Markers::saved) {
      jpeg_save_markers(&m_jpeg, kExifMarker, kLongestSegment);
      jpeg_save_markers(&m_jpeg, kProfileMarker, kLongestSegment);
    }
    start();
  });
}

void JpegReader::start() {
  jpeg_mem_src(&m_jpeg, reinterpret_cast<const unsigned char*>(m_file.data()),
               static_cast<unsigned long>(m_file.size()));
  jpeg_read_header(&m_jpeg, TRUE);
  m_jpeg.out_color_space = isCmyk(m_jpeg) ? JCS_CMYK : JCS_EXT_RGBA;  // RGBX8888 with 255 in the fourth byte
}

QSize JpegReader::size() const {
  return {static_cast<int>(m_jpeg.image_width), static_cast<int>(m_jpeg.image_height)};
}

ColorModel JpegReader::colorModel() const {
  if (m_jpeg.num_components == 1) return ColorModel::gray;
  if (!isCmyk(m_jpeg)) return ColorModel::rgb;
  // Adobe's programs write CMYK inverted.
  return m_jpeg.saw_Adobe_marker ? ColorModel::invertedCmyk : ColorModel::cmyk;
}

PictureMetadata JpegReader::metadata() {
  PictureMetadata metadata;
  metadata.iccProfile = iccProfile();
  metadata.pixelAspect = pixelAspectOf(m_jpeg.X_density, m_jpeg.Y_density);
  for (const auto* saved = m_jpeg.marker_list; saved != nullptr; saved = saved->next) {
    const QByteArrayView content(saved->data, static_cast<qsizetype>(saved->data_length));
    if (saved->marker != kExifMarker || !content.startsWith(QByteArrayView("Exif\0", 5))) continue;
    metadata.orientation = exifOrientationOfBlock(content);
    break;
  }
  return metadata;
}

QByteArray JpegReader::iccProfile() {
  JOCTET* data = nullptr;
  unsigned size = 0;
  const bool isRead = succeeds([&] { jpeg_read_icc_profile(&m_jpeg, &data, &size); });
  const std::unique_ptr<JOCTET, decltype(&std::free)> owned(data, &std::free);
  if (!isRead || data == nullptr) return {};
  return {reinterpret_cast<const char*>(data), static_cast<qsizetype>(size)};
}

bool JpegReader::scaleTo(int eighths) {
  return succeeds([&] {
    m_jpeg.scale_num = static_cast<unsigned>(eighths);
    m_jpeg.scale_denom = DCTSIZE;
    jpeg_calc_output_dimensions(&m_jpeg);
  });
}

std::int64_t JpegReader::memory() {
  const std::int64_t pixelBytes = std::int64_t{4} * m_jpeg.output_width * m_jpeg.output_height;
  const bool hasSeveralScans = jpeg_has_multiple_scans(&m_jpeg) != FALSE;
  const auto coefficientBytes = static_cast<std::int64_t>(sizeof(JCOEF)) * DCTSIZE2;
  return m_file.size() + 2 * pixelBytes + (hasSeveralScans ? allBlocks(m_jpeg) * coefficientBytes : 0);
}

QImage JpegReader::decode() {
  const QSize size(static_cast<int>(m_jpeg.output_width), static_cast<int>(m_jpeg.output_height));
  QImage pixels = unsetPixels(size, QImage::Format_RGBX8888);
  if (pixels.isNull()) throw std::bad_alloc();
  const bool isWhole = succeeds([&, bits = pixels.bits(), stride = pixels.bytesPerLine()] {
    if (!startOutput(Scans::used)) {
      const unsigned eighths = m_jpeg.scale_num;
      jpeg_abort_decompress(&m_jpeg);
      start();
      m_jpeg.scale_num = eighths;
      m_jpeg.scale_denom = DCTSIZE;
      (void)startOutput(Scans::all);
    }
    readRows(0, size.height(), bits, stride);
  });
  return isWhole ? pixels : QImage();
}

QByteArrayView JpegReader::sequentialData() const {
  const bool isOfOneScan = !m_jpeg.progressive_mode && m_jpeg.comps_in_scan == m_jpeg.num_components &&
                           m_jpeg.Ss == 0 && m_jpeg.Se == DCTSIZE2 - 1 && m_jpeg.Ah == 0 && m_jpeg.Al == 0;
  const bool isPlain = isOfOneScan && !m_jpeg.arith_code && m_jpeg.data_precision == BITS_IN_JSAMPLE;
  if (!isPlain || m_errors.num_warnings > 0) return {};
  return m_file.last(static_cast<qsizetype>(m_jpeg.src->bytes_in_buffer));
}

bool JpegReader::decodeStrip(const Strip& strip, uchar* pixels, qsizetype stride) {
  const bool isDecoded = succeeds([&] {
    continueAt(strip.data, strip.top);
    jpeg_start_decompress(&m_jpeg);
    readRows(strip.first - strip.top, strip.end - strip.top, pixels + strip.first * stride, stride);
  });
  return isDecoded && m_errors.num_warnings == 0;
}

// Takes off the rows above, and does again what the library has worked out from the height.
void JpegReader::continueAt(QByteArrayView data, int top) {
  m_jpeg.src->next_input_byte = reinterpret_cast<const JOCTET*>(data.data());
  m_jpeg.src->bytes_in_buffer = static_cast<std::size_t>(data.size());
  m_jpeg.image_height -= static_cast<JDIMENSION>(top);
  const auto rowsOf = [this](int factor) {
    const auto rowHeight = static_cast<JDIMENSION>(m_jpeg.max_v_samp_factor * DCTSIZE);
    return (m_jpeg.image_height * static_cast<JDIMENSION>(factor) + rowHeight - 1) / rowHeight;
  };
  m_jpeg.total_iMCU_rows = rowsOf(1);
  for (int index = 0; index < m_jpeg.num_components; ++index) {
    jpeg_component_info& component = m_jpeg.comp_info[index];
    component.height_in_blocks = rowsOf(component.v_samp_factor);
  }
}

// The rows above the first one pass through its memory.
void JpegReader::readRows(int first, int end, uchar* to, qsizetype stride) {
  while (m_jpeg.output_scanline < static_cast<JDIMENSION>(end)) {
    JSAMPROW row = to + std::max(static_cast<int>(m_jpeg.output_scanline) - first, 0) * stride;
    jpeg_read_scanlines(&m_jpeg, &row, 1);
  }
}

// Where there are several scans, they are read before the first row comes out. False where pixels would differ because
// some were left out.
bool JpegReader::startOutput(Scans scans) {
  const bool isOneOfMany = jpeg_has_multiple_scans(&m_jpeg);
  m_jpeg.buffered_image = isOneOfMany;
  jpeg_start_decompress(&m_jpeg);
  if (!isOneOfMany) return true;
  bool isAnySkipped = false;
  std::int64_t blocksLeft = mostBlocksPassed(m_jpeg);
  for (int reached = JPEG_REACHED_SOS; reached != JPEG_REACHED_EOI; reached = jpeg_consume_input(&m_jpeg)) {
    if (reached != JPEG_REACHED_SOS) continue;
    blocksLeft -= blocksOfScan(m_jpeg);
    if (blocksLeft < 0) break;
    if (scans == Scans::all || !isScanUnused(m_jpeg)) continue;
    skipScan(*m_jpeg.src);
    isAnySkipped = true;
  }
  if (isAnySkipped && !isComplete(m_jpeg)) return false;
  jpeg_start_output(&m_jpeg, m_jpeg.input_scan_number);
  return true;
}

ImageError JpegReader::error() const {
  const bool isTooLarge = m_errors.msg_code == JERR_OUT_OF_MEMORY || m_errors.msg_code == JERR_IMAGE_TOO_BIG;
  return isTooLarge ? ImageError::tooLarge : ImageError::damaged;
}

}  // namespace lumagrid
