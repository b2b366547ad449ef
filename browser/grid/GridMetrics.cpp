#include "GridMetrics.h"

#include <algorithm>
#include <cmath>

namespace lumagrid {

namespace {

constexpr double kSpacing = 14;
constexpr double kPadding = 24;
constexpr double kLeastExtent = 200;  // left for tiles on each axis
constexpr double kLeastCellSide = 88;

}  // namespace

GridMetrics GridMetrics::fitting(QSizeF stage, std::int64_t dimension) {
  const auto n = static_cast<double>(dimension);
  const auto extent = [n](double length) {
    return std::max(kLeastExtent, (length - 2 * kPadding) - (n - 1) * kSpacing);
  };
  const double side = std::min(extent(stage.width()) / n, extent(stage.height()) / n);
  return {std::max(kLeastCellSide, std::floor(side)), kSpacing, QMarginsF(kPadding, kPadding, kPadding, kPadding)};
}

double GridLayout::contentHeight() const {
  if (count == 0) return 0;
  return metrics.padding.top() + static_cast<double>(rows()) * rowPitch() - metrics.spacing + metrics.padding.bottom();
}

QRectF GridLayout::tileRect(std::int64_t index) const {
  const double gridWidth = static_cast<double>(columns) * rowPitch() - metrics.spacing;
  const double left = std::floor((viewport.width() - gridWidth) / 2);
  const std::int64_t row = index / columns;
  const std::int64_t column = index % columns;
  return {left + static_cast<double>(column) * rowPitch(),
          metrics.padding.top() + static_cast<double>(row) * rowPitch(), metrics.cellSide, metrics.cellSide};
}

std::pair<std::int64_t, std::int64_t> GridLayout::visibleIndices(double contentY) const {
  const double top = contentY - metrics.padding.top();
  const auto row = [this](double y) {
    return static_cast<std::int64_t>(std::clamp(y / rowPitch(), 0.0, static_cast<double>(rows())));
  };
  const std::int64_t first = row(std::floor(top + metrics.spacing)) * columns;
  const std::int64_t last = (row(std::ceil(top + viewport.height()) - 1) + 1) * columns;
  return {std::min(first, count), std::clamp<std::int64_t>(last, 0, count)};
}

double GridLayout::centeringContentY(std::int64_t index) const {
  return clampedContentY(tileRect(index).center().y() - viewport.height() / 2);
}

double GridLayout::clampedContentY(double contentY) const {
  return std::clamp(contentY, 0.0, std::max(0.0, contentHeight() - viewport.height()));
}

}  // namespace lumagrid
