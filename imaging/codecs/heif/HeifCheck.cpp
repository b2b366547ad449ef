#include "HeifCheck.h"

#include <QtEndian>
#include <algorithm>
#include <limits>
#include <set>

#include "HeifBoxes.h"
#include "HeifCodedSize.h"
#include "MemoryLimit.h"
#include "PictureMemory.h"

namespace lumagrid {
namespace {

bool isCoded(const HeifItem& item) {
  return item.type == QByteArrayView("hvc1") || item.type == QByteArrayView("av01");
}

// Nothing when it has no sound sequence header.
std::optional<HeifCodedSize> codedSize(const HeifItem& item) {
  if (item.configurations.size() != 1) return std::nullopt;
  const auto sizeOf = item.type == QByteArrayView("hvc1") ? &hevcCodedSize : &av1CodedSize;
  const QByteArray data = item.data();
  return sizeOf(item.configurations.front(), data);
}

// Adds up what the items of one picture cost.
class Checker {
 public:
  explicit Checker(const HeifBoxes& boxes) : m_boxes(boxes) {}

  // The picture that is shown, and all items that its decoding leads to.
  ImageError check() {
    Ids shown = {m_boxes.primary};
    if (const ImageError error = checkPicture(m_boxes.primary, shown); error != ImageError::none) return error;
    Ids alphas = alphasOf(shown);
    m_hasAlpha = !alphas.empty();
    for (const std::uint32_t id : Ids(alphas)) {
      if (const ImageError error = checkPicture(id, alphas); error != ImageError::none) return error;
    }
    if (!alphasOf(alphas).empty()) return ImageError::damaged;
    return reach(1, 1) ? ImageError::none : ImageError::tooLarge;  // with the depth of all
  }

  // Of the planes, of all four channels in one, and of the finished picture.
  [[nodiscard]] std::int64_t bytes() const {
    const std::int64_t sampleBytes = m_bits > 8 ? 2 : 1;
    const std::int64_t ofPlanes = (m_isSubsampled ? 2 : 3) + (m_hasAlpha ? 1 : 0);
    return m_width * m_height * (sampleBytes * (ofPlanes + 4) + 4);
  }

 private:
  using Ids = std::set<std::uint32_t>;

  [[nodiscard]] Ids alphasOf(const Ids& ids) const {
    Ids alphas;
    for (const auto& [id, item] : m_boxes.items) {
      if (item.isAlpha && ids.contains(item.auxiliaryOf)) alphas.insert(id);
    }
    return alphas;
  }

  [[nodiscard]] const HeifItem* itemOf(std::uint32_t id) const {
    const auto found = m_boxes.items.find(id);
    return found == m_boxes.items.end() ? nullptr : &found->second;
  }

  // A coded item, or one that is put together from such; those are added to `items`.
  ImageError checkPicture(std::uint32_t id, Ids& items) {
    const HeifItem* const item = itemOf(id);
    if (item == nullptr || item->transforms > kMostTransforms) return ImageError::damaged;
    if (isCoded(*item)) return checkCoded(*item);
    const bool isOverlay = item->type == QByteArrayView("iovl");
    if (item->type != QByteArrayView("grid") && !isOverlay) return ImageError::unsupported;
    constexpr std::size_t kMostSources = 8192;
    if (item->sources.size() > kMostSources) return ImageError::damaged;
    for (const std::uint32_t source : item->sources) {
      const HeifItem* const part = itemOf(source);
      if (part == nullptr || !isCoded(*part) || part->transforms > kMostTransforms) return ImageError::damaged;
      if (!items.insert(source).second) continue;
      if (const ImageError error = checkCoded(*part); error != ImageError::none) return error;
    }
    return isOverlay ? checkOverlay(*item) : checkGrid(*item);
  }

  ImageError checkCoded(const HeifItem& item) {
    const auto size = codedSize(item);
    if (!size) return ImageError::damaged;
    const std::int64_t unit = item.type == QByteArrayView("hvc1") ? 64 : 8;  // to which sides are rounded up
    const auto isAbove = [unit](std::int64_t coded, std::int64_t said) { return said > 0 && coded >= said + unit; };
    if (isAbove(size->width, item.width) || isAbove(size->height, item.height)) return ImageError::damaged;
    m_bits = std::max(m_bits, size->bits);
    m_isSubsampled = m_isSubsampled && size->isSubsampled;
    const bool isReached = reach(size->widthInReach, size->heightInReach) && reach(item.width, item.height);
    return isReached ? ImageError::none : ImageError::tooLarge;
  }

