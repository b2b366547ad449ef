#pragma once

#include <QImage>
#include <QSize>
#include <cstdint>

namespace lumagrid {

// The size in which a picture of `size` is shown whose pixels have `pixelAspect` (height divided by width): one side is
// stretched, none is shrunk. Then, with a bound above 0, scaled down so that the longer side equals it, the other side
// rounded and at least 1; never enlarged by the bound.
[[nodiscard]] QSize shownSize(QSize size, double pixelAspect, std::int64_t bound);

// Scales a picture of four 8-bit channels, each for itself (so alpha must be premultiplied). Where it shrinks, every
// pixel of the result is the mean of the area that it covers; 1 ms for 400,000 source pixels.
[[nodiscard]] QImage scaledTo(QImage pixels, QSize size);

}  // namespace lumagrid
