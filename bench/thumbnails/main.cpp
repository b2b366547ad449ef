// JPEG photos at an eighth of their size, as thumbnails of them begin, in turns with TurboJPEG at the same scale.
//
// LUMAGRID_BENCH_PHOTOS names a folder of JPEG files to take instead of made ones.
#include <turbojpeg.h>

#include "BaselineJpegEighth.h"
#include "BenchPhotos.h"
#include "JpegReader.h"
#include "PixelBuffer.h"

using namespace lumagrid;

namespace {

void decodeByLibrary(QByteArrayView file, QSize size) {
  void* const handle = tjInitDecompress();
  QImage pixels = unsetPixels(size, QImage::Format_RGBX8888);
  tjDecompress2(handle, reinterpret_cast<const unsigned char*>(file.data()), static_cast<unsigned long>(file.size()),
                pixels.bits(), size.width(), static_cast<int>(pixels.bytesPerLine()), size.height(), TJPF_RGBA, 0);
  tjDestroy(handle);
}

QImage decodedByOurs(QByteArrayView file) {
  JpegReader reader(file);
  if (!reader.readHeader(JpegReader::Markers::skipped) || !reader.scaleTo(1)) return {};
  const QImage pixels = baselineJpegAtEighth(reader);
  return pixels.isNull() ? reader.decode() : pixels;
}

}  // namespace

int main() {
  constexpr int kRounds = 15;
  std::vector<Comparison> photos;
  for (const BenchPhoto& photo : benchPhotos()) {
    const QSize size = decodedByOurs(photo.bytes).size();
    if (size.isEmpty()) continue;
    photos.push_back(compared(
        kRounds, [&] { (void)decodedByOurs(photo.bytes); }, [&] { decodeByLibrary(photo.bytes, size); }));
  }
  report("photo at an eighth", "TurboJPEG at an eighth", photos);
  return photos.empty() ? EXIT_FAILURE : EXIT_SUCCESS;
}
