#pragma once

#include <tiff.h>

#include <QColorSpace>
#include <QImage>
#include <QtEndian>
#include <cstdio>  // jpeglib.h needs it first
#include <map>
#include <random>
#include <vector>

#include <jpeglib.h>

#include "FileImageDecoder.h"
#include "PhotoFolder.h"

// Small pictures made on the spot, and the pieces of files from which odd ones are put together.
namespace samples {

// A number in big-endian bytes.
template <typename Number>
QByteArray big(quint64 number) {
  QByteArray bytes(sizeof(Number), '\0');
  qToBigEndian(static_cast<Number>(number), bytes.data());
  return bytes;
}

QImage filled(const QColor& color, QSize size = {32, 32}, QImage::Format format = QImage::Format_RGB32);
// Four independent channels, of which CMYK alone uses the last. `roughness` 0: only smooth colors; 1: only noise.
QImage rough(QSize size, double roughness);

struct JpegSpec {
  J_COLOR_SPACE colors = JCS_YCbCr;  // as CMYK, the image's four channels are the inverted inks
  int quality = 95;
  std::vector<std::pair<int, int>> sampling = {};  // factors across and down of each component; none: the usual ones
  unsigned restartInterval = 0;                    // in MCUs
  void (*coding)(j_compress_ptr) = nullptr;        // changes what else the library offers
};
QByteArray jpeg(const QImage& image, const JpegSpec& spec = {});

// A JPEG with one more segment after its first two bytes.
QByteArray withSegment(const QByteArray& jpeg, unsigned char marker, const QByteArray& content);
QByteArray withProfile(const QByteArray& jpeg, const QByteArray& profile);
// The data of an Exif segment: one directory with nothing but an orientation.
QByteArray exif(int orientation);

// A PNG with one more chunk before its pixels.
QByteArray withChunk(const QByteArray& png, const QByteArray& name, const QByteArray& content);

// An uncompressed big-endian TIFF of one strip, with values for the tags that differ from RGB of 8 bits. `samples` are
// those of all pixels, `colorMap` all reds, all greens and all blues of a palette.
QByteArray tiff(std::map<quint16, quint32> fields, const QByteArray& samples, const QByteArray& colorMap = {});

// One of the files that cannot be made here; see data/README.md.
QByteArray carried(const char* name);

// What the decoder makes of a file, whose name says PNG; the whole picture for a bound of 0. Any thread.
lumagrid::DecodedImage decoded(const QByteArray& file, int bound = 0);

// Puts a few random bytes into `file`, half of them at its beginning, or cuts it short.
QByteArray broken(QByteArray file, qsizetype headerBytes, std::minstd_rand& random);

}  // namespace samples
