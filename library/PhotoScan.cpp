#include "PhotoScan.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <numeric>

#include "NameCollator.h"

namespace lumagrid {

namespace {

constexpr std::array<const char*, 11> kSupportedExtensions = {"jpg",  "jpeg", "png",  "gif", "webp", "bmp",
                                                              "avif", "heic", "heif", "tif", "tiff"};

bool hasSupportedExtension(QByteArrayView name) {
  const qsizetype dot = name.lastIndexOf('.');
  if (dot < 0) return false;
  const QByteArrayView extension = name.sliced(dot + 1);
  return std::any_of(kSupportedExtensions.begin(), kSupportedExtensions.end(), [extension](const char* supported) {
    return extension.compare(supported, Qt::CaseInsensitive) == 0;
  });
}

// A sort key with its first bytes at hand, so that most comparisons touch no other memory.
struct NameKey {
  std::uint64_t prefix;
  QByteArray bytes;
};

NameKey nameKey(const NameCollator& collator, const PhotoItem& photo) {
  NameKey key{0, collator.sortKey(photo.url.lastPathComponent())};
  unsigned char head[sizeof key.prefix] = {};
  std::memcpy(head, key.bytes.constData(),
              std::min<std::size_t>(sizeof head, static_cast<std::size_t>(key.bytes.size())));
  for (const unsigned char byte : head) key.prefix = key.prefix << 8 | byte;
  return key;
}

bool isBefore(const NameKey& left, const NameKey& right) {
  return left.prefix != right.prefix ? left.prefix < right.prefix : left.bytes < right.bytes;
}

}  // namespace

std::variant<std::vector<PhotoItem>, ListingError> photoItems(const FileUrl& folder) {
  auto listing = contentsOfDirectory(folder, hasSupportedExtension);
  if (auto* error = std::get_if<ListingError>(&listing)) return std::move(*error);
  const auto& entries = std::get<std::vector<FolderEntry>>(listing);
  std::vector<PhotoItem> photos;
  photos.reserve(entries.size());
  for (const FolderEntry& entry : entries) {
    if (entry.isRegularFile) photos.push_back({FileUrl::child(folder, entry.name)});
  }
  return photos;
}

std::int64_t modDate(const FileUrl& url) {
  return contentModificationDate(url);
}

std::vector<std::uint32_t> sortedPositions(const std::vector<PhotoItem>& photos, SortOrder order) {
  std::vector<std::uint32_t> positions(photos.size());
  std::iota(positions.begin(), positions.end(), 0U);
  const auto sortBy = [&](const auto& keys, auto&& before) {
    std::stable_sort(positions.begin(), positions.end(),
                     [&](std::uint32_t left, std::uint32_t right) { return before(keys[left], keys[right]); });
  };
  if (order == SortOrder::nameAscending || order == SortOrder::nameDescending) {
    const NameCollator collator;
    std::vector<NameKey> keys;
    keys.reserve(photos.size());
    for (const PhotoItem& photo : photos) keys.push_back(nameKey(collator, photo));
    if (order == SortOrder::nameAscending) {
      sortBy(keys, isBefore);
    } else {
      sortBy(keys, [](const NameKey& left, const NameKey& right) { return isBefore(right, left); });
    }
  } else {
    std::vector<std::int64_t> dates;
    dates.reserve(photos.size());
    for (const PhotoItem& photo : photos) dates.push_back(modDate(photo.url));
    if (order == SortOrder::dateNewest) {
      sortBy(dates, std::greater<>());
    } else {
      sortBy(dates, std::less<>());
    }
  }
  return positions;
}

}  // namespace lumagrid
