// Whole JPEG photos through the codec, in turns with the bare TurboJPEG library decoding the same bytes into memory of
// the same kind. "wide gamut" is the same photo with a profile to convert, which the library leaves undone.
//
// LUMAGRID_BENCH_PHOTOS names a folder of JPEG files to take instead of made ones.
#include <turbojpeg.h>

#include "BenchPhotos.h"
#include "ImageCodec.h"
#include "PixelBuffer.h"

using namespace lumagrid;

namespace {

void decodeBare(const QByteArray& bytes) {
  void* const handle = tjInitDecompress();
  const auto* data = reinterpret_cast<const unsigned char*>(bytes.constData());
  const auto size = static_cast<unsigned long>(bytes.size());
  int width = 0;
  int height = 0;
  int subsampling = 0;
  int colors = 0;
  tjDecompressHeader3(handle, data, size, &width, &height, &subsampling, &colors);
  QImage pixels = unsetPixels(QSize(width, height), QImage::Format_RGBX8888);
  tjDecompress2(handle, data, size, pixels.bits(), width, static_cast<int>(pixels.bytesPerLine()), height, TJPF_RGBA,
                0);
  tjDestroy(handle);
}

Comparison decodeWhole(const QByteArray& bytes) {
  constexpr int kRounds = 7;
  return compared(
      kRounds,
      [&] {
        (void)decodeJpeg({bytes, 0});
      },
      [&] { decodeBare(bytes); });
}

}  // namespace

int main() {
  std::vector<Comparison> plain;
  std::vector<Comparison> wideGamut;
  for (const BenchPhoto& photo : benchPhotos()) {
    if (decodeJpeg({photo.bytes, 0}).error != ImageError::none) continue;
    plain.push_back(decodeWhole(photo.bytes));
    wideGamut.push_back(decodeWhole(withWideGamut(photo.bytes)));
  }
  report("whole photo", "TurboJPEG alone", plain);
  report("whole photo of wide gamut", "TurboJPEG alone, colors as they are", wideGamut);
  return plain.empty() ? EXIT_FAILURE : EXIT_SUCCESS;
}
