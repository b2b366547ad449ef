#include "StageCard.h"

#include <QImage>
#include <QQuickWindow>
#include <QSGImageNode>

#include "Palette.h"

namespace lumagrid {

namespace {

struct CardColors {
  QColor first;   // at the top left corner
  QColor second;  // at the bottom right corner
};

CardColors cardColors(bool isDark) {
  if (isDark)
    return {QColor::fromRgbF(44 / 255.F, 40 / 255.F, 36 / 255.F, 0.92F),
            QColor::fromRgbF(35 / 255.F, 31 / 255.F, 27 / 255.F, 0.98F)};
  return {QColor::fromRgbF(1, 1, 1, 0.86F), QColor::fromRgbF(238 / 255.F, 226 / 255.F, 208 / 255.F, 0.96F)};
}

QColor mixed(const CardColors& colors, double progress) {
  const auto mix = [progress](float from, float to) { return from + (to - from) * static_cast<float>(progress); };
  return QColor::fromRgbF(
      mix(colors.first.redF(), colors.second.redF()), mix(colors.first.greenF(), colors.second.greenF()),
      mix(colors.first.blueF(), colors.second.blueF()), mix(colors.first.alphaF(), colors.second.alphaF()));
}

// The gradient's colour is an affine function of the place, so the colours of the four corners, interpolated, are it.
QImage cornerColors(QSizeF size, bool isDark) {
  const CardColors colors = cardColors(isDark);
  const double squaredDiagonal = size.width() * size.width() + size.height() * size.height();
  QImage corners(2, 2, QImage::Format_ARGB32_Premultiplied);
  corners.setPixelColor(0, 0, colors.first);
  corners.setPixelColor(1, 0, mixed(colors, size.width() * size.width() / squaredDiagonal));
  corners.setPixelColor(0, 1, mixed(colors, size.height() * size.height() / squaredDiagonal));
  corners.setPixelColor(1, 1, colors.second);
  return corners;
}

}  // namespace

StageCard::StageCard(QQuickItem* parent) : QQuickItem(parent) {
  setFlag(ItemHasContents);
  connect(Palette::instance(), &Palette::changed, this, &QQuickItem::update);
}

QSGNode* StageCard::updatePaintNode(QSGNode* oldNode, UpdatePaintNodeData* /*data*/) {
  auto* node = static_cast<QSGImageNode*>(oldNode);
  if (!node) {
    node = window()->createImageNode();
    node->setOwnsTexture(true);
    node->setFiltering(QSGTexture::Linear);
  }
  node->setTexture(window()->createTextureFromImage(cornerColors(size(), Palette::instance()->isDark())));
  // From the centre of the first pixel to the centre of the last: between them interpolation is exact.
  node->setSourceRect({0.5, 0.5, 1, 1});
  node->setRect(boundingRect());
  return node;
}

}  // namespace lumagrid
