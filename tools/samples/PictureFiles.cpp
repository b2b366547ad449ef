#include "PictureFiles.h"

#include <QBuffer>
#include <QImageWriter>
#include <QTransform>

namespace lumagrid::samples {

namespace {

// The pixels that a viewer turns back into `upright` when it follows the Exif orientation.
QImage stored(const QImage& upright, int exifOrientation) {
  QImage turned = upright.transformed(QTransform().rotate(90));
  switch (exifOrientation) {
    case 2:
      return upright.mirrored(true, false);
    case 3:
      return upright.mirrored(true, true);
    case 4:
      return upright.mirrored(false, true);
    case 5:
      return turned.mirrored(true, false);
    case 6:
      return turned.mirrored(true, true);
    case 7:
      return turned.mirrored(false, true);
    case 8:
      return turned;
    default:
      return upright;
  }
}

// An APP1 segment with one big-endian directory of one entry: tag 0x0112 (orientation), type 3 (16 bits), 1 value.
QByteArray orientationSegment(int exifOrientation) {
  QByteArray segment = QByteArray::fromHex(
      "FFE10022"
      "457869660000"
      "4D4D002A00000008"
      "0001"
      "0112000300000001"
      "00000000"
      "00000000");
  segment[segment.size() - 7] = static_cast<char>(exifOrientation);
  return segment;
}

}  // namespace

QByteArray qtFile(const QImage& picture, const char* format, int quality) {
  QBuffer buffer;
  QImageWriter writer(&buffer, format);
  writer.setQuality(quality);
  return writer.write(picture) ? buffer.data() : QByteArray();
}

QByteArray jpegFile(const QImage& upright, int exifOrientation, JpegKind kind) {
  QBuffer buffer;
  QImageWriter writer(&buffer, "jpeg");
  writer.setQuality(88);
  writer.setProgressiveScanWrite(kind == JpegKind::Progressive);
  writer.setOptimizedWrite(true);
  if (!writer.write(stored(upright, exifOrientation))) {
    return {};
  }
  QByteArray file = buffer.data();
  if (exifOrientation != 0) {
    constexpr int kStartOfImage = 2;  // bytes: the marker that opens every file
    file.insert(kStartOfImage, orientationSegment(exifOrientation));
  }
  return file;
}

}  // namespace lumagrid::samples
