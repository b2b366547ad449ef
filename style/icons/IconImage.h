#pragma once

#include <QImage>
#include <QRgb>
#include <QStringView>

namespace lumagrid {

// The project's own vector icons, drawn on one grid of 24 units with round caps and joins.
enum class IconName {
  none,
  squareGrid3x3Fill,
  folderBadgePlus,
  minusMagnifyingGlass,
  plusMagnifyingGlass,
  arrowUpArrowDown,
  checkmark,
  checkmarkCircleFill,
  trash,
  chevronLeft,
  chevronRight,
  photoOnRectangleAngled,
};

// The icon with the name of its enumerator; none for an unknown name.
[[nodiscard]] IconName iconNamed(QStringView name);

enum class IconWeight { medium, semibold, bold };

// The side, in points, of the square that an icon takes beside text of `fontSize` points: the grid's 24 units, of which
// about 20 are drawn on. An even number, so that an icon in an even frame lies on whole points.
[[nodiscard]] double iconSide(double fontSize);

// The icon, iconSide(fontSize) points square, in device pixels at `devicePixelRatio`; premultiplied ARGB, drawn opaque
// in `color`. With a `blur`, points, it is the icon's shadow instead: under a Gaussian of sigma blur / 2, and larger on
// every side by what that reaches. Cached for the process. Any thread.
[[nodiscard]] QImage iconImage(IconName name, double fontSize, IconWeight weight, QRgb color, double devicePixelRatio,
                               double blur = 0);

}  // namespace lumagrid
