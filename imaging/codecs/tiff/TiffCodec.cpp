#include <tiffio.h>

#include <algorithm>
#include <cstring>
#include <limits>
#include <memory>
#include <vector>

#include "ImageCodec.h"
#include "MemoryLimit.h"
#include "PictureFinishing.h"
#include "PictureMemory.h"
#include "PixelBuffer.h"
#include "TiffDirectory.h"
#include "TiffLayout.h"
#include "TiffSamples.h"

namespace lumagrid {
namespace {

// The file in memory, as the library sees it.
struct Source {
  QByteArrayView bytes;
  toff_t position = 0;

  static Source& of(thandle_t handle) { return *static_cast<Source*>(handle); }

  static tsize_t read(thandle_t handle, void* target, tsize_t count) {
    Source& source = of(handle);
    const auto size = static_cast<toff_t>(source.bytes.size());
    if (count <= 0 || source.position >= size) return 0;
    const auto got = std::min(static_cast<toff_t>(count), size - source.position);
    std::copy_n(source.bytes.data() + source.position, got, static_cast<char*>(target));
    source.position += got;
    return static_cast<tsize_t>(got);
  }
  static tsize_t write(thandle_t, void*, tsize_t) { return -1; }
  static toff_t seek(thandle_t handle, toff_t offset, int whence) {
    Source& source = of(handle);
    if (whence == SEEK_SET) source.position = offset;
    if (whence == SEEK_CUR) source.position += offset;
    if (whence == SEEK_END) source.position = static_cast<toff_t>(source.bytes.size()) + offset;
    return source.position;
  }
  static int close(thandle_t) { return 0; }
  static toff_t size(thandle_t handle) { return static_cast<toff_t>(of(handle).bytes.size()); }
  static int map(thandle_t handle, void** base, toff_t* size) {
    const QByteArrayView bytes = of(handle).bytes;
    *base = const_cast<char*>(bytes.data());
    *size = static_cast<toff_t>(bytes.size());
    return 1;
  }
  static void unmap(thandle_t, void*, toff_t) {}
};

using Tiff = std::unique_ptr<TIFF, decltype(&TIFFClose)>;

int ignoreMessage(TIFF*, void*, const char*, const char*, va_list) {
  return 1;
}

Tiff open(Source& source) {
  const std::unique_ptr<TIFFOpenOptions, decltype(&TIFFOpenOptionsFree)> options(TIFFOpenOptionsAlloc(),
                                                                                 &TIFFOpenOptionsFree);
  TIFFOpenOptionsSetErrorHandlerExtR(options.get(), &ignoreMessage, nullptr);
  TIFFOpenOptionsSetWarningHandlerExtR(options.get(), &ignoreMessage, nullptr);
  TIFFOpenOptionsSetMaxSingleMemAlloc(options.get(), static_cast<tmsize_t>(pictureByteLimit()));
  return {TIFFClientOpenExt("picture", "r", &source, &Source::read, &Source::write, &Source::seek, &Source::close,
                            &Source::size, &Source::map, &Source::unmap, options.get()),
          &TIFFClose};
}

// Where one strip or tile stands in the picture, in pixels.
struct Block {
  int left = 0;
  int top = 0;
  int width = 0;        // within the picture
  int height = 0;       // within the picture
  int storedWidth = 0;  // of its rows in memory
};

// Colours of a palette, by indices of 8 or 16 bits.
void copyIndices(const TiffLayout& layout, const uchar* from, int stored, uchar* to, int count) {
  for (int x = 0; x < count; ++x, to += 4) {
    std::uint16_t index = from[qsizetype{x} * stored];
    if (layout.type.bits == 16) std::memcpy(&index, from + qsizetype{x} * stored * 2, 2);
    std::copy_n(layout.palette[index].data(), 3, to);
  }
}

// Brings a and b from signed numbers, where the file has such, to those of ICC profiles, which count from -128.
template <typename Target>
void centerLab(const TiffLayout& layout, Target* to, int count) {
  constexpr int kSign = std::numeric_limits<Target>::max() / 2 + 1;
  constexpr int kLargest = std::numeric_limits<Target>::max();
  for (int x = 0; x < count; ++x, to += 4) {
    const int value = layout.hasSignedLab ? *to ^ kSign : *to;
    // With 16 bits, the file's unit is 1/256, and that of profiles 1/257.
    *to = static_cast<Target>(sizeof(Target) == 1 ? value : std::min(value + value / 256, kLargest));
  }
}

template <typename Target>
void copyBlock(const TiffLayout& layout, const Block& block, const uchar* samples, int plane, QImage& pixels) {
  const int stored = layout.isPlanar ? 1 : layout.samplesPerPixel;
  const qsizetype sampleBytes = layout.type.bits / 8;
  const int used = layout.colorCount + (layout.alpha == TiffAlpha::none ? 0 : 1);
  for (int y = 0; y < block.height; ++y) {
    const uchar* from = samples + qsizetype{y} * block.storedWidth * stored * sampleBytes;
    auto* row = reinterpret_cast<Target*>(pixels.scanLine(block.top + y)) + qsizetype{block.left} * 4;
    for (int index = 0; index < (layout.isPlanar ? 1 : used); ++index) {
      const int sample = layout.isPlanar ? plane : index;
      const bool isAlpha = sample >= layout.colorCount;
      Target* to = row + (isAlpha ? 3 : sample);
      if (!isAlpha && !layout.palette.empty()) {
        copyIndices(layout, from, stored, reinterpret_cast<uchar*>(row), block.width);
        continue;
      }
      scaleSamples(layout.type, from + index * sampleBytes, stored, to, 4, block.width);
      if (isAlpha) continue;
      if (layout.isInverted) {
        for (int x = 0; x < block.width; ++x) to[x * 4] = static_cast<Target>(~to[x * 4]);
      }
      if (layout.model == ColorModel::lab && sample > 0) centerLab(layout, to, block.width);
      if (layout.model != ColorModel::gray) continue;
      for (int x = 0; x < block.width; ++x) to[x * 4 + 1] = to[x * 4 + 2] = to[x * 4];
    }
  }
}

Block blockAt(TIFF* tiff, const TiffLayout& layout, std::uint32_t number, std::uint32_t blocksPerPlane) {
  Block block;
  std::uint32_t rows = 0;
  if (TIFFIsTiled(tiff)) {
    const auto width = tiffField<std::uint32_t>(tiff, TIFFTAG_TILEWIDTH, 1);
    rows = tiffField<std::uint32_t>(tiff, TIFFTAG_TILELENGTH, 1);
    const std::uint32_t across = (static_cast<std::uint32_t>(layout.size.width()) - 1) / width + 1;
    const std::uint32_t index = number % blocksPerPlane;
    block.left = static_cast<int>(index % across * width);
    block.top = static_cast<int>(index / across * rows);
    block.storedWidth = static_cast<int>(width);
  } else {
    rows = std::min(tiffField<std::uint32_t>(tiff, TIFFTAG_ROWSPERSTRIP, UINT32_MAX),
                    static_cast<std::uint32_t>(layout.size.height()));
    block.top = static_cast<int>(number % blocksPerPlane * rows);
    block.storedWidth = layout.size.width();
  }
  block.width = std::min(block.storedWidth, layout.size.width() - block.left);
  block.height = std::min(static_cast<int>(std::min<std::uint32_t>(rows, INT32_MAX)), layout.size.height() - block.top);
  return block;
}

// Null when not one block could be had; blocks that are damaged stay black.
QImage readSamples(TIFF* tiff, const TiffLayout& layout) {
  const bool isDeep = layout.type.bits > 8 && layout.model != ColorModel::cmyk && layout.palette.empty();
  constexpr QImage::Format kFormats[2][3] = {
      {QImage::Format_RGBX8888, QImage::Format_RGBA8888_Premultiplied, QImage::Format_RGBA8888},
      {QImage::Format_RGBX64, QImage::Format_RGBA64_Premultiplied, QImage::Format_RGBA64}};
  QImage pixels = unsetPixels(layout.size, kFormats[isDeep ? 1 : 0][static_cast<int>(layout.alpha)]);
  const bool isTiled = TIFFIsTiled(tiff) != 0;
  const auto blockBytes = static_cast<std::int64_t>(isTiled ? TIFFTileSize64(tiff) : TIFFStripSize64(tiff));
  if (pixels.isNull() || blockBytes <= 0 || blockBytes > pictureByteLimit()) return {};
  pixels.fill(Qt::black);

  const std::uint32_t blocks = isTiled ? TIFFNumberOfTiles(tiff) : TIFFNumberOfStrips(tiff);
  const int planes = layout.isPlanar ? layout.samplesPerPixel : 1;
  const std::uint32_t blocksPerPlane = std::max<std::uint32_t>(blocks / static_cast<std::uint32_t>(planes), 1);
  const int usedPlanes = std::min(planes, layout.colorCount + (layout.alpha == TiffAlpha::none ? 0 : 1));
  std::vector<uchar> samples(static_cast<size_t>(blockBytes));
  bool hasAny = false;
  for (std::uint32_t number = 0; number < blocks; ++number) {
    const int plane = static_cast<int>(number / blocksPerPlane);
    if (plane >= usedPlanes) break;
    const Block block = blockAt(tiff, layout, number, blocksPerPlane);
    if (block.width < 1 || block.height < 1 || block.left < 0 || block.top < 0) continue;
    const tmsize_t got = isTiled ? TIFFReadEncodedTile(tiff, number, samples.data(), blockBytes)
                                 : TIFFReadEncodedStrip(tiff, number, samples.data(), blockBytes);
    if (got <= 0) continue;
    const qsizetype rowBytes =
        qsizetype{block.storedWidth} * (layout.isPlanar ? 1 : layout.samplesPerPixel) * layout.type.bits / 8;
    if (rowBytes * block.height > blockBytes) continue;
    std::fill(samples.begin() + got, samples.end(), 0);
    hasAny = true;
    isDeep ? copyBlock<std::uint16_t>(layout, block, samples.data(), plane, pixels)
           : copyBlock<uchar>(layout, block, samples.data(), plane, pixels);
  }
  return hasAny ? pixels : QImage();
}

// The library's own way to RGBA. It stops where the data is damaged; what came until then is shown.
QImage readRgba(TIFF* tiff, QSize size) {
  QImage pixels = unsetPixels(size, QImage::Format_RGBA8888_Premultiplied);
  if (pixels.isNull()) return pixels;
  pixels.fill(Qt::transparent);
  auto* raster = reinterpret_cast<std::uint32_t*>(pixels.bits());
  TIFFSetField(tiff, TIFFTAG_ORIENTATION, ORIENTATION_TOPLEFT);  // turned later, like all others
  constexpr int kStopOnError = 1;
  const int status =
      TIFFReadRGBAImageOriented(tiff, static_cast<std::uint32_t>(size.width()),
                                static_cast<std::uint32_t>(size.height()), raster, ORIENTATION_TOPLEFT, kStopOnError);
  const qsizetype count = qsizetype{size.width()} * size.height();
  const bool hasAny =
      status == 1 || std::any_of(raster, raster + count, [](std::uint32_t pixel) { return pixel != 0; });
  return hasAny ? pixels : QImage();
}

// Of a strip or tile, of all pixels as they are read, and of the finished picture.
std::int64_t memoryOf(TIFF* tiff, const TiffLayout& layout) {
  const std::int64_t pixelBytes = layout.isDirect && layout.type.bits > 8 ? 8 : 4;
  const auto block = TIFFIsTiled(tiff) != 0 ? TIFFTileSize64(tiff) : TIFFStripSize64(tiff);
  const auto blockBytes = static_cast<std::int64_t>(std::min<std::uint64_t>(block, std::uint64_t{1} << 62));
  return blockBytes + std::int64_t{layout.size.width()} * layout.size.height() * (pixelBytes + 4);
}

PictureMetadata metadataOf(TIFF* tiff) {
  PictureMetadata metadata;
  const auto orientation = tiffField<std::uint16_t>(tiff, TIFFTAG_ORIENTATION, ORIENTATION_TOPLEFT);
  if (orientation >= ORIENTATION_TOPLEFT && orientation <= ORIENTATION_LEFTBOT) metadata.orientation = orientation;
  metadata.pixelAspect =
      pixelAspectOf(tiffField<float>(tiff, TIFFTAG_XRESOLUTION, 0), tiffField<float>(tiff, TIFFTAG_YRESOLUTION, 0));
  std::uint32_t profileBytes = 0;
  void* profile = nullptr;
  if (TIFFGetField(tiff, TIFFTAG_ICCPROFILE, &profileBytes, &profile) == 1 && profileBytes <= kLargestProfileBytes) {
    metadata.iccProfile = QByteArray(static_cast<const char*>(profile), static_cast<qsizetype>(profileBytes));
  }
  return metadata;
}

}  // namespace

bool isTiff(QByteArrayView head) {
  for (const char* const magic : {"II*\0", "MM\0*", "II+\0", "MM\0+"}) {  // little- and big-endian, TIFF and BigTIFF
    if (head.startsWith(QByteArrayView(magic, 4))) return true;
  }
  return false;
}

DecodedImage decodeTiff(const CodecRequest& request) {
  if (const ImageError refused = checkTiffDirectory(request.bytes); refused != ImageError::none) return {{}, refused};
  Source source{request.bytes};
  const Tiff tiff = open(source);
  if (!tiff) return {{}, ImageError::damaged};
  const std::int64_t width = tiffField<std::uint32_t>(tiff.get(), TIFFTAG_IMAGEWIDTH, 0);
  const std::int64_t height = tiffField<std::uint32_t>(tiff.get(), TIFFTAG_IMAGELENGTH, 0);
  if (width < 1 || height < 1) return {{}, ImageError::damaged};
  if (!isPictureSizeSane(width, height)) return {{}, ImageError::tooLarge};
  const QSize size(static_cast<int>(width), static_cast<int>(height));

  RawPicture picture;
  picture.metadata = metadataOf(tiff.get());
  const TiffLayout layout = tiffLayout(tiff.get(), size);
  if (!claimMemory(request.bytes.size() + memoryOf(tiff.get(), layout))) return {{}, ImageError::tooLarge};
  if (layout.isDirect) {
    if (layout.model == ColorModel::lab) picture.metadata.iccProfile = labProfile();
    picture.pixels = readSamples(tiff.get(), layout);
    picture.model = layout.model;
  } else {
    picture.pixels = readRgba(tiff.get(), size);
  }
  return finishedPicture(std::move(picture), request.bound);
}

}  // namespace lumagrid
