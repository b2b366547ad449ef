// JPEG photos at an eighth of their size, as thumbnails of them begin, against TurboJPEG at the same scale. Each
// benchmark does both in turns and reports, beside its own processor time,
//   reference_ms  what the library takes (processor time, median),
//   ratio         ours divided by it,
//   clock_ratio   the same by the clock on the wall: for a machine that does nothing else.
//
// LUMAGRID_BENCH_PHOTOS names a folder of JPEG files to take instead of made ones.
#include <benchmark/benchmark.h>
#include <turbojpeg.h>

#include "BaselineJpegEighth.h"
#include "BenchPhotos.h"
#include "JpegReader.h"
#include "PixelBuffer.h"

using namespace lumagrid;

namespace {

QImage decodedByLibrary(QByteArrayView file, QSize size) {
  void* const handle = tjInitDecompress();
  QImage pixels = unsetPixels(size, QImage::Format_RGBX8888);
  tjDecompress2(handle, reinterpret_cast<const unsigned char*>(file.data()), static_cast<unsigned long>(file.size()),
                pixels.bits(), size.width(), static_cast<int>(pixels.bytesPerLine()), size.height(), TJPF_RGBA, 0);
  tjDestroy(handle);
  return pixels;
}

QImage decodedByOurs(QByteArrayView file) {
  JpegReader reader(file);
  if (!reader.readHeader(JpegReader::Markers::skipped) || !reader.scaleTo(1)) return {};
  const QImage pixels = baselineJpegAtEighth(reader);
  return pixels.isNull() ? reader.decode() : pixels;
}

void decodeEighth(benchmark::State& state, const QByteArray& bytes, QSize size) {
  constexpr int kRounds = 15;
  Comparison times;
  for ([[maybe_unused]] auto _ : state) {
    times = compared(
        kRounds, [&] { benchmark::DoNotOptimize(decodedByOurs(bytes)); },
        [&] { benchmark::DoNotOptimize(decodedByLibrary(bytes, size)); });
    state.SetIterationTime(times.ours.processor / 1e3);
  }
  state.counters["reference_ms"] = times.reference.processor;
  state.counters["ratio"] = times.ours.processor / times.reference.processor;
  state.counters["clock_ratio"] = times.ours.clock / times.reference.clock;
}

}  // namespace

int main(int argc, char** argv) {
  benchmark::Initialize(&argc, argv);
  for (const BenchPhoto& photo : benchPhotos()) {
    const QSize size = decodedByOurs(photo.bytes).size();
    if (size.isEmpty()) continue;
    benchmark::RegisterBenchmark(
        ("eighth/" + photo.name).c_str(),
        [bytes = photo.bytes, size](benchmark::State& state) { decodeEighth(state, bytes, size); })
        ->UseManualTime()
        ->Iterations(1)
        ->Unit(benchmark::kMillisecond);
  }
  benchmark::RunSpecifiedBenchmarks();
  return 0;
}
