#pragma once

#include <QImage>

#include "JpegReader.h"

namespace lumagrid {

// The whole picture of a sequential JPEG file, RGBX8888 or CMYK, in `strips` parts side by side (fewer where there are
// no more), each of them decoded by libjpeg-turbo from one of the file's restart markers on. The pixels are those of
// the whole file decoded in one go: a strip begins and ends with rows that only give their neighbors what the enlarged
// colors of those need.
//
// Null for every other kind of file, without restart markers where strips can begin, and at the slightest damage.
// `whole` has read its header. Any thread.
[[nodiscard]] QImage jpegInStrips(const JpegReader& whole, int strips);

}  // namespace lumagrid
