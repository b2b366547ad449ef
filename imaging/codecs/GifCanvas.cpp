#include "GifCanvas.h"

#include <QPainter>
#include <QRegion>
#include <QtEndian>

namespace lumagrid {
namespace {

constexpr qsizetype kHeaderBytes = 13;
constexpr int kHasPalette = 0x80;

struct Frame {
  QRect place;
  bool hasTransparency = false;
};

int byteAt(QByteArrayView bytes, qsizetype at) {
  return static_cast<uchar>(bytes[at]);
}

// Of the palette for all frames; 0 when there is none.
qsizetype paletteBytes(QByteArrayView file) {
  const int flags = byteAt(file, 10);
  return (flags & kHasPalette) != 0 ? qsizetype{6} << (flags & 7) : 0;
}

std::optional<Frame> firstFrame(QByteArrayView file) {
  constexpr int kExtension = '!';
  constexpr int kGraphicControl = 0xf9;
  constexpr int kImage = ',';
  Frame frame;
  qsizetype at = kHeaderBytes + paletteBytes(file);
  while (at + 9 < file.size() && byteAt(file, at) == kExtension) {
    if (byteAt(file, at + 1) == kGraphicControl) frame.hasTransparency = (byteAt(file, at + 3) & 1) != 0;
    at += 2;
    while (at < file.size() && byteAt(file, at) != 0) at += 1 + byteAt(file, at);
    ++at;
  }
  if (at + 9 >= file.size() || byteAt(file, at) != kImage) return std::nullopt;
  const auto number = [image = file.data() + at](int index) { return qFromLittleEndian<std::uint16_t>(image + index); };
  frame.place = {number(1), number(3), number(5), number(7)};
  return frame;
}

QColor background(QByteArrayView file) {
  const qsizetype at = kHeaderBytes + qsizetype{byteAt(file, 11)} * 3;
  if (at + 3 > std::min(kHeaderBytes + paletteBytes(file), file.size())) return Qt::transparent;
  return {byteAt(file, at), byteAt(file, at + 1), byteAt(file, at + 2)};
}

}  // namespace

std::optional<QRect> gifFirstFrame(QByteArrayView file) {
  if (file.size() < kHeaderBytes) return std::nullopt;
  const auto frame = firstFrame(file);
  return frame ? std::optional(frame->place) : std::nullopt;
}

void fillGifBackground(QByteArrayView file, QImage& pixels) {
  if (file.size() < kHeaderBytes) return;
  const auto frame = firstFrame(file);
  if (!frame || frame->hasTransparency || frame->place.contains(pixels.rect())) return;
  const QColor color = background(file);
  if (color.alpha() == 0) pixels = std::move(pixels).convertToFormat(QImage::Format_ARGB32_Premultiplied);
  QPainter painter(&pixels);
  painter.setCompositionMode(QPainter::CompositionMode_Source);
  painter.setClipRegion(QRegion(pixels.rect()).subtracted(frame->place));
  painter.fillRect(pixels.rect(), color);
}

}  // namespace lumagrid
