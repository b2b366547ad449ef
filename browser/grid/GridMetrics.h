#pragma once

#include <QMarginsF>
#include <QRectF>
#include <QSizeF>
#include <cstdint>
#include <utility>

namespace lumagrid {

inline constexpr std::int64_t kLowestGridDimension = 2;
inline constexpr std::int64_t kHighestGridDimension = 6;
inline constexpr std::int64_t kInitialGridDimension = 4;

// The geometry of the grid for one size of the stage. Lengths in points. A value, computed for each layout.
struct GridMetrics {
  double cellSide = 0;
  double spacing = 0;
  QMarginsF padding;

  // A block of `dimension` x `dimension` tiles that fits the stage; a stage too small gets tiles of the least side.
  [[nodiscard]] static GridMetrics fitting(QSizeF stage, std::int64_t dimension);

  friend bool operator==(const GridMetrics&, const GridMetrics&) = default;
};

// Where the tiles of `count` photos lie in a vertically scrolling grid: rows of `columns` tiles, centered in the width
// of the viewport. Content coordinates, in points. Every answer is arithmetic, whatever the count.
struct GridLayout {
  GridMetrics metrics;
  std::int64_t columns = 1;
  std::int64_t count = 0;
  QSizeF viewport;

  [[nodiscard]] std::int64_t rows() const { return (count + columns - 1) / columns; }
  [[nodiscard]] double rowPitch() const { return metrics.cellSide + metrics.spacing; }
  [[nodiscard]] double contentHeight() const;
  [[nodiscard]] QRectF tileRect(std::int64_t index) const;
  // The indices [first, last) of the tiles in rows that show in the viewport scrolled to `contentY`.
  [[nodiscard]] std::pair<std::int64_t, std::int64_t> visibleIndices(double contentY) const;
  // The nearest scroll position at which the tile stands at the center of the viewport.
  [[nodiscard]] double centeringContentY(std::int64_t index) const;
  [[nodiscard]] double clampedContentY(double contentY) const;
};

}  // namespace lumagrid
