#include "HeifRange.h"

#include <algorithm>
#include <cstring>
#include <limits>
#include <vector>

#include "HeifObjects.h"

namespace lumagrid {
namespace {

// What the file says beside the image; null when it leaves that to the image itself.
HeifNclx nclxOf(const heif_image_handle* handle) {
  heif_color_profile_nclx* found = nullptr;
  return HeifNclx(succeeded(heif_image_handle_get_nclx_color_profile(handle, &found)) ? found : nullptr);
}

bool isLimited(const heif_image_handle* handle, const heif_image* image) {
  HeifNclx nclx = nclxOf(handle);
  heif_color_profile_nclx* found = nullptr;
  if (!nclx && succeeded(heif_image_get_nclx_color_profile(image, &found))) nclx.reset(found);
  return nclx && nclx->full_range_flag == 0;
}

// The image in its stored channels where these may be of limited range; null otherwise, and when it fails.
HeifImage suspectImage(const heif_image_handle* handle) {
  const HeifNclx nclx = nclxOf(handle);
  if (nclx && nclx->full_range_flag != 0) return nullptr;
  const HeifOptions options(heif_decoding_options_alloc());
  heif_image* found = nullptr;
  const heif_error error =
      heif_decode_image(handle, &found, heif_colorspace_undefined, heif_chroma_undefined, options.get());
  return HeifImage(succeeded(error) ? found : nullptr);
}

// From black (16 of 255, or as much of more bits) to white (235) becomes from nothing to the largest value.
template <typename Sample>
Sample stretched(int value, int bits) {
  constexpr int kLargest = std::numeric_limits<Sample>::max();
  const int black = 16 << (bits - 8);
  const int range = 219 << (bits - 8);
  const std::int64_t light = std::clamp(value - black, 0, range);
  return static_cast<Sample>((light * kLargest + range / 2) / range);
}

template <typename Sample>
bool isGray(const QImage& pixels) {
  for (int y = 0; y < pixels.height(); ++y) {
    const auto* pixel = reinterpret_cast<const Sample*>(pixels.constScanLine(y));
    for (const Sample* const end = pixel + qsizetype{pixels.width()} * 4; pixel != end; pixel += 4) {
      if (pixel[0] != pixel[1] || pixel[0] != pixel[2]) return false;
    }
  }
  return true;
}

// Limited alpha comes to 235 of 255, and has a little more where much of the picture was thrown away.
template <typename Sample>
bool isNowhereOpaque(const QImage& pixels) {
  constexpr Sample kNearlyOpaque = std::numeric_limits<Sample>::max() / 255 * 245;
  for (int y = 0; y < pixels.height(); ++y) {
    const auto* pixel = reinterpret_cast<const Sample*>(pixels.constScanLine(y));
    for (int x = 0; x < pixels.width(); ++x) {
      if (pixel[x * 4 + 3] >= kNearlyOpaque) return false;
    }
  }
  return true;
}

template <typename Sample>
void stretchGray(const heif_image_handle* handle, QImage& pixels) {
  const HeifImage image = suspectImage(handle);
  if (!image || heif_image_get_colorspace(image.get()) != heif_colorspace_monochrome) return;
  if (!isLimited(handle, image.get())) return;
  int stride = 0;
  const uint8_t* plane = heif_image_get_plane_readonly(image.get(), heif_channel_Y, &stride);
  const int bits = heif_image_get_bits_per_pixel_range(image.get(), heif_channel_Y);
  const QSize size(heif_image_get_width(image.get(), heif_channel_Y),
                   heif_image_get_height(image.get(), heif_channel_Y));
  if (plane == nullptr || size != pixels.size() || bits < 8 || bits > 16) return;
  for (int y = 0; y < size.height(); ++y) {
    const uint8_t* from = plane + qsizetype{y} * stride;
    auto* to = reinterpret_cast<Sample*>(pixels.scanLine(y));
    for (int x = 0; x < size.width(); ++x, to += 4) {
      const int value = bits == 8 ? from[x] : reinterpret_cast<const std::uint16_t*>(from)[x];
      to[0] = to[1] = to[2] = stretched<Sample>(value, bits);
    }
  }
}

// The image that carries the alpha of another; null when there is none.
HeifHandle alphaOf(const heif_image_handle* handle) {
  const auto filter = static_cast<int>(LIBHEIF_AUX_IMAGE_FILTER_OMIT_DEPTH);
  const int count = heif_image_handle_get_number_of_auxiliary_images(handle, filter);
  std::vector<heif_item_id> ids(static_cast<size_t>(std::max(count, 0)));
  heif_image_handle_get_list_of_auxiliary_image_IDs(handle, filter, ids.data(), count);
  for (const heif_item_id id : ids) {
    heif_image_handle* found = nullptr;
    if (!succeeded(heif_image_handle_get_auxiliary_image_handle(handle, id, &found))) continue;
    HeifHandle auxiliary(found);
    const char* type = nullptr;
    if (!succeeded(heif_image_handle_get_auxiliary_type(found, &type))) continue;
    const bool isAlpha = std::strstr(type, "auxid:1") != nullptr || std::strstr(type, "alpha") != nullptr;
    heif_image_handle_free_auxiliary_types(found, &type);
    if (isAlpha) return auxiliary;
  }
  return nullptr;
}

template <typename Sample>
void stretchAlpha(const heif_image_handle* handle, QImage& pixels) {
  const HeifHandle alpha = alphaOf(handle);
  const HeifImage image = alpha ? suspectImage(alpha.get()) : nullptr;
  if (!image || !isLimited(alpha.get(), image.get())) return;
  const int bits = std::numeric_limits<Sample>::digits;
  for (int y = 0; y < pixels.height(); ++y) {
    auto* pixel = reinterpret_cast<Sample*>(pixels.scanLine(y));
    for (int x = 0; x < pixels.width(); ++x) pixel[x * 4 + 3] = stretched<Sample>(pixel[x * 4 + 3], bits);
  }
}

template <typename Sample>
void stretch(const heif_image_handle* handle, QImage& pixels) {
  if (isGray<Sample>(pixels)) stretchGray<Sample>(handle, pixels);
  if (pixels.hasAlphaChannel() && isNowhereOpaque<Sample>(pixels)) stretchAlpha<Sample>(handle, pixels);
}

}  // namespace

void stretchLimitedRange(const heif_image_handle* handle, QImage& pixels) {
  pixels.depth() == 64 ? stretch<std::uint16_t>(handle, pixels) : stretch<uchar>(handle, pixels);
}

}  // namespace lumagrid
