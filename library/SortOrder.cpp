#include "SortOrder.h"

namespace lumagrid {

QString rawValue(SortOrder order) {
  switch (order) {
    case SortOrder::nameAscending:
      return QStringLiteral("Name A\u2013Z");
    case SortOrder::nameDescending:
      return QStringLiteral("Name Z\u2013A");
    case SortOrder::dateNewest:
      return QStringLiteral("Newest First");
    case SortOrder::dateOldest:
      return QStringLiteral("Oldest First");
  }
  Q_UNREACHABLE();
}

std::optional<SortOrder> sortOrderFromRawValue(const QString& text) {
  for (const SortOrder order : kAllSortOrders) {
    if (rawValue(order) == text) return order;
  }
  return std::nullopt;
}

}  // namespace lumagrid
