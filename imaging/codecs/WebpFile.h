#pragma once

#include <QByteArrayView>

namespace lumagrid {

// Whether the first pixels of a WebP file are all there and begin with a header of their own, whose size is that of the
// canvas, or lies within it for animations: a canvas alone takes 40 bytes of file and gigabytes of memory. Any thread.
[[nodiscard]] bool isWebpCredible(QByteArrayView file);

}  // namespace lumagrid
