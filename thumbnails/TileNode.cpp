#include "TileNode.h"

#include <QMatrix4x4>
#include <QPainter>
#include <QQuickWindow>
#include <cmath>

#include "IconImage.h"
#include "Palette.h"
#include "SpinnerImage.h"

namespace lumagrid {

namespace {

constexpr double kRadius = 20;
constexpr double kCardOpacity = 0.76;
constexpr double kDimmingOpacity = 0.22;
constexpr double kShadowBlur = 8;
constexpr double kShadowOffset = 3;
constexpr double kShadowOpacity = 0.06;
constexpr double kCheckedShadowOpacity = 0.02;
constexpr double kLineWidth = 1;
constexpr double kMarkedLineWidth = 3;
constexpr double kFocusRingGap = 4;  // between the tile's edge and the middle of the ring
constexpr double kFocusRingWidth = 2;
constexpr double kBadgeInset = 7;
constexpr double kBadgeSide = 26;
constexpr double kPressedOpacity = 0.8;  // of the content, while the pointer holds it down

double mix(double from, double to, double progress) {
  return from + (to - from) * progress;
}

// The part of the thumbnail that fills a square: the middle of its longer side.
QRectF middleSquare(QSizeF size) {
  const double side = std::min(size.width(), size.height());
  return {(size.width() - side) / 2, (size.height() - side) / 2, side, side};
}

// The check mark on its white disc.
QImage badgeImage(double devicePixelRatio) {
  static QImage image;
  if (!image.isNull() && image.devicePixelRatio() == devicePixelRatio) return image;
  const QImage mark = iconImage(IconName::checkmarkCircleFill, kBadgeSide, IconWeight::bold,
                                Palette::instance()->accent().rgb(), devicePixelRatio);
  const int side = qRound(kBadgeSide * devicePixelRatio);
  image = QImage(side, side, QImage::Format_ARGB32_Premultiplied);
  image.fill(Qt::transparent);
  QPainter painter(&image);
  painter.setRenderHint(QPainter::Antialiasing);
  painter.setPen(Qt::NoPen);
  painter.setBrush(Qt::white);
  painter.drawEllipse(image.rect());
  painter.drawImage(QRectF((side - mark.width()) / 2.0, (side - mark.height()) / 2.0, mark.width(), mark.height()),
                    mark, mark.rect());
  painter.end();
  image.setDevicePixelRatio(devicePixelRatio);
  return image;
}

}  // namespace

void TileNode::PictureNode::show(QQuickWindow* window, const QImage& image, const QRectF& rect, const QRectF& source) {
  const bool isNew = !m_node;
  if (isNew) {
    m_node = window->createImageNode();
    m_node->setFiltering(QSGTexture::Linear);
    m_node->setFlag(OwnedByParent);
    m_imageKey = 0;
  }
  if (m_imageKey != image.cacheKey()) {
    m_imageKey = image.cacheKey();
    std::shared_ptr<QSGTexture> texture = sharedTexture(window, image);
    m_node->setTexture(texture.get());
    m_shared = std::move(texture);
  }
  m_node->setRect(rect);
  m_node->setSourceRect(source);
  // The software renderer looks at the texture of a node as soon as it is given one.
  if (isNew) appendChildNode(m_node);
}

void TileNode::PictureNode::hide() {
  if (!m_node) return;
  removeChildNode(m_node);
  delete m_node;
  m_node = nullptr;
  m_shared.reset();
}

TileNode::TileNode() {
  m_badgeTransform.setFlag(OwnedByParent, false);
  m_badge.setFlag(OwnedByParent, false);
  m_badgeTransform.appendChildNode(&m_badge);
  for (QSGNode* node : {static_cast<QSGNode*>(&m_shadow), static_cast<QSGNode*>(&m_card),
                        static_cast<QSGNode*>(&m_picture), static_cast<QSGNode*>(&m_dimming),
                        static_cast<QSGNode*>(&m_badgeTransform), static_cast<QSGNode*>(&m_plainBorder),
                        static_cast<QSGNode*>(&m_accentBorder), static_cast<QSGNode*>(&m_focusRing)}) {
    node->setFlag(OwnedByParent, false);
    appendChildNode(node);
  }
}

void TileNode::update(QQuickWindow* window, const TileLook& look) {
  const QRectF bounds(0, 0, look.side, look.side);
  // With a thumbnail the shadow is that of a plain square, since the thumbnail has square corners; without one it is
  // that of the see-through card.
  const bool hasPicture = !look.thumbnail.isNull();
  const bool isCovered = hasPicture && !look.isPressed && !look.thumbnail.hasAlphaChannel();
  m_shadow.setShape(
      window,
      {.part = Shape::Part::shadow, .radius = hasPicture ? 0 : kRadius, .blur = kShadowBlur, .isHollow = isCovered},
      bounds.translated(0, kShadowOffset));
  m_shadow.setOpacity(mix(kShadowOpacity, kCheckedShadowOpacity, look.checked) * (hasPicture ? 1 : kCardOpacity));

  // An opaque thumbnail hides all of the card.
  if (isCovered) {
    m_card.clear();
  } else {
    m_card.setShape(window, {.part = Shape::Part::fill, .radius = kRadius, .color = qRgb(255, 255, 255)}, bounds);
    m_card.setOpacity(kCardOpacity);
  }

  updateContent(window, look);

  m_dimming.setShape(window, {.part = Shape::Part::fill, .radius = kRadius}, bounds);
  m_dimming.setOpacity(kDimmingOpacity * look.checked);

  updateBadge(window, look);

  // As faint as that of a plain button at any contrast: a strong one, round at the corners, would cut those of the
  // photo.
  const QColor line = Palette::instance()->softButton();
  m_plainBorder.setShape(
      window, {.part = Shape::Part::stroke, .radius = kRadius, .lineWidth = kLineWidth, .color = line.rgb()}, bounds);
  m_accentBorder.setShape(window,
                          {.part = Shape::Part::stroke,
                           .radius = kRadius,
                           .lineWidth = kMarkedLineWidth,
                           .color = Palette::instance()->accent().rgb()},
                          bounds);
  m_plainBorder.setOpacity(line.alphaF() * (1 - look.marked));
  m_accentBorder.setOpacity(look.marked);

  if (look.hasFocusRing) {
    m_focusRing.setShape(window,
                         {.part = Shape::Part::stroke,
                          .radius = kRadius + kFocusRingGap,
                          .lineWidth = kFocusRingWidth,
                          .color = Palette::instance()->focusRing().rgb()},
                         bounds.adjusted(-kFocusRingGap, -kFocusRingGap, kFocusRingGap, kFocusRingGap));
  } else {
    m_focusRing.clear();
  }
}

void TileNode::updateContent(QQuickWindow* window, const TileLook& look) {
  m_picture.setOpacity(look.isPressed ? kPressedOpacity : 1);
  if (!look.thumbnail.isNull()) {
    m_picture.show(window, look.thumbnail, {0, 0, look.side, look.side}, middleSquare(look.thumbnail.size()));
  } else if (look.spinnerStep) {
    // On whole pixels, so that every step looks the same.
    const double ratio = window->effectiveDevicePixelRatio();
    const QImage spinner = spinnerImage(*look.spinnerStep, kSpinnerSide, Palette::instance()->muted().rgb(), ratio);
    const double left = std::round((look.side - kSpinnerSide) / 2 * ratio) / ratio;
    m_picture.setOpacity(Palette::instance()->muted().alphaF());
    m_picture.show(window, spinner, {left, left, kSpinnerSide, kSpinnerSide}, QRectF(QPointF(), spinner.size()));
  } else {
    m_picture.hide();
  }
}

void TileNode::updateBadge(QQuickWindow* window, const TileLook& look) {
  if (look.checked <= 0) {
    m_badge.hide();
    return;
  }
  const QImage image = badgeImage(window->effectiveDevicePixelRatio());
  const QRectF rect(kBadgeInset, kBadgeInset, kBadgeSide, kBadgeSide);
  m_badge.show(window, image, rect, QRectF(QPointF(), image.size()));
  m_badge.setOpacity(look.checked);
  QMatrix4x4 matrix;
  matrix.translate(static_cast<float>(rect.center().x()), static_cast<float>(rect.center().y()));
  matrix.scale(static_cast<float>(look.checked));
  matrix.translate(static_cast<float>(-rect.center().x()), static_cast<float>(-rect.center().y()));
  m_badgeTransform.setMatrix(matrix);
}

}  // namespace lumagrid
