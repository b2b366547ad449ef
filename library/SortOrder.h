#pragma once

#include <QString>
#include <array>
#include <optional>

namespace lumagrid {

// The orders in which photos are shown.
enum class SortOrder { nameAscending, nameDescending, dateNewest, dateOldest };

inline constexpr std::array kAllSortOrders = {SortOrder::nameAscending, SortOrder::nameDescending,
                                              SortOrder::dateNewest, SortOrder::dateOldest};

// The same text in every language; in English also the title.
[[nodiscard]] QString rawValue(SortOrder order);
[[nodiscard]] QString menuTitle(SortOrder order);

// Nothing for any text that is not exactly a raw value.
[[nodiscard]] std::optional<SortOrder> sortOrderFromRawValue(const QString& text);

}  // namespace lumagrid
