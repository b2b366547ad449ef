#pragma once

#include <QByteArray>
#include <string>
#include <vector>

namespace lumagrid {

// A JPEG file to measure with.
struct BenchPhoto {
  std::string name;
  QByteArray bytes;
};

// The JPEG files of the folder that LUMAGRID_BENCH_PHOTOS names, by name; without it, made ones of 24 megapixels whose
// detail and size in bytes are like those of photos: with color halved both ways, with full color, progressive, and
// with restart markers.
[[nodiscard]] std::vector<BenchPhoto> benchPhotos();

// The same file with the profile of wide-gamut displays.
[[nodiscard]] QByteArray withWideGamut(const QByteArray& jpeg);

// What a piece of work took, in milliseconds: of the processors, all threads together, and of the clock.
struct Times {
  double processor = 0;
  double clock = 0;
};

[[nodiscard]] Times timesSoFar();
[[nodiscard]] Times median(const std::vector<Times>& times);

// Medians of two ways to do the same work, done in turns, so that a busy machine slows down both of them.
struct Comparison {
  Times ours;
  Times reference;
};

template <typename Ours, typename Reference>
[[nodiscard]] Comparison compared(int rounds, Ours ours, Reference reference) {
  std::vector<Times> oursTimes;
  std::vector<Times> referenceTimes;
  const auto since = [](Times start, Times end) {
    return Times{end.processor - start.processor, end.clock - start.clock};
  };
  for (int round = 0; round < rounds; ++round) {
    const Times start = timesSoFar();
    ours();
    const Times between = timesSoFar();
    reference();
    oursTimes.push_back(since(start, between));
    referenceTimes.push_back(since(between, timesSoFar()));
  }
  return {median(oursTimes), median(referenceTimes)};
}

// Reports the comparisons of all photos as two figures: the processors' time, and the clock's, which shows what several
// cores gain on a machine that does nothing else. Each has the medians of both ways, and of the ratios the least, the
// median and the largest. Without the first where no processor's time is given.
void report(const std::string& name, const std::string& referenceName, const std::vector<Comparison>& photos);

}  // namespace lumagrid
