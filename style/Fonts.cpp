#include "Fonts.h"

#include <QGuiApplication>

namespace lumagrid {

QFont Fonts::system(int size, int weight) {
  QFont font = QGuiApplication::font();
  font.setPixelSize(size);
  font.setWeight(QFont::Weight(weight));
  return font;
}

}  // namespace lumagrid
