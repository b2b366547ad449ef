#pragma once

#include <QByteArray>
#include <QByteArrayView>

namespace lumagrid {

// BMP files have headers of many sizes, and QImageReader reads those of 12, 40, 108 and 124 bytes. A file with another
// one (OS/2 2 cut at any length, the 52 and 56 bytes of version 2 and 3, an array of pictures) comes back as a copy
// with a header of 108 bytes that says the same. Empty when the file needs none or is beyond help.
[[nodiscard]] QByteArray bmpWithCommonHeader(QByteArrayView file);

}  // namespace lumagrid
