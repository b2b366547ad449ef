#include <libheif/heif.h>

#include <QtEndian>
#include <algorithm>
#include <array>
#include <cmath>

#include "HeifCheck.h"
#include "HeifObjects.h"
#include "HeifRange.h"
#include "IccProfile.h"
#include "ImageCodec.h"
#include "MemoryLimit.h"
#include "PictureFinishing.h"
#include "PixelBuffer.h"

namespace lumagrid {
namespace {

ImageError kindOf(const heif_error& error) {
  return error.code == heif_error_Memory_allocation_error ? ImageError::tooLarge : ImageError::damaged;
}

QByteArray profileOf(const heif_image_handle* handle, const heif_image* image) {
  const size_t size = heif_image_handle_get_raw_color_profile_size(handle);
  if (size > 0 && size <= static_cast<size_t>(kLargestProfileBytes)) {
    QByteArray bytes(static_cast<qsizetype>(size), Qt::Uninitialized);
    if (succeeded(heif_image_handle_get_raw_color_profile(handle, bytes.data()))) return bytes;
  }
  heif_color_profile_nclx* found = nullptr;
  if (!succeeded(heif_image_handle_get_nclx_color_profile(handle, &found)) &&
      !succeeded(heif_image_get_nclx_color_profile(image, &found))) {
    return {};
  }
  const HeifNclx nclx(found);
  return iccProfileOf(CicpColors{nclx->color_primaries, nclx->transfer_characteristics});
}

// Widens samples of `bits` bits so that the largest value stays the largest.
void widenRow(const std::uint16_t* from, std::uint16_t* to, qsizetype count, int bits) {
  const std::uint32_t largest = (1U << bits) - 1;
  for (qsizetype at = 0; at < count; ++at) {
    to[at] = static_cast<std::uint16_t>((std::min<std::uint32_t>(from[at], largest) * 65535U + largest / 2) / largest);
  }
}

QImage pixelsOf(const heif_image* image, QImage::Format format) {
  const int width = heif_image_get_width(image, heif_channel_interleaved);
  const int height = heif_image_get_height(image, heif_channel_interleaved);
  int stride = 0;
  const uint8_t* plane = heif_image_get_plane_readonly(image, heif_channel_interleaved, &stride);
  if (plane == nullptr || !isPictureSizeSane(width, height)) return {};
  QImage pixels = unsetPixels({width, height}, format);
  if (pixels.isNull()) return pixels;
  const bool isDeep = pixels.depth() == 64;
  const int bits = heif_image_get_bits_per_pixel_range(image, heif_channel_interleaved);
  if (isDeep && (bits < 9 || bits > 16)) return {};
  for (int y = 0; y < height; ++y) {
    const uint8_t* row = plane + qsizetype{y} * stride;
    if (isDeep) {
      widenRow(reinterpret_cast<const std::uint16_t*>(row), reinterpret_cast<std::uint16_t*>(pixels.scanLine(y)),
               qsizetype{width} * 4, bits);
    } else {
      std::copy_n(row, qsizetype{width} * 4, pixels.scanLine(y));
    }
  }
  return pixels;
}

QImage::Format formatOf(const heif_image_handle* handle, bool isDeep) {
  if (!heif_image_handle_has_alpha_channel(handle)) {
    return isDeep ? QImage::Format_RGBX64 : QImage::Format_RGBX8888;
  }
  if (heif_image_handle_is_premultiplied_alpha(handle)) {
    return isDeep ? QImage::Format_RGBA64_Premultiplied : QImage::Format_RGBA8888_Premultiplied;
  }
  return isDeep ? QImage::Format_RGBA64 : QImage::Format_RGBA8888;
}

}  // namespace

// A file type box that names a still or moving picture format, as its main brand or among the compatible ones.
bool isHeif(QByteArrayView head) {
  constexpr std::array<QByteArrayView, 13> kBrands = {"heic", "heix", "hevc", "hevx", "heim", "heis", "hevm",
                                                      "hevs", "mif1", "mif2", "msf1", "avif", "avis"};
  if (head.size() < 16 || head.sliced(4, 4) != QByteArrayView("ftyp")) return false;
  const qsizetype boxEnd = std::min<qsizetype>(qFromBigEndian<std::uint32_t>(head.data()), head.size());
  for (qsizetype at = 8; at + 4 <= boxEnd; at += 4) {
    if (at == 12) continue;  // the minor version
    if (std::find(kBrands.begin(), kBrands.end(), head.sliced(at, 4)) != kBrands.end()) return true;
  }
  return false;
}

// The primary image, be it one, a grid or the first of a sequence. The library turns, mirrors and crops as the file's
// own properties say, so that an orientation in EXIF data is a copy of what was done already.
DecodedImage decodeHeif(const CodecRequest& request) {
  if (const ImageError refused = checkHeif(request.bytes); refused != ImageError::none) return {{}, refused};
  const HeifContext context(heif_context_alloc());
  if (!context) return {{}, ImageError::tooLarge};
  const qsizetype mostPixels = pictureByteLimit() / 4;
  heif_context_set_maximum_image_size_limit(context.get(),
                                            static_cast<int>(std::sqrt(static_cast<double>(mostPixels))));
  heif_error error = heif_context_read_from_memory_without_copy(context.get(), request.bytes.data(),
                                                                static_cast<size_t>(request.bytes.size()), nullptr);
  if (!succeeded(error)) return {{}, kindOf(error)};
  heif_image_handle* foundHandle = nullptr;
  error = heif_context_get_primary_image_handle(context.get(), &foundHandle);
  if (!succeeded(error)) return {{}, kindOf(error)};
  const HeifHandle handle(foundHandle);
  if (!isPictureSizeSane(heif_image_handle_get_width(handle.get()), heif_image_handle_get_height(handle.get()))) {
    return {{}, ImageError::tooLarge};
  }

  const bool isDeep = heif_image_handle_get_luma_bits_per_pixel(handle.get()) > 8;
  const HeifOptions options(heif_decoding_options_alloc());
  heif_image* foundImage = nullptr;
  error = heif_decode_image(handle.get(), &foundImage, heif_colorspace_RGB,
                            isDeep ? heif_chroma_interleaved_RRGGBBAA_LE : heif_chroma_interleaved_RGBA, options.get());
  if (!succeeded(error)) return {{}, kindOf(error)};
  HeifImage image(foundImage);

  RawPicture picture;
  picture.pixels = pixelsOf(image.get(), formatOf(handle.get(), isDeep));
  picture.metadata.iccProfile = profileOf(handle.get(), image.get());
  image.reset();
  if (!picture.pixels.isNull()) stretchLimitedRange(handle.get(), picture.pixels);
  return finishedPicture(std::move(picture), request.bound);
}

}  // namespace lumagrid
