#pragma once

#include <QImage>
#include <QString>

namespace lumagrid {

// By how much a picture may be off.
struct Tolerance {
  int levels = 0;  // of 255, in any channel of any pixel
  int pixels = 0;  // that may be off by more
};

// Compares a picture with the one of this name in tests/pictures. Nothing is said if they agree; otherwise by how much
// they do not, and where both are to be seen with their difference. With LUMAGRID_UPDATE_PICTURES in the environment,
// this picture becomes the one to compare with.
[[nodiscard]] QString differenceFromPicture(const QString& name, const QImage& actual, const Tolerance& tolerance);

// Side by side, or one below the other.
[[nodiscard]] QImage joined(const QList<QImage>& images, Qt::Orientation orientation);

}  // namespace lumagrid
