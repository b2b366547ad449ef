#include <QtEndian>
#include <algorithm>

#include "BmpFile.h"
#include "BmpRuns.h"
#include "ImageCodec.h"
#include "MemoryLimit.h"
#include "PictureFinishing.h"
#include "PictureMemory.h"
#include "PixelBuffer.h"

namespace lumagrid {
namespace {

void readIndices(const BmpFile& file, const uchar* from, uchar* to) {
  const int mask = (1 << file.bits) - 1;
  for (int x = 0; x < file.size.width(); ++x, to += 4) {
    const int bit = x * file.bits;
    const int index = from[bit / 8] >> (8 - file.bits - bit % 8) & mask;
    std::copy_n(file.palette[static_cast<size_t>(index)].data(), 4, to);
  }
}

void readTriples(const BmpFile& file, const uchar* from, uchar* to) {
  for (int x = 0; x < file.size.width(); ++x, from += 3, to += 4) {
    to[0] = from[2];
    to[1] = from[1];
    to[2] = from[0];
    to[3] = 255;
  }
}

// Channels as the masks say, each stretched so that its largest value is 255.
template <typename Pixel>
void readMasked(const BmpFile& file, const uchar* from, uchar* to) {
  std::array<int, 4> shifts{};
  std::array<float, 4> scales{};
  for (size_t channel = 0; channel < 4; ++channel) {
    const std::uint32_t mask = file.masks[channel];
    if (mask == 0) continue;
    while ((mask >> shifts[channel] & 1) == 0) ++shifts[channel];
    scales[channel] = 255 / static_cast<float>(mask >> shifts[channel]);
  }
  const float rest = file.masks[3] == 0 ? 255.5F : 0.5F;
  for (int x = 0; x < file.size.width(); ++x, from += sizeof(Pixel), to += 4) {
    const std::uint32_t pixel = qFromLittleEndian<Pixel>(from);
    for (size_t channel = 0; channel < 4; ++channel) {
      const auto value = static_cast<float>((pixel & file.masks[channel]) >> shifts[channel]);
      to[channel] = static_cast<uchar>(value * scales[channel] + (channel == 3 ? rest : 0.5F));
    }
  }
}

// The usual order of 32 bits, with the channels in bytes of their own.
void readBytes(const BmpFile& file, const uchar* from, uchar* to) {
  const uchar opaque = file.masks[3] == 0 ? 255 : 0;
  for (int x = 0; x < file.size.width(); ++x, from += 4, to += 4) {
    to[0] = from[2];
    to[1] = from[1];
    to[2] = from[0];
    to[3] = from[3] | opaque;
  }
}

// Linear light from 0 to 1 in steps of 1/8192, and beyond.
void readFixedPoint(const BmpFile& file, const uchar* from, uchar* to) {
  constexpr int kOne = 8192;
  auto* target = reinterpret_cast<std::uint16_t*>(to);
  for (int x = 0; x < file.size.width(); ++x, from += 8, target += 4) {
    for (const int channel : {0, 1, 2, 3}) {
      const int value = qFromLittleEndian<std::int16_t>(from + (channel == 3 ? 3 : 2 - channel) * 2);
      target[channel] = static_cast<std::uint16_t>(std::clamp(value, 0, kOne) * 65535 / kOne);
    }
  }
}

using RowReader = void (*)(const BmpFile& file, const uchar* from, uchar* to);

RowReader rowReaderFor(const BmpFile& file) {
  constexpr std::array<std::uint32_t, 4> kUsual = {0xff0000, 0xff00, 0xff, 0};
  constexpr std::array<std::uint32_t, 4> kUsualWithAlpha = {0xff0000, 0xff00, 0xff, 0xff000000};
  switch (file.bits) {
    case 16:
      return &readMasked<std::uint16_t>;
    case 24:
      return &readTriples;
    case 32:
      return file.masks == kUsual || file.masks == kUsualWithAlpha ? &readBytes : &readMasked<std::uint32_t>;
    case 64:
      return &readFixedPoint;
    default:
      return &readIndices;
  }
}

// Many a writer leaves the alpha that it announces at zero.
bool isInvisible(const QImage& pixels) {
  for (int y = 0; y < pixels.height(); ++y) {
    const uchar* row = pixels.constScanLine(y);
    for (int x = 0; x < pixels.width(); ++x) {
      if (row[x * 4 + 3] != 0) return false;
    }
  }
  return true;
}

void setOpaque(QImage& pixels) {
  for (int y = 0; y < pixels.height(); ++y) {
    uchar* row = pixels.scanLine(y);
    for (int x = 0; x < pixels.width(); ++x) row[x * 4 + 3] = 255;
  }
}

// Rows that the file does not have are transparent. Null without any.
QImage readRows(const BmpFile& file) {
  const bool hasAlpha = file.bits >= 16 && file.masks[3] != 0;
  QImage pixels = unsetPixels(file.size, file.bits == 64 ? QImage::Format_RGBA64
                                         : hasAlpha      ? QImage::Format_RGBA8888
                                                         : QImage::Format_RGBX8888);
  const std::int64_t rowBytes = (std::int64_t{file.size.width()} * file.bits + 7) / 8;
  const std::int64_t stride = (rowBytes + 3) / 4 * 4;
  const std::int64_t rowCount = (file.pixels.size() + stride - rowBytes) / stride;
  if (pixels.isNull() || rowCount == 0) return {};
  const RowReader read = rowReaderFor(file);
  const auto* from = reinterpret_cast<const uchar*>(file.pixels.data());
  for (int row = 0; row < file.size.height(); ++row) {
    uchar* to = pixels.scanLine(file.isTopDown ? row : file.size.height() - 1 - row);
    if (row < rowCount) {
      read(file, from + row * stride, to);
    } else {
      std::fill_n(to, pixels.bytesPerLine(), 0);
    }
  }
  if (hasAlpha && isInvisible(pixels)) setOpaque(pixels);
  if (!hasAlpha && file.bits < 64 && rowCount < file.size.height()) pixels.reinterpretAsFormat(QImage::Format_RGBA8888);
  return pixels;
}

// Whether the file can hold that many pixels. One cut short is shown while it has a sixteenth of them.
bool isCredible(const BmpFile& file) {
  const std::int64_t bits =
      file.packing == BmpPacking::none ? std::int64_t{file.size.width()} * file.size.height() * file.bits : 0;
  const std::int64_t bytes = file.pixels.size();
  return isPictureSizeCredible(file.size.width(), file.size.height(), 0) ||
         (isPictureSizeCredible(file.size.width(), file.size.height(), bytes) && bits / 8 / 16 <= bytes);
}

}  // namespace

// "BM" alone is too little: the size of the header that follows (12 to 124 bytes) decides.
bool isBmp(QByteArrayView head) {
  const bool isArray = head.startsWith("BA");
  if ((!isArray && !head.startsWith("BM")) || head.size() < 32) return false;
  const auto headerSize = qFromLittleEndian<std::uint32_t>(head.data() + (isArray ? 28 : 14));
  return headerSize >= 12 && headerSize <= 124;
}

DecodedImage decodeBmp(const CodecRequest& request) {
  const auto file = bmpFile(request.bytes);
  if (!file) return {{}, ImageError::damaged};
  if (file->packing == BmpPacking::jpeg) return decodeJpeg({file->pixels, request.bound});
  if (file->packing == BmpPacking::png) return decodePng({file->pixels, request.bound});
  if (!isPictureSizeSane(file->size.width(), file->size.height())) return {{}, ImageError::tooLarge};
  if (!isCredible(*file)) return {{}, ImageError::damaged};
  const std::int64_t pixelBytes = (file->bits == 64 ? 8 : 4) + 4;
  const std::int64_t pixels = std::int64_t{file->size.width()} * file->size.height();
  if (!claimMemory(request.bytes.size() + pixels * pixelBytes)) return {{}, ImageError::tooLarge};
  RawPicture picture;
  picture.metadata = file->metadata;
  picture.pixels = file->packing == BmpPacking::none ? readRows(*file) : bmpRuns(*file);
  return finishedPicture(std::move(picture), request.bound);
}

}  // namespace lumagrid
