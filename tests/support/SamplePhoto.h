#pragma once

#include <QBuffer>
#include <QImage>

namespace lumagrid {

// The bytes of a picture of one colour, losslessly.
inline QByteArray samplePhoto(QSize size, Qt::GlobalColor color = Qt::darkCyan, const char* format = "PNG") {
  QImage image(size, QImage::Format_RGB32);
  image.fill(color);
  QByteArray bytes;
  QBuffer buffer(&bytes);
  buffer.open(QIODevice::WriteOnly);
  if (!image.save(&buffer, format)) qFatal("Cannot write a picture");
  return bytes;
}

}  // namespace lumagrid
