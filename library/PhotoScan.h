#pragma once

#include <variant>
#include <vector>

#include "FileUrl.h"
#include "FolderListing.h"
#include "PhotoItem.h"
#include "SortOrder.h"

namespace lumagrid {

// The supported image files directly inside `folder`, in the order in which the system lists them: regular files, not
// hidden, by their extension alone. One read of the folder; a listing that fails has no partial result. Any thread.
[[nodiscard]] std::variant<std::vector<PhotoItem>, ListingError> photoItems(const FileUrl& folder);

// A folder's photos with what is already known of their order, so that it can be made ahead of its use on any thread.
struct FolderScan {
  std::variant<std::vector<PhotoItem>, ListingError> listing;
  std::vector<std::uint32_t> byName;  // sortedPositions() of nameAscending; empty: not known
};

// The time of the last change of a photo's content; kDistantPast when it cannot be read. Any thread.
[[nodiscard]] std::int64_t modDate(const FileUrl& url);

// The positions of `photos` in the order asked for: result[0] is the position of the photo that comes first. Stable;
// each name's sort key is made, and each date is read, once, on all cores for a large folder. Any thread.
[[nodiscard]] std::vector<std::uint32_t> sortedPositions(const std::vector<PhotoItem>& photos, SortOrder order);

}  // namespace lumagrid