  // Of 16 or 32 bits, as the flags at the beginning of `data` say; 0 behind its end.
  static std::int64_t numberAt(const QByteArray& data, qsizetype start, qsizetype index) {
    const bool isLong = data.size() > 1 && (data[1] & 1) != 0;
    const qsizetype at = start + index * (isLong ? 4 : 2);
    if (at + (isLong ? 4 : 2) > data.size()) return 0;
    if (isLong) return qFromBigEndian<std::int32_t>(data.constData() + at);
    return qFromBigEndian<std::uint16_t>(data.constData() + at);
  }

  // A version, flags, rows and columns less one, width and height. The tiles stand side by side.
  ImageError checkGrid(const HeifItem& grid) {
    const QByteArray data = grid.data();
    const std::int64_t width = numberAt(data, 4, 0);
    const std::int64_t height = numberAt(data, 4, 1);
    if (width < 1 || height < 1) return ImageError::damaged;
    const std::size_t tiles = (std::size_t{static_cast<uchar>(data[2])} + 1) * (static_cast<uchar>(data[3]) + 1U);
    if (grid.sources.size() < tiles) return ImageError::damaged;
    std::int64_t area = 0;
    for (const std::uint32_t source : grid.sources) {
      const HeifItem& tile = *itemOf(source);
      area += tile.width * tile.height;
    }
    constexpr std::int64_t kTilesOnTrust = std::int64_t{1} << 20;  // pixels that stand over the edge of small ones
    if (area / 4 > width * height + kTilesOnTrust) return ImageError::damaged;
    return reach(width, height) ? ImageError::none : ImageError::tooLarge;
  }

  // A version, flags, four numbers of 16 bits for the background, width and height, and the place of each part. All
  // parts must lie within: what stands over the edge makes the library read past their ends.
  ImageError checkOverlay(const HeifItem& overlay) {
    constexpr qsizetype kSizeAt = 10;
    constexpr std::size_t kMostParts = 16;
    const QByteArray data = overlay.data();
    const std::int64_t width = numberAt(data, kSizeAt, 0);
    const std::int64_t height = numberAt(data, kSizeAt, 1);
    if (width < 1 || height < 1 || overlay.sources.size() > kMostParts) return ImageError::damaged;
    for (std::size_t index = 0; index < overlay.sources.size(); ++index) {
      const HeifItem& part = *itemOf(overlay.sources[index]);
      const qsizetype place = 2 + 2 * static_cast<qsizetype>(index);
      const std::int64_t left = numberAt(data, kSizeAt, place);
      const std::int64_t top = numberAt(data, kSizeAt, place + 1);
      const HeifCodedSize size = *codedSize(part);
      const bool isWithin = left >= 0 && top >= 0 && left + std::max(part.width, size.width) <= width &&
                            top + std::max(part.height, size.height) <= height;
      if (!isWithin || part.transforms > 0) return ImageError::unsupported;
    }
    return reach(width, height) ? ImageError::none : ImageError::tooLarge;
  }

  // Counts a picture of a size. False where its pixels could take 2 GiB, which the library computes with.
  bool reach(std::int64_t width, std::int64_t height) {
    constexpr std::int64_t kAlignment = 64;
    if (width < 0 || height < 0) return false;
    if (width > 0 && height > 0 && !isPictureSizeSane(width, height)) return false;
    m_width = std::max(m_width, width);
    m_height = std::max(m_height, height);
    const std::int64_t pixelBytes = m_bits > 8 ? 8 : 4;
    return (m_width + kAlignment) * (m_height + kAlignment) < std::numeric_limits<std::int32_t>::max() / pixelBytes;
  }

  static constexpr int kMostTransforms = 8;  // each passes over all pixels

  const HeifBoxes& m_boxes;
  std::int64_t m_width = 0;  // the largest of all
  std::int64_t m_height = 0;
  int m_bits = 8;
  bool m_isSubsampled = true;
  bool m_hasAlpha = false;
};

}  // namespace

ImageError checkHeif(QByteArrayView file) {
  const auto boxes = heifBoxes(file);
  if (!boxes) return ImageError::damaged;
  Checker checker(*boxes);
  if (const ImageError error = checker.check(); error != ImageError::none) return error;
  return claimMemory(file.size() + checker.bytes()) ? ImageError::none : ImageError::tooLarge;
}

}  // namespace lumagrid
