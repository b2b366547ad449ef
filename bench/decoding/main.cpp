// Whole JPEG photos through the codec, against the bare TurboJPEG library decoding the same bytes into memory of the
// same kind. Each benchmark does both in turns and reports, beside its own time,
//   reference_ms  what the library alone takes (processor time, median),
//   ratio         ours divided by it,
//   clock_ratio   the same by the clock on the wall: what several cores gain, on a machine that does nothing else.
// "wide gamut" is the same photo with a profile to convert.
//
// LUMAGRID_BENCH_PHOTOS names a folder of JPEG files to take instead of made ones.
#include <benchmark/benchmark.h>
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
  benchmark::DoNotOptimize(pixels.constBits());
  tjDestroy(handle);
}

void decodeWhole(benchmark::State& state, const QByteArray& bytes) {
  constexpr int kRounds = 7;
  if (decodeJpeg({bytes, 0}).error != ImageError::none) return state.SkipWithError("not decoded");
  Comparison times;
  for ([[maybe_unused]] auto _ : state) {
    times = compared(
        kRounds,
        [&] {
          benchmark::DoNotOptimize(decodeJpeg({bytes, 0}));
        },
        [&] { decodeBare(bytes); });
    state.SetIterationTime(times.ours.processor / 1e3);
  }
  state.counters["reference_ms"] = times.reference.processor;
  state.counters["ratio"] = times.ours.processor / times.reference.processor;
  state.counters["clock_ratio"] = times.ours.clock / times.reference.clock;
}

void registerOne(const std::string& name, const QByteArray& bytes) {
  benchmark::RegisterBenchmark(name.c_str(), [bytes](benchmark::State& state) { decodeWhole(state, bytes); })
      ->UseManualTime()
      ->Iterations(1)
      ->Unit(benchmark::kMillisecond);
}

}  // namespace

int main(int argc, char** argv) {
  benchmark::Initialize(&argc, argv);
  for (const BenchPhoto& photo : benchPhotos()) {
    registerOne("whole/" + photo.name, photo.bytes);
    registerOne("whole, wide gamut/" + photo.name, withWideGamut(photo.bytes));
  }
  benchmark::RunSpecifiedBenchmarks();
  return 0;
}
