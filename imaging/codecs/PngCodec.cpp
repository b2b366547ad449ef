#include <png.h>

#include <algorithm>
#include <csetjmp>
#include <limits>

#include "ImageCodec.h"
#include "MemoryLimit.h"
#include "PictureFinishing.h"
#include "PictureMemory.h"
#include "PixelBuffer.h"
#include "PngFile.h"

namespace lumagrid {
namespace {

// Gives the library the pieces of a file one after the other.
struct PngPieces {
  const PngFile& file;
  size_t nextPiece = 0;
  QByteArrayView rest = file.head;

  static void read(png_structp png, png_bytep target, size_t count) {
    PngPieces& pieces = *static_cast<PngPieces*>(png_get_io_ptr(png));
    while (count > 0) {
      if (pieces.rest.isEmpty()) {
        if (pieces.nextPiece == pieces.file.pieces.size()) png_error(png, "end of file");
        pieces.rest = pieces.file.pieces[pieces.nextPiece++];
      }
      const qsizetype part = std::min(static_cast<qsizetype>(count), pieces.rest.size());
      target = std::copy_n(pieces.rest.data(), part, target);
      pieces.rest = pieces.rest.sliced(part);
      count -= static_cast<size_t>(part);
    }
  }
};

void leave(png_structp png, png_const_charp) {
  png_longjmp(png, 1);
}

void ignoreWarning(png_structp, png_const_charp) {}

// The library leaves by longjmp() where the data is damaged: a step holds nothing that needs a destructor.
class PngReader {
 public:
  explicit PngReader(const PngFile& file) : m_pieces{file} {}
  PngReader(const PngReader&) = delete;
  PngReader& operator=(const PngReader&) = delete;
  ~PngReader() { png_destroy_read_struct(&m_png, &m_info, nullptr); }

  // Size and kind of the pixels.
  bool readHead() {
    return m_png != nullptr && m_info != nullptr && succeeds([this] {
             png_set_read_fn(m_png, &m_pieces, &PngPieces::read);
             png_set_user_limits(m_png, std::numeric_limits<std::int32_t>::max(),
                                 std::numeric_limits<std::int32_t>::max());
             png_set_crc_action(m_png, PNG_CRC_QUIET_USE, PNG_CRC_QUIET_USE);
             png_read_info(m_png, m_info);
           });
  }

  [[nodiscard]] std::int64_t width() const { return png_get_image_width(m_png, m_info); }
  [[nodiscard]] std::int64_t height() const { return png_get_image_height(m_png, m_info); }
  [[nodiscard]] std::int64_t rowBytes() const { return static_cast<std::int64_t>(png_get_rowbytes(m_png, m_info)); }
  [[nodiscard]] bool isDeep() const { return png_get_bit_depth(m_png, m_info) == 16; }
  [[nodiscard]] bool isGray() const { return (png_get_color_type(m_png, m_info) & PNG_COLOR_MASK_COLOR) == 0; }
  [[nodiscard]] bool hasAlpha() const {
    return (png_get_color_type(m_png, m_info) & PNG_COLOR_MASK_ALPHA) != 0 ||
           png_get_valid(m_png, m_info, PNG_INFO_tRNS) != 0;
  }

  // The pixels in four channels of 8 or 16 bits; rows that cannot be had are transparent. Null without any.
  QImage readPixels(bool isWide) {
    constexpr QImage::Format kFormats[2][2] = {{QImage::Format_RGBX8888, QImage::Format_RGBA8888},
                                               {QImage::Format_RGBX64, QImage::Format_RGBA64}};
    const QImage::Format withAlpha = kFormats[isWide ? 1 : 0][1];
    const QSize size(static_cast<int>(width()), static_cast<int>(height()));
    QImage pixels = unsetPixels(size, kFormats[isWide ? 1 : 0][hasAlpha() ? 1 : 0]);
    if (pixels.isNull() || !succeeds([this, isWide] { expand(isWide); })) return {};
    const bool isWhole = succeeds([this, &pixels, height = size.height()] {
      for (int pass = 0; pass < m_passes; ++pass) {
        for (int y = 0; y < height; ++y, ++m_rowCount) {
          // Pixels of later passes show those of earlier ones meanwhile.
          m_passes == 1 ? png_read_row(m_png, pixels.scanLine(y), nullptr)
                        : png_read_row(m_png, nullptr, pixels.scanLine(y));
        }
      }
    });
    if (isWhole) return pixels;
    if (m_rowCount == 0) return {};
    for (int y = m_rowCount; y < size.height(); ++y) std::fill_n(pixels.scanLine(y), pixels.bytesPerLine(), 0);
    pixels.reinterpretAsFormat(withAlpha);
    return pixels;
  }

 private:
  template <typename Step>
  bool succeeds(Step step) {
    if (setjmp(png_jmpbuf(m_png)) != 0) return false;
    step();
    return true;
  }

  void expand(bool isWide) {
    png_set_expand(m_png);
    png_set_gray_to_rgb(m_png);
    if (!hasAlpha()) png_set_filler(m_png, 0xffff, PNG_FILLER_AFTER);
    isWide ? png_set_swap(m_png) : png_set_scale_16(m_png);
    m_passes = png_set_interlace_handling(m_png);
    png_read_update_info(m_png, m_info);
  }

  PngPieces m_pieces;
  png_structp m_png = png_create_read_struct(PNG_LIBPNG_VER_STRING, nullptr, &leave, &ignoreWarning);
  png_infop m_info = m_png != nullptr ? png_create_info_struct(m_png) : nullptr;
  int m_passes = 1;    // over an interlaced picture
  int m_rowCount = 0;  // that were read, of all passes
};

// A deflated byte gives 1032 at most; files cut short are believed as far as other formats'.
bool isCredible(const PngReader& reader, const PngFile& file) {
  constexpr std::int64_t kBytesPerByte = 1032;
  return isPictureSizeCredible(reader.width(), reader.height(), 0) ||
         reader.rowBytes() * reader.height() / kBytesPerByte <= file.dataBytes;
}

}  // namespace

bool isPng(QByteArrayView head) {
  return head.startsWith("\x89PNG\r\n\x1a\n");
}

DecodedImage decodePng(const CodecRequest& request) {
  const std::optional<PngFile> file = pngFile(request.bytes);
  if (!file) return {{}, ImageError::damaged};
  PngReader reader(*file);
  if (!reader.readHead()) return {{}, ImageError::damaged};
  if (!isPictureSizeSane(reader.width(), reader.height())) return {{}, ImageError::tooLarge};
  if (!isCredible(reader, *file)) return {{}, ImageError::damaged};

  RawPicture picture;
  picture.metadata = file->metadata;
  if (reader.isGray()) picture.model = ColorModel::gray;
  // More than 8 bits are of use to the conversion of colours alone.
  const bool isWide = reader.isDeep() && !picture.metadata.iccProfile.isEmpty();
  const std::int64_t pixelBytes = (isWide ? 8 : 4) + 4;
  if (!claimMemory(request.bytes.size() + reader.width() * reader.height() * pixelBytes)) {
    return {{}, ImageError::tooLarge};
  }
  picture.pixels = reader.readPixels(isWide);
  return finishedPicture(std::move(picture), request.bound);
}

}  // namespace lumagrid
