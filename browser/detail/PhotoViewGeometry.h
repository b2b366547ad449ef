#pragma once

#include <QPointF>
#include <QRect>
#include <QRectF>
#include <QSize>
#include <QSizeF>
#include <tuple>

#include "ZoomState.h"

namespace lumagrid {

// The rectangle, in points of the stage, of a photo of `photo` pixels fitted into the stage's box, which leaves room
// for the controls (150 points across, 116 down, but never smaller than 180 x 180) and is centered. Small photos are
// scaled up. Empty for an empty photo.
[[nodiscard]] QRectF fittedRect(QSizeF stage, QSize photo);

// `rect` with its edges on whole device pixels (at least one each way), where `origin` is the stage's position in the
// window in points and `devicePixelRatio` the pixels of a point.
[[nodiscard]] QRectF pixelAligned(const QRectF& rect, QPointF origin, double devicePixelRatio);

// Where a PhotoView lies in its window, in points; `devicePixelRatio` is the pixels of a point.
struct PhotoStage {
  QSizeF size;
  QPointF origin;
  double devicePixelRatio = 1;

  // Of a photo of `photo` pixels, on device pixels.
  [[nodiscard]] QRectF fittedBox(QSize photo) const;
  // The device pixels of that; the photo's own size when it has no more on either side.
  [[nodiscard]] QSize fittedPixels(QSize photo) const;

  friend bool operator==(const PhotoStage&, const PhotoStage&) = default;
};

// Where `fitted` lies on the stage once it is zoomed and moved. Points.
[[nodiscard]] QRectF zoomedRect(const QRectF& fitted, QSizeF stage, const ZoomState& zoom);

// The level of a pyramid that has at least one texel, and fewer than two, for a device pixel, when the photo has
// `photoPixelsPerDevicePixel`: 0 when it is magnified, the coarsest of `levelCount` at most.
[[nodiscard]] int levelFor(double photoPixelsPerDevicePixel, int levelCount);

// A square of kSide texels of one level, the unit in which a zoomed photo is uploaded; numbered from the top left. One
// more texel on each side, where there is one, is uploaded with it, so that the edges of neighbors are filtered alike
// and no seam shows. A block covers exactly four of the next finer level.
struct PhotoBlock {
  static constexpr int kSide = 510;

  int level = 0;
  int column = 0;
  int row = 0;

  // By level, finest first.
  friend bool operator<(const PhotoBlock& a, const PhotoBlock& b) {
    return std::tie(a.level, a.column, a.row) < std::tie(b.level, b.column, b.row);
  }

  // In the photo's pixels, cut at its edges.
  [[nodiscard]] QRectF photoRect(QSize photo) const;
  // The texels to upload, in those of the level, which is `levelSize` large.
  [[nodiscard]] QRect texels(QSize levelSize) const;
  // The part of the uploaded texels that shows `part`, in the photo's pixels.
  [[nodiscard]] QRectF sourceRect(const QRectF& part) const;
  [[nodiscard]] PhotoBlock parent() const { return {level + 1, column / 2, row / 2}; }
};

// The columns (x) and rows (y) of the level's blocks that touch `visible`, in the photo's pixels; empty when none does.
[[nodiscard]] QRect blocksTouching(const QRectF& visible, QSize photo, int level);

}  // namespace lumagrid
