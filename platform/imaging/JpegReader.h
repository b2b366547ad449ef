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
  [[nodiscard]] QSize size() const;
  [[nodiscard]] ColorModel colorModel() const;
  [[nodiscard]] PictureMetadata metadata();

  // The picture at `eighths` (1, 2, 4 or 8) of its size, rounded up: RGBX8888, or the four inks as they are in the
  // file. Once.
  [[nodiscard]] QImage decode(int eighths);

  // Of the call that failed.
  [[nodiscard]] ImageError error() const;

 private:
  template <typename Calls>
  [[nodiscard]] bool succeeds(Calls calls);
  [[noreturn]] void fail() { std::longjmp(m_onError, 1); }
  enum class Scans : unsigned char { used, all };
  void start();
  void setScale(int eighths);
  [[nodiscard]] bool startOutput(Scans scans);
  [[nodiscard]] QByteArray iccProfile();

  QByteArrayView m_file;
  jpeg_decompress_struct m_jpeg{};
  jpeg_error_mgr m_errors{};
  std::jmp_buf m_onError{};
};

}  // namespace lumagrid
