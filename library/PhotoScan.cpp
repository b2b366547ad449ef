#include "PhotoScan.h"

#include <QtEndian>
#include <algorithm>
#include <array>
#include <functional>
#include <memory>
#include <numeric>

#include "NameCollator.h"
#include "WorkerPool.h"

namespace lumagrid {

namespace {

// Of all formats, each followed by a space.
constexpr char kExtensions[] =
#define LUMAGRID_FORMAT(identifier, names, extensions, ...) extensions " "
#include "PictureFormats.def"
    ;

bool hasSupportedExtension(QByteArrayView name) {
  const qsizetype dot = name.lastIndexOf('.');
  if (dot < 0) return false;
  static const QList<QByteArray> supported = QByteArray(kExtensions).trimmed().split(' ');
  return std::any_of(supported.begin(), supported.end(), [extension = name.sliced(dot + 1)](const QByteArray& known) {
    return extension.compare(known, Qt::CaseInsensitive) == 0;
  });
}

// Fills `values[i]` from `photos[i]`; `makeValue()` gives each share of them its own function of a photo.
template <typename Value, typename MakeValue>
void fillInParallel(std::vector<Value>& values, const std::vector<PhotoItem>& photos, const MakeValue& makeValue) {
  constexpr std::size_t kShare = 4096;  // less is not worth the start of a thread
  parallelFor(static_cast<int>((photos.size() + kShare - 1) / kShare), [&](int index) {
    const std::size_t begin = static_cast<std::size_t>(index) * kShare;
    auto value = makeValue();
    for (std::size_t i = begin; i < std::min(begin + kShare, photos.size()); ++i) values[i] = value(photos[i]);
  });
}

// The first eight bytes of `key` from `offset` on, as a number that orders as they do.
std::uint64_t headOf(const QByteArray& key, qsizetype offset) {
  std::array<char, sizeof(std::uint64_t)> head = {};
  if (offset < key.size()) {
    std::copy_n(key.constData() + offset, std::min(key.size() - offset, qsizetype{head.size()}), head.data());
  }
  return qFromBigEndian<std::uint64_t>(head.data());
}

qsizetype commonPrefix(const std::vector<QByteArray>& keys) {
  qsizetype length = keys.empty() ? 0 : keys.front().size();
  for (const QByteArray& key : keys) {
    const char* const end = key.constData() + std::min(length, key.size());
    length = std::mismatch(key.constData(), end, keys.front().constData()).first - key.constData();
  }
  return length;
}

// The positions of `keys` in the order of `before`. Names in a folder mostly begin alike ("IMG_"), so the bytes that
// follow are put next to the positions: hardly a comparison then touches other memory.
template <typename Before>
std::vector<std::uint32_t> sortedByBytes(const std::vector<QByteArray>& keys, const Before& before) {
  struct Rank {
    std::uint64_t head;
    std::uint32_t position;
  };
  const qsizetype offset = commonPrefix(keys);
  std::vector<Rank> ranks;
  ranks.reserve(keys.size());
  for (const QByteArray& key : keys) {
    ranks.push_back({headOf(key, offset), static_cast<std::uint32_t>(ranks.size())});
  }
  std::stable_sort(ranks.begin(), ranks.end(), [&](const Rank& left, const Rank& right) {
    return left.head != right.head ? before(left.head, right.head) : before(keys[left.position], keys[right.position]);
  });
  std::vector<std::uint32_t> positions(ranks.size());
  std::transform(ranks.begin(), ranks.end(), positions.begin(), [](const Rank& rank) { return rank.position; });
  return positions;
}

std::vector<QByteArray> nameKeys(const std::vector<PhotoItem>& photos) {
  std::vector<QByteArray> keys(photos.size());
  fillInParallel(keys, photos, [] {
    return [collator = std::make_unique<NameCollator>()](const PhotoItem& photo) {
      return collator->sortKey(photo.url.lastPathComponent());
    };
  });
  return keys;
}

template <typename Before>
std::vector<std::uint32_t> sortedByDate(const std::vector<std::int64_t>& dates, const Before& before) {
  std::vector<std::uint32_t> positions(dates.size());
  std::iota(positions.begin(), positions.end(), 0U);
  std::stable_sort(positions.begin(), positions.end(),
                   [&](std::uint32_t left, std::uint32_t right) { return before(dates[left], dates[right]); });
  return positions;
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
  if (order == SortOrder::nameAscending || order == SortOrder::nameDescending) {
    const std::vector<QByteArray> keys = nameKeys(photos);
    return order == SortOrder::nameAscending ? sortedByBytes(keys, std::less<>())
                                             : sortedByBytes(keys, std::greater<>());
  }
  std::vector<std::int64_t> dates(photos.size());
  fillInParallel(dates, photos, [] { return [](const PhotoItem& photo) { return modDate(photo.url); }; });
  return order == SortOrder::dateNewest ? sortedByDate(dates, std::greater<>()) : sortedByDate(dates, std::less<>());
}

}  // namespace lumagrid
