#pragma once

#include <QColor>
#include <QImage>

#include "Random.h"

namespace lumagrid::samples {

// The colors of one hour of the day.
struct Hour {
  QColor zenith;
  QColor sky;
  QColor horizon;
  QColor light;  // sun, moon, lamps
  QColor far;    // what lies in the haze
  QColor near;   // what stands in the foreground
};

enum class HourName { Dawn, Noon, Gold, Sunset, Dusk, Night, Rose, Mint, Autumn, Ice };
[[nodiscard]] Hour hour(HourName name);

[[nodiscard]] QColor mix(const QColor& from, const QColor& to, double share);

// Every scene fills the whole picture, in any proportion, and depends on nothing but its arguments.
using Scene = void (*)(QImage& picture, const Hour& hour, Random& random);

void paintMountains(QImage& picture, const Hour& hour, Random& random);
void paintForest(QImage& picture, const Hour& hour, Random& random);
void paintSea(QImage& picture, const Hour& hour, Random& random);
void paintLeaves(QImage& picture, const Hour& hour, Random& random);
void paintCity(QImage& picture, const Hour& hour, Random& random);

// Leaves alone, on nothing: what an alpha channel is for.
void paintLeavesOnNothing(QImage& picture, const Hour& hour, Random& random);

}  // namespace lumagrid::samples
