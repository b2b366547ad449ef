#pragma once

#include <cstdint>
#include <cstdio>  // jpeglib.h needs it first
#include <span>
#include <vector>

#include <jpeglib.h>

namespace lumagrid {

// The samples of one component for one row of MCUs. Each stands for a block of pixels.
struct JpegSampleRows {
  std::vector<std::uint8_t> samples;
  size_t stride = 0;
  int horizontalRepeat = 1;  // pixels per sample
  int verticalRepeat = 1;
};

// Makes the pixels of line `line` of a row of MCUs: red, green, blue and 255, or CMYK. The arithmetic is that
// of the Independent JPEG Group (JFIF's equations with 16 fraction bits, rounded).
void writeJpegRow(J_COLOR_SPACE colors, std::span<const JpegSampleRows> components, int line, std::uint8_t* to,
                  int width);

}  // namespace lumagrid
