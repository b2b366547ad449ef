#include <algorithm>

#include "BaselineJpegEighth.h"
#include "ImageCodec.h"
#include "JpegReader.h"
#include "JpegStrips.h"
#include "MemoryLimit.h"
#include "PictureFinishing.h"
#include "PictureMemory.h"
#include "ShownSize.h"
#include "WorkerPool.h"

namespace lumagrid {
namespace {

constexpr int kWhole = 8;

// The fewest eighths of `size` that still cover `target` and have a fast inverse transform.
int fewestEighths(QSize size, QSize target) {
  for (const int eighths : {1, 2, 4}) {
    const auto covers = [eighths](int side, int wanted) { return (side * eighths + 7) / 8 >= wanted; };
    if (covers(size.width(), target.width()) && covers(size.height(), target.height())) return eighths;
  }
  return kWhole;
}

}  // namespace

bool isJpeg(QByteArrayView head) {
  return head.startsWith("\xff\xd8");  // junk may follow
}

DecodedImage decodeJpeg(const CodecRequest& request) {
  JpegReader reader(request.bytes);
  if (!reader.readHeader(JpegReader::Markers::saved)) return {{}, reader.error()};
  const QSize size = reader.size();
  if (!isPictureSizeSane(size.width(), size.height())) return {{}, ImageError::tooLarge};
  if (!isPictureSizeCredible(size.width(), size.height(), request.bytes.size())) return {{}, ImageError::damaged};

  RawPicture picture;
  picture.metadata = reader.metadata();
  picture.model = reader.colorModel();
  picture.storedSize = size;
  const QSize target = shownSize(size, picture.metadata.pixelAspect, request.bound);
  const int eighths = request.bound > 0 ? fewestEighths(size, target) : kWhole;
  if (!reader.scaleTo(eighths)) return {{}, reader.error()};
  if (!claimMemory(reader.memory())) return {{}, ImageError::tooLarge};
  if (eighths == 1) {
    picture.pixels = baselineJpegAtEighth(reader);
  } else if (eighths == kWhole) {
    constexpr qsizetype kPixelsWorthAStrip = qsizetype{1} << 21;  // 10 ms; smaller pictures come many at once
    const auto strips = static_cast<int>(qsizetype{size.width()} * size.height() / kPixelsWorthAStrip);
    // Two for each core: one that is busy with something else then keeps nobody waiting.
    if (strips > 1) picture.pixels = jpegInStrips(reader, std::min(strips, 2 * coreCount()));
  }
  if (picture.pixels.isNull()) picture.pixels = reader.decode();
  if (picture.pixels.isNull()) return {{}, reader.error()};
  return finishedPicture(std::move(picture), request.bound);
}

}  // namespace lumagrid
