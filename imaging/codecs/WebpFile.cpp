#include "WebpFile.h"

#include <QSize>
#include <QtEndian>
#include <algorithm>
#include <optional>

namespace lumagrid {
namespace {

constexpr qsizetype kChunkHeader = 8;

// As far as the file goes.
struct Chunk {
  QByteArrayView name;
  QByteArrayView content;
  bool isWhole = false;
};

std::optional<Chunk> takeChunk(QByteArrayView& rest) {
  if (rest.size() < kChunkHeader) return std::nullopt;
  const qsizetype length = qFromLittleEndian<std::uint32_t>(rest.data() + 4);
  const qsizetype within = std::min(length, rest.size() - kChunkHeader);
  const Chunk chunk{rest.first(4), rest.sliced(kChunkHeader, within), within == length};
  rest = rest.sliced(std::min(kChunkHeader + length + length % 2, rest.size()));
  return chunk;
}

// Little-endian; of 24 bits, and one less than what is meant.
int sideAt(QByteArrayView bytes, qsizetype at) {
  const auto byte = [bytes, at](qsizetype index) { return static_cast<int>(static_cast<uchar>(bytes[at + index])); };
  return 1 + (byte(0) | byte(1) << 8 | byte(2) << 16);
}

// As the pixels say themselves; nothing for other chunks.
std::optional<QSize> sizeOfPixels(const Chunk& chunk) {
  constexpr qsizetype kLossyHeader = 10;
  constexpr qsizetype kLosslessHeader = 5;
  if (chunk.name == QByteArrayView("VP8 ") && chunk.content.size() >= kLossyHeader) {
    const auto side = [&chunk](qsizetype at) {
      return qFromLittleEndian<std::uint16_t>(chunk.content.data() + at) & 0x3fff;
    };
    return QSize(side(6), side(8));
  }
  if (chunk.name == QByteArrayView("VP8L") && chunk.content.size() >= kLosslessHeader) {
    const auto bits = qFromLittleEndian<std::uint32_t>(chunk.content.data() + 1);
    return QSize(1 + static_cast<int>(bits & 0x3fff), 1 + static_cast<int>(bits >> 14 & 0x3fff));
  }
  return std::nullopt;
}

}  // namespace

bool isWebpCredible(QByteArrayView file) {
  constexpr qsizetype kFileHeader = 12;
  constexpr qsizetype kFrameHeader = 16;
  constexpr qsizetype kCanvasEnd = 10;
  QByteArrayView rest = file.sliced(std::min(kFileHeader, file.size()));
  std::optional<QSize> canvas;
  bool isFrame = false;
  while (const auto chunk = takeChunk(rest)) {
    if (const auto size = sizeOfPixels(*chunk)) {
      if (!chunk->isWhole) return false;
      const bool isWithin = canvas && size->width() <= canvas->width() && size->height() <= canvas->height();
      return !canvas || (isFrame ? isWithin : *size == *canvas);
    }
    if (chunk->name == QByteArrayView("VP8X") && chunk->content.size() >= kCanvasEnd && !canvas) {
      canvas = QSize(sideAt(chunk->content, 4), sideAt(chunk->content, 7));
    } else if (chunk->name == QByteArrayView("ANMF") && chunk->content.size() >= kFrameHeader && !isFrame) {
      isFrame = true;
      rest = QByteArrayView(chunk->content.data() + kFrameHeader, file.data() + file.size());
    }
  }
  return false;
}

}  // namespace lumagrid
