#include "PhotoScan.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <memory>
#include <numeric>
#include <thread>

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

// Fills `values[i]` from `photos[i]`; `makeValue()` gives each thread its own function of a photo.
template <typename Value, typename MakeValue>
void fillInParallel(std::vector<Value>& values, const std::vector<PhotoItem>& photos, const MakeValue& makeValue) {
  constexpr std::size_t kLeastPerThread = 4096;  // below, starting a thread costs more than it saves
  const std::size_t cores = std::max(1U, std::thread::hardware_concurrency());
  const std::size_t share = std::max(kLeastPerThread, (photos.size() + cores - 1) / cores);
  const auto fill = [&](std::size_t begin) {
    auto value = makeValue();
    for (std::size_t i = begin; i < std::min(begin + share, photos.size()); ++i) values[i] = value(photos[i]);
  };
  std::vector<std::thread> threads;
  for (std::size_t begin = share; begin < photos.size(); begin += share) threads.emplace_back(fill, begin);
  fill(0);
  for (std::thread& thread : threads) thread.join();
}

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
  std::vector<PhotoItem> photos;
  auto error = visitDirectory(folder, hasSupportedExtension, [&](QByteArrayView name, bool isRegularFile) {
    if (isRegularFile) photos.push_back({FileUrl::child(folder, name)});
  });
  if (error) return *std::move(error);
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
    std::vector<NameKey> keys(photos.size());
    fillInParallel(keys, photos, [] {
      return
          [collator = std::make_unique<NameCollator>()](const PhotoItem& photo) { return nameKey(*collator, photo); };
    });
    if (order == SortOrder::nameAscending) {
      sortBy(keys, isBefore);
    } else {
      sortBy(keys, [](const NameKey& left, const NameKey& right) { return isBefore(right, left); });
    }
  } else {
    std::vector<std::int64_t> dates(photos.size());
    fillInParallel(dates, photos, [] { return [](const PhotoItem& photo) { return modDate(photo.url); }; });
    if (order == SortOrder::dateNewest) {
      sortBy(dates, std::greater<>());
    } else {
      sortBy(dates, std::less<>());
    }
  }
  return positions;
}

}  // namespace lumagrid
