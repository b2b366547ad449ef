#include "ShownSize.h"

#include <algorithm>
#include <cmath>

namespace lumagrid {

QSize shownSize(QSize size, double pixelAspect, std::int64_t bound) {
  double width = size.width();
  double height = size.height();
  if (pixelAspect > 1) {
    height = std::round(height * pixelAspect);
  } else {
    width = std::round(width / pixelAspect);
  }
  const double longer = std::max(width, height);
  if (bound > 0 && longer > static_cast<double>(bound)) {
    const double scale = static_cast<double>(bound) / longer;
    width = std::max(1.0, std::round(width * scale));
    height = std::max(1.0, std::round(height * scale));
  }
  return {static_cast<int>(width), static_cast<int>(height)};
}

}  // namespace lumagrid
