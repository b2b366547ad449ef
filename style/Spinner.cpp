#include "Spinner.h"

#include "NinePatchNode.h"
#include "PixelGrid.h"
#include "SpinnerImage.h"

namespace lumagrid {

Spinner::Spinner(QQuickItem* parent) : QQuickItem(parent) {
  setFlag(ItemHasContents);
  setImplicitSize(kSpinnerSide, kSpinnerSide);
  runWhileVisible();  // a parent given here is told to QQuickItem alone
}

void Spinner::setColor(const QColor& color) {
  if (color == m_color) return;
  m_color = color;
  Q_EMIT colorChanged();
  update();
}

QSGNode* Spinner::updatePaintNode(QSGNode* old, UpdatePaintNodeData*) {
  auto* node = old ? static_cast<NinePatchNode*>(old) : new NinePatchNode;
  const double ratio = window()->effectiveDevicePixelRatio();
  const double side = std::min(width(), height());
  QRectF square(0, 0, side, side);
  square.moveCenter(boundingRect().center());
  const QImage image = spinnerImage(SpinnerClock::instance()->step(), side, m_color.rgb(), ratio);
  node->setPatch(window(), {.image = image}, square.translated(offsetToPixelGrid(*this, square.topLeft())), ratio);
  node->setOpacity(m_color.alphaF());
  return node;
}

void Spinner::itemChange(ItemChange change, const ItemChangeData& data) {
  if (change == ItemDevicePixelRatioHasChanged) update();
  if (change == ItemVisibleHasChanged || change == ItemSceneChange) runWhileVisible();
  QQuickItem::itemChange(change, data);
}

void Spinner::runWhileVisible() {
  SpinnerClock* clock = SpinnerClock::instance();
  const bool wanted = window() && isVisible();
  disconnect(clock, &SpinnerClock::ticked, this, nullptr);
  m_running = wanted ? SpinnerClock::Running(window()) : SpinnerClock::Running();
  if (wanted) connect(clock, &SpinnerClock::ticked, this, &QQuickItem::update);
}

}  // namespace lumagrid
