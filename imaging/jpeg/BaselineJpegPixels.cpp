#include "BaselineJpegPixels.h"

#include <algorithm>
#include <array>

namespace lumagrid {
namespace {

constexpr int kHalf = 1 << 15;

std::uint8_t clamped(int value) {
  return static_cast<std::uint8_t>(std::clamp(value, 0, 255));
}

// What a pair of color differences adds to the luminance.
struct Chroma {
  int red;
  int green;
  int blue;
};

Chroma chromaOf(int blueDifference, int redDifference) {
  constexpr int kRed = 91881;          // 1.402
  constexpr int kBlue = 116130;        // 1.772
  constexpr int kRedToGreen = 46802;   // 0.714136
  constexpr int kBlueToGreen = 22554;  // 0.344136
  const int blue = blueDifference - 128;
  const int red = redDifference - 128;
  return {(kRed * red + kHalf) >> 16, (kHalf - kBlueToGreen * blue - kRedToGreen * red) >> 16,
          (kBlue * blue + kHalf) >> 16};
}

// Brings a line of samples to one per pixel: those of the file where it has as many.
const std::uint8_t* perPixel(const JpegSampleRows& component, int line, int width, std::vector<std::uint8_t>& buffer) {
  const auto row = static_cast<size_t>(line / component.verticalRepeat);
  const std::uint8_t* samples = component.samples.data() + row * component.stride;
  if (component.horizontalRepeat == 1) return samples;
  buffer.resize(static_cast<size_t>(width));
  int left = 0;
  for (std::uint8_t& pixel : buffer) {
    pixel = *samples;
    if (++left == component.horizontalRepeat) {
      left = 0;
      ++samples;
    }
  }
  return buffer.data();
}

void writeColors(std::span<const std::uint8_t* const> samples, std::uint8_t* to, int width) {
  for (int x = 0; x < width; ++x, to += 4) {
    const int luminance = samples[0][x];
    const Chroma chroma = chromaOf(samples[1][x], samples[2][x]);
    to[0] = clamped(luminance + chroma.red);
    to[1] = clamped(luminance + chroma.green);
    to[2] = clamped(luminance + chroma.blue);
    to[3] = 255;
  }
}

}  // namespace

void writeJpegRow(J_COLOR_SPACE colors, std::span<const JpegSampleRows> components, int line, std::uint8_t* to,
                  int width) {
  std::array<std::vector<std::uint8_t>, 4> buffers;
  std::array<const std::uint8_t*, 4> samples{};
  for (size_t index = 0; index < components.size(); ++index) {
    samples[index] = perPixel(components[index], line, width, buffers[index]);
  }
  if (colors == JCS_YCbCr || colors == JCS_YCCK) {
    writeColors(samples, to, width);
  } else {
    for (int x = 0; x < width; ++x) {
      for (size_t index = 0; index < 3; ++index) {
        to[4 * x + static_cast<int>(index)] = samples[colors == JCS_GRAYSCALE ? 0 : index][x];
      }
      to[4 * x + 3] = 255;
    }
  }
  if (components.size() < 4) return;
  const int inverted = colors == JCS_YCCK ? 255 : 0;
  for (int x = 0; x < width; ++x, to += 4) {
    for (int index = 0; index < 3; ++index) to[index] = static_cast<std::uint8_t>(to[index] ^ inverted);
    to[3] = samples[3][x];
  }
}

}  // namespace lumagrid
