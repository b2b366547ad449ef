#pragma once

#include <QImage>
#include <QSize>

namespace lumagrid {

// A picture whose pixels are not set yet, in memory of pictureMemory() when it is a large one; null when memory is
// short.
[[nodiscard]] QImage unsetPixels(QSize size, QImage::Format format);

}  // namespace lumagrid
