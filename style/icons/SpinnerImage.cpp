#include "SpinnerImage.h"

#include <QHashFunctions>
#include <QPainter>
#include <cmath>

#include "MemoryCache.h"

namespace lumagrid {

namespace {

constexpr std::size_t kSpinnerCacheBytes = 1 << 20;

struct Key {
  int step;
  int pixels;
  QRgb color;

  friend bool operator==(const Key&, const Key&) = default;
};

struct KeyHash {
  std::size_t operator()(const Key& key) const { return qHashMulti(0, key.step, key.pixels, key.color); }
};

QImage draw(const Key& key) {
  QImage image(key.pixels, key.pixels, QImage::Format_ARGB32_Premultiplied);
  image.fill(Qt::transparent);
  QPainter painter(&image);
  painter.setRenderHint(QPainter::Antialiasing);
  painter.scale(key.pixels / 20.0, key.pixels / 20.0);
  painter.translate(10, 10);
  for (int spoke = 0; spoke < kSpinnerSteps; ++spoke) {
    const int age = (key.step - spoke + kSpinnerSteps) % kSpinnerSteps;
    QColor color(key.color);
    color.setAlphaF(float(0.18 + 0.82 * std::pow(1 - double(age) / kSpinnerSteps, 1.6)));
    painter.save();
    painter.rotate(spoke * 360.0 / kSpinnerSteps);
    painter.setPen(QPen(color, 2.1, Qt::SolidLine, Qt::RoundCap));
    painter.drawLine(QPointF(0, -4.6), QPointF(0, -8.2));
    painter.restore();
  }
  return image;
}

}  // namespace

QImage spinnerImage(int step, double side, QRgb color, double devicePixelRatio) {
  static MemoryCache<Key, QImage, KeyHash> cache(kSpinnerCacheBytes);

  const int spoke = (step % kSpinnerSteps + kSpinnerSteps) % kSpinnerSteps;
  const Key key{spoke, std::max(1, int(std::lround(side * devicePixelRatio))), color | 0xff000000};
  if (const auto found = cache.object(key)) return *found;
  QImage image = draw(key);
  cache.setObject(key, image, std::size_t(image.sizeInBytes()));
  return image;
}

}  // namespace lumagrid
