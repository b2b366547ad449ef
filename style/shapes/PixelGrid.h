#pragma once

#include <QPointF>

class QQuickItem;

namespace lumagrid {

// The offset, in points, that moves `point` of `item` onto the pixel grid of its window; zero while the item is scaled
// or turned. Taken when an item is drawn: it does not follow an ancestor that moves afterwards.
[[nodiscard]] QPointF offsetToPixelGrid(const QQuickItem& item, QPointF point = {});

}  // namespace lumagrid
