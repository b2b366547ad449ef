#pragma once

#include <QByteArrayView>

#include "ImageDecoder.h"

namespace lumagrid {

// Looks at a file before the library does, which follows its items into each other without end and trusts what they
// say of their sizes. Lets through, and claims the memory of, a coded picture (HEVC or AV1) and a grid of such, each
// with a picture of its alpha. Everything else is `unsupported` (pictures laid over each other or derived otherwise),
// `damaged` or `tooLarge`. Any thread.
[[nodiscard]] ImageError checkHeif(QByteArrayView file);

}  // namespace lumagrid
