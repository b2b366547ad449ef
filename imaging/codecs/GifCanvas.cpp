#include "GifCanvas.h"

#include <QPainter>
#include <QRegion>
#include <QtEndian>

namespace lumagrid {
namespace {

constexpr qsizetype kHeaderBytes = 13;
constexpr int kHasPalette = 0x80;

int byteAt(QByteArrayView bytes, qsizetype at) {
  return static_cast<uchar>(bytes[at]);
}

// Of the palette for all frames; 0 when there is none.
qsizetype paletteBytes(QByteArrayView file) {
  const int flags = byteAt(file, 10);
  return (flags & kHasPalette) != 0 ? qsizetype{6} << (flags & 7) : 0;
}

// The blocks from `at` on, to behind the empty one that ends them.
qsizetype endOfBlocks(QByteArrayView file, qsizetype at) {
  while (at < file.size() && byteAt(file, at) != 0) at += 1 + byteAt(file, at);
  return std::min(at + 1, file.size());
}

QColor background(QByteArrayView file) {
  const qsizetype at = kHeaderBytes + qsizetype{byteAt(file, 11)} * 3;
  if (at + 3 > std::min(kHeaderBytes + paletteBytes(file), file.size())) return Qt::transparent;
  return {byteAt(file, at), byteAt(file, at + 1), byteAt(file, at + 2)};
}

}  // namespace

std::optional<GifFrame> gifFirstFrame(QByteArrayView file) {
  constexpr int kExtension = '!';
  constexpr int kGraphicControl = 0xf9;
  constexpr int kImage = ',';
  GifFrame frame;
  if (file.size() < kHeaderBytes) return std::nullopt;
  qsizetype at = kHeaderBytes + paletteBytes(file);
  while (at + 9 < file.size() && byteAt(file, at) == kExtension) {
    if (byteAt(file, at + 1) == kGraphicControl) frame.hasTransparency = (byteAt(file, at + 3) & 1) != 0;
    at = endOfBlocks(file, at + 2);
  }
  if (at + 9 >= file.size() || byteAt(file, at) != kImage) return std::nullopt;
  const auto number = [image = file.data() + at](int index) { return qFromLittleEndian<std::uint16_t>(image + index); };
  frame.place = {number(1), number(3), number(5), number(7)};
  const int flags = byteAt(file, at + 9);
  const qsizetype palette = (flags & kHasPalette) != 0 ? qsizetype{6} << (flags & 7) : 0;
  frame.end = endOfBlocks(file, std::min(at + 11 + palette, file.size()));
  return frame;
}

void fillGifBackground(QByteArrayView file, QImage& pixels) {
  if (file.size() < kHeaderBytes) return;
  const auto frame = gifFirstFrame(file);
  if (!frame || frame->hasTransparency || frame->place.contains(pixels.rect())) return;
  const QColor color = background(file);
  if (color.alpha() == 0) pixels = std::move(pixels).convertToFormat(QImage::Format_ARGB32_Premultiplied);
  QPainter painter(&pixels);
  painter.setCompositionMode(QPainter::CompositionMode_Source);
  painter.setClipRegion(QRegion(pixels.rect()).subtracted(frame->place));
  painter.fillRect(pixels.rect(), color);
}

}  // namespace lumagrid
