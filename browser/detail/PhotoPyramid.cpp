#include "PhotoPyramid.h"

#include <algorithm>
#include <cstdint>

#include "ImageCache.h"

namespace lumagrid {

namespace {

QImage inTextureFormat(QImage photo) {
  if (photo.format() == QImage::Format_RGBX8888 || photo.format() == QImage::Format_RGBA8888_Premultiplied) {
    return photo;
  }
  return std::move(photo).convertToFormat(photo.hasAlphaChannel() ? QImage::Format_RGBA8888_Premultiplied
                                                                  : QImage::Format_RGBX8888);
}

// Of one picture in one size.
QByteArray fittedKey(const QImage& photo, QSize pixels) {
  return "fitted " + QByteArray::number(photo.cacheKey()) + ' ' + QByteArray::number(pixels.width()) + 'x' +
         QByteArray::number(pixels.height());
}

QSize halvedSize(QSize size) {
  return {(size.width() + 1) / 2, (size.height() + 1) / 2};
}

}  // namespace

PhotoPyramid::PhotoPyramid(QImage photo) : m_photo(inTextureFormat(std::move(photo))) {
  int levels = 1;
  for (QSize size = m_photo.size(); std::max(size.width(), size.height()) > kCoarsestSide; size = halvedSize(size)) {
    ++levels;
  }
  m_levels.resize(static_cast<std::size_t>(levels));
  m_levels[0] = m_photo;
}

QImage PhotoPyramid::level(int level) const {
  const std::scoped_lock lock(m_mutex);
  return m_levels.at(static_cast<std::size_t>(level));
}

bool PhotoPyramid::buildNextLevel(const std::stop_token& stop) {
  QImage finer;
  std::size_t next = 0;
  {
    const std::scoped_lock lock(m_mutex);
    while (next < m_levels.size() && !m_levels[next].isNull()) {
      ++next;
    }
    if (next == m_levels.size()) {
      return false;
    }
    finer = m_levels[next - 1];
  }
  QImage built = halved(finer, stop);
  if (built.isNull()) {
    return false;
  }
  const std::scoped_lock lock(m_mutex);
  m_levels[next] = std::move(built);
  return true;
}

QImage PhotoPyramid::fitted(QSize pixels) const {
  if (const auto kept = imageCache().object(fittedKey(m_photo, pixels))) {
    return *kept;
  }
  QImage source = m_photo;
  {
    const std::scoped_lock lock(m_mutex);
    for (std::size_t number = 0; number < m_levels.size(); ++number) {
      const QImage& level = m_levels[number];
      const bool isExact = level.size() * (1 << number) == m_photo.size();  // no texel reaches past the photo's edge
      if (isExact && level.width() >= 2 * pixels.width() && level.height() >= 2 * pixels.height()) {
        source = level;
      }
    }
  }
  return source.scaled(pixels, Qt::IgnoreAspectRatio, Qt::SmoothTransformation);
}

QImage keepFitted(const QImage& photo, QSize pixels) {
  if (photo.size() == pixels) {
    return photo;
  }
  QImage fitted = PhotoPyramid(photo).fitted(pixels);
  keepImage(fittedKey(photo, pixels), fitted);
  return fitted;
}

QImage halved(const QImage& image, const std::stop_token& stop) {
  QImage result(halvedSize(image.size()), image.format());
  // Two channels at a time in one word: four bytes and the rounding need ten bits each.
  constexpr std::uint32_t kEven = 0x00ff00ff;
  constexpr std::uint32_t kRounding = 0x00020002;
  const auto average = [](std::uint32_t a, std::uint32_t b, std::uint32_t c, std::uint32_t d) {
    const std::uint32_t even = ((a & kEven) + (b & kEven) + (c & kEven) + (d & kEven) + kRounding) >> 2 & kEven;
    const std::uint32_t odd =
        (((a >> 8 & kEven) + (b >> 8 & kEven) + (c >> 8 & kEven) + (d >> 8 & kEven) + kRounding) >> 2) & kEven;
    return even | odd << 8;
  };
  const std::size_t pairs = static_cast<std::size_t>(image.width()) / 2;
  for (int y = 0; y < result.height(); ++y) {
    if (stop.stop_requested()) {
      return {};
    }
    const auto* upper = reinterpret_cast<const std::uint32_t*>(image.constScanLine(2 * y));
    const auto* lower =
        reinterpret_cast<const std::uint32_t*>(image.constScanLine(std::min(2 * y + 1, image.height() - 1)));
    auto* out = reinterpret_cast<std::uint32_t*>(result.scanLine(y));
    for (std::size_t x = 0; x < pairs; ++x) {
      out[x] = average(upper[2 * x], upper[2 * x + 1], lower[2 * x], lower[2 * x + 1]);
    }
    if (image.width() % 2 != 0) {
      out[pairs] = average(upper[2 * pairs], upper[2 * pairs], lower[2 * pairs], lower[2 * pairs]);
    }
  }
  return result;
}

}  // namespace lumagrid
