#pragma once

#include <QByteArrayView>
#include <QImage>

namespace lumagrid {

// The whole picture of a sequential JPEG file, RGBX8888, in `strips` parts side by side (fewer where there are no
// more), each of them decoded by libjpeg-turbo from one of the file's restart markers on. The pixels are those of the
// whole file decoded in one go: a strip begins and ends with rows that only give their neighbours what the enlarged
// colours of those need.
//
// Null for every other kind of file, for inks, without restart markers where strips can begin, and at the slightest
// damage. Any thread.
[[nodiscard]] QImage jpegInStrips(QByteArrayView file, int strips);

}  // namespace lumagrid
