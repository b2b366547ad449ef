#pragma once

#include <QPainter>

#include "PhotoFolder.h"

namespace lumagrid {

// Half in one color, half in the other, along the longer side.
inline QImage twoColors(QSize size, QColor first, QColor second) {
  QImage image(size.width() > size.height() ? QSize(2, 1) : QSize(1, 2), QImage::Format_RGB32);
  image.fill(second);
  image.setPixelColor(0, 0, first);
  return image.scaled(size);
}

// Lines of one pixel, which only the photo's own pixels show, around squares whose colors tell the place.
inline QImage largePhoto() {
  QImage image(2400, 1600, QImage::Format_RGBX8888);
  image.fill(Qt::white);
  QPainter painter(&image);
  for (int y = 0; y < image.height(); y += 50) {
    for (int x = 0; x < image.width(); x += 50) painter.fillRect(x, y, 49, 49, QColor(x / 10, y / 7, 96));
  }
  return image;
}

// A folder with a name to be shown: two photos that are longer than a tile, one that is see-through, one that cannot be
// read, and plain ones.
class HolidayPhotos : public PhotoFolder {
 public:
  static constexpr int kCount = 30;

  HolidayPhotos() : m_folder(addFolder(QStringLiteral("Holidays"))) {
    for (int number = 0; number < kCount; ++number) {
      put(number, samplePhoto({20, 20}, QColor::fromHsv(number * 37 % 360, 90, 200)));
    }
    put(1, pictureFile(twoColors({200, 100}, Qt::darkRed, Qt::darkYellow)));
    put(2, pictureFile(twoColors({100, 200}, Qt::darkBlue, Qt::darkGreen)));
    put(4, samplePhoto({20, 20}, QColor(0, 128, 128, 100)));
    put(7, "damaged");
  }

  [[nodiscard]] const FileUrl& folder() const { return m_folder; }

 private:
  void put(int number, const QByteArray& content) const {
    (void)add(QStringLiteral("Holidays/%1.jpg").arg(number), content);
  }

  FileUrl m_folder;
};

}  // namespace lumagrid
