#include "ImageCache.h"

#include "MemoryBudget.h"

namespace lumagrid {

ImageCache& imageCache() {
  static ImageCache cache(keptBytes());
  return cache;
}

}  // namespace lumagrid
