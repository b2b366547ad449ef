#include "SortOrder.h"

#include <QCoreApplication>

namespace lumagrid {

namespace {

const char* englishTitle(SortOrder order) {
  switch (order) {
    case SortOrder::nameAscending:
      return QT_TRANSLATE_NOOP("SortOrder", "Name A\u2013Z");
    case SortOrder::nameDescending:
      return QT_TRANSLATE_NOOP("SortOrder", "Name Z\u2013A");
    case SortOrder::dateNewest:
      return QT_TRANSLATE_NOOP("SortOrder", "Newest First");
    case SortOrder::dateOldest:
      return QT_TRANSLATE_NOOP("SortOrder", "Oldest First");
  }
  Q_UNREACHABLE();
}

}  // namespace

QString rawValue(SortOrder order) {
  return QString::fromUtf8(englishTitle(order));
}

QString menuTitle(SortOrder order) {
  return QCoreApplication::translate("SortOrder", englishTitle(order));
}

std::optional<SortOrder> sortOrderFromRawValue(const QString& text) {
  for (const SortOrder order : kAllSortOrders) {
    if (rawValue(order) == text) return order;
  }
  return std::nullopt;
}

}  // namespace lumagrid
