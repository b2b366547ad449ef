#pragma once

#include <QSize>
#include <cstdint>

namespace lumagrid {

// The size in which a picture of `size` is shown whose pixels have `pixelAspect` (height divided by width): one side is
// stretched, none is shrunk. Then, with a bound above 0, scaled down so that the longer side equals it, the other side
// rounded and at least 1; never enlarged by the bound.
[[nodiscard]] QSize shownSize(QSize size, double pixelAspect, std::int64_t bound);

}  // namespace lumagrid
