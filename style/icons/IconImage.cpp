#include "IconImage.h"

#include <QHashFunctions>
#include <algorithm>
#include <array>
#include <cmath>
#include <utility>

#include "GaussianBlur.h"
#include "IconPainter.h"
#include "MemoryCache.h"

namespace lumagrid {

namespace {

constexpr std::size_t kIconCacheBytes = 2 << 20;

constexpr std::array<std::pair<QStringView, IconName>, 11> kNames{{
    {u"squareGrid3x3Fill", IconName::squareGrid3x3Fill},
    {u"folderBadgePlus", IconName::folderBadgePlus},
    {u"minusMagnifyingGlass", IconName::minusMagnifyingGlass},
    {u"plusMagnifyingGlass", IconName::plusMagnifyingGlass},
    {u"arrowUpArrowDown", IconName::arrowUpArrowDown},
    {u"checkmark", IconName::checkmark},
    {u"checkmarkCircleFill", IconName::checkmarkCircleFill},
    {u"trash", IconName::trash},
    {u"chevronLeft", IconName::chevronLeft},
    {u"chevronRight", IconName::chevronRight},
    {u"photoOnRectangleAngled", IconName::photoOnRectangleAngled},
}};

struct Key {
  IconName name;
  IconWeight weight;
  QRgb color;
  int pixels;
  double sigma;

  friend bool operator==(const Key&, const Key&) = default;
};

struct KeyHash {
  std::size_t operator()(const Key& key) const {
    return qHashMulti(0, int(key.name), int(key.weight), key.color, key.pixels, key.sigma);
  }
};

// In units of the grid. The large, light icon of an empty stage and the small, heavy one of a button both stay legible.
double strokeWidth(IconWeight weight) {
  switch (weight) {
    case IconWeight::medium:
      return 1.6;
    case IconWeight::semibold:
      return 2.0;
    case IconWeight::bold:
      return 2.4;
  }
  return 2.0;
}

}  // namespace

IconName iconNamed(QStringView name) {
  const auto found =
      std::find_if(kNames.begin(), kNames.end(), [name](const auto& known) { return known.first == name; });
  return found == kNames.end() ? IconName::none : found->second;
}

double iconSide(double fontSize) {
  return 2 * std::round(fontSize * 1.25 / 2);
}

QImage iconImage(IconName name, double fontSize, IconWeight weight, QRgb color, double devicePixelRatio, double blur) {
  static MemoryCache<Key, QImage, KeyHash> cache(kIconCacheBytes);

  const int pixels = int(std::lround(iconSide(fontSize) * devicePixelRatio));
  if (name == IconName::none || pixels <= 0) return {};
  const Key key{name, weight, color | 0xff000000, pixels, blur / 2 * devicePixelRatio};
  if (const auto found = cache.object(key)) return *found;
  const int outset = blurReach(key.sigma);
  QImage image(pixels + 2 * outset, pixels + 2 * outset, QImage::Format_ARGB32_Premultiplied);
  image.fill(Qt::transparent);
  {
    QPainter painter(&image);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.translate(outset, outset);
    painter.scale(pixels / kIconGrid, pixels / kIconGrid);
    IconPainter(painter, QColor(key.color), strokeWidth(weight)).draw(name);
  }
  if (outset > 0) image = blurredShadow(image, key.sigma, key.color);
  cache.setObject(key, image, std::size_t(image.sizeInBytes()));
  return image;
}

}  // namespace lumagrid
