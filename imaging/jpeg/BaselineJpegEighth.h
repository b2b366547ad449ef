#pragma once

#include <QImage>

#include "JpegReader.h"

namespace lumagrid {

// The picture of a sequential JPEG file at an eighth of its size (rounded up), as RGBX8888 with 255 in the fourth byte,
// or as CMYK as it is in the file. Its pixels are those that libjpeg-turbo gives at this scale: a
// component of full resolution takes the mean of each of its blocks, one that is halved both ways takes two by two from
// each. All else in the data is only passed over, in half of the time or less.
//
// Null for everything that this is not made for (progressive and arithmetic files, several scans, rare samplings) and
// for data with the slightest damage: decode() is to be asked then. `reader` has read its header and is scaled to an
// eighth. Any thread.
[[nodiscard]] QImage baselineJpegAtEighth(const JpegReader& reader);

}  // namespace lumagrid
