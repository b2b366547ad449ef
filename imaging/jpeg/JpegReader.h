#pragma once

#include <QByteArrayView>
#include <QImage>
#include <QSize>
#include <csetjmp>
#include <cstdio>  // jpeglib.h needs it first

#include <jpeglib.h>

#include "ColorConversion.h"
#include "ImageDecoder.h"
#include "PictureMetadata.h"

namespace lumagrid {

// How many samples, each way, a component has of a block at the scale of its picture.
[[nodiscard]] inline int jpegBlockSide(const jpeg_component_info& component) {
#if JPEG_LIB_VERSION >= 70
  return component.DCT_h_scaled_size;  // and no other down
#else
  return component.DCT_scaled_size;
#endif
}

// A JPEG file, read by libjpeg-turbo. What the library goes on after with a warning (junk between segments, data cut
// short) makes a whole picture, gray where nothing came. What it cannot go on after makes none: the call fails, and
// nothing but error() may be asked any more. One thread at a time.
class JpegReader {
 public:
  // Of applications, which metadata() comes from.
  enum class Markers : unsigned char { skipped, saved };

  explicit JpegReader(QByteArrayView file);
  Q_DISABLE_COPY_MOVE(JpegReader)
  ~JpegReader();

  // Reads all that stands before the data of the first scan. To be called first, and once.
  [[nodiscard]] bool readHeader(Markers markers);
  [[nodiscard]] QByteArrayView file() const { return m_file; }
  [[nodiscard]] QSize size() const;
  [[nodiscard]] ColorModel colorModel() const;
  [[nodiscard]] PictureMetadata metadata();

  // Makes the picture that is decoded `eighths` (1, 2, 4 or 8) of the size in the file, rounded up.
  [[nodiscard]] bool scaleTo(int eighths);
  // What decode() takes, the file included, and as much again as the picture for what follows.
  [[nodiscard]] std::int64_t memory();
  // The picture in RGBX8888, or CMYK as it is in the file; without the last scans where these are so many that they
  // serve time alone. Once.
  [[nodiscard]] QImage decode();

  // What the library found before the first scan, and works out from the scale.
  [[nodiscard]] const jpeg_decompress_struct& header() const { return m_jpeg; }
  // All that stands behind the header, where that is without fault and one scan of Huffman codes makes the picture;
  // empty for every other file.
  [[nodiscard]] QByteArrayView sequentialData() const;

  // Instead of decode(), for `data` from behind a restart marker 7: it begins with the MCU row of `top`, and is decoded
  // as a file of its own. Stores the rows from `first` to `end` of the picture, `pixels` being its row 0. False for
  // data with the slightest damage, too.
  struct Strip {
    QByteArrayView data;
    int top;
    int first;
    int end;
  };
  [[nodiscard]] bool decodeStrip(const Strip& strip, uchar* pixels, qsizetype stride);

  // Of the call that failed.
  [[nodiscard]] ImageError error() const;

 private:
  template <typename Calls>
  [[nodiscard]] bool succeeds(Calls calls);
  [[noreturn]] void fail() { std::longjmp(m_onError, 1); }
  enum class Scans : unsigned char { used, all };
  void start();
  [[nodiscard]] bool startOutput(Scans scans);
  void continueAt(QByteArrayView data, int top);
  void readRows(int first, int end, uchar* to, qsizetype stride);
  [[nodiscard]] QByteArray iccProfile();

  QByteArrayView m_file;
  jpeg_decompress_struct m_jpeg{};
  jpeg_error_mgr m_errors{};
  std::jmp_buf m_onError{};
};

}  // namespace lumagrid
