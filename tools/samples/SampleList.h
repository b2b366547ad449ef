#pragma once

#include <array>
#include <span>

#include "Scenes.h"

namespace lumagrid::samples {

enum class Variant { Plain, Progressive, Grey, Alpha, Animated, Turned, Damaged };

// One file to make. Its format follows from the ending of its name.
struct Sample {
  const char* name = nullptr;  // UTF-8
  Scene scene = nullptr;       // none for Animated, Alpha and Turned, which have their own
  HourName hour = HourName::Noon;
  int width = 1600;   // pixels, upright
  int height = 1067;  // pixels, upright
  Variant variant = Variant::Plain;
  int exifOrientation = 0;  // for Turned
};

[[nodiscard]] std::span<const Sample> sampleList();

}  // namespace lumagrid::samples
