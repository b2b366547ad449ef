#include "StageCard.h"

#include <QImage>
#include <QQuickWindow>
#include <QSGGeometryNode>
#include <QSGImageNode>
#include <QSGRendererInterface>
#include <QSGVertexColorMaterial>
#include <array>

#include "Palette.h"

namespace lumagrid {

namespace {

struct CardColors {
  QColor first;   // at the top left corner
  QColor second;  // at the bottom right corner
};

CardColors cardColors(bool isDark) {
  if (isDark) {
    return {QColor::fromRgbF(44 / 255.F, 40 / 255.F, 36 / 255.F, 0.92F),
            QColor::fromRgbF(35 / 255.F, 31 / 255.F, 27 / 255.F, 0.98F)};
  }
  return {QColor::fromRgbF(1, 1, 1, 0.86F), QColor::fromRgbF(238 / 255.F, 226 / 255.F, 208 / 255.F, 0.96F)};
}

QColor mixed(const CardColors& colors, double progress) {
  const auto mix = [progress](float from, float to) { return from + (to - from) * static_cast<float>(progress); };
  return QColor::fromRgbF(
      mix(colors.first.redF(), colors.second.redF()), mix(colors.first.greenF(), colors.second.greenF()),
      mix(colors.first.blueF(), colors.second.blueF()), mix(colors.first.alphaF(), colors.second.alphaF()));
}

// The colours at the top left, top right, bottom left and bottom right. The gradient's colour is an affine function of
// the place, so these four, interpolated, are it.
std::array<QColor, 4> cornerColors(QSizeF size, bool isDark) {
  const CardColors colors = cardColors(isDark);
  const double squaredDiagonal = size.width() * size.width() + size.height() * size.height();
  return {colors.first, mixed(colors, size.width() * size.width() / squaredDiagonal),
          mixed(colors, size.height() * size.height() / squaredDiagonal), colors.second};
}

QSGNode* coloredQuad(QSGNode* oldNode, const QRectF& rect, const std::array<QColor, 4>& colors) {
  auto* node = static_cast<QSGGeometryNode*>(oldNode);
  if (!node) {
    node = new QSGGeometryNode;
    node->setGeometry(new QSGGeometry(QSGGeometry::defaultAttributes_ColoredPoint2D(), 4));
    node->setMaterial(new QSGVertexColorMaterial);
    node->setFlags(QSGNode::OwnsGeometry | QSGNode::OwnsMaterial);
  }
  auto* vertex = node->geometry()->vertexDataAsColoredPoint2D();
  std::size_t corner = 0;
  for (const double y : {rect.top(), rect.bottom()}) {
    for (const double x : {rect.left(), rect.right()}) {
      const QRgb color = qPremultiply(colors[corner++].rgba());
      vertex++->set(static_cast<float>(x), static_cast<float>(y), static_cast<uchar>(qRed(color)),
                    static_cast<uchar>(qGreen(color)), static_cast<uchar>(qBlue(color)),
                    static_cast<uchar>(qAlpha(color)));
    }
  }
  node->markDirty(QSGNode::DirtyGeometry);
  return node;
}

// For the renderer that knows no coloured vertices: from the centre of the first pixel to the centre of the last.
QSGNode* stretchedPixels(QQuickWindow* window, QSGNode* oldNode, const QRectF& rect,
                         const std::array<QColor, 4>& colors) {
  QImage pixels(2, 2, QImage::Format_ARGB32_Premultiplied);
  for (int corner = 0; corner < 4; ++corner) {
    pixels.setPixelColor(corner % 2, corner / 2, colors[static_cast<std::size_t>(corner)]);
  }
  auto* node = static_cast<QSGImageNode*>(oldNode);
  if (!node) {
    node = window->createImageNode();
    node->setOwnsTexture(true);
    node->setFiltering(QSGTexture::Linear);
  }
  node->setTexture(window->createTextureFromImage(pixels));
  node->setSourceRect({0.5, 0.5, 1, 1});
  node->setRect(rect);
  return node;
}

}  // namespace

StageCard::StageCard(QQuickItem* parent) : PictureItem(parent) {
  connect(Palette::instance(), &Palette::changed, this, &QQuickItem::update);
}

QSGNode* StageCard::updatePaintNode(QSGNode* oldNode, UpdatePaintNodeData* /*data*/) {
  const auto colors = cornerColors(size(), Palette::instance()->isDark());
  if (window()->rendererInterface()->graphicsApi() == QSGRendererInterface::Software) {
    return stretchedPixels(window(), oldNode, boundingRect(), colors);
  }
  return coloredQuad(oldNode, boundingRect(), colors);
}

}  // namespace lumagrid
