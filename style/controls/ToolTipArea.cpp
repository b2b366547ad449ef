#include "ToolTipArea.h"

#include <QHoverEvent>
#include <QTimerEvent>
#include <algorithm>
#include <cmath>
#include <utility>

namespace lumagrid {

namespace {

constexpr double kGap = 8;     // between the item and its tooltip
constexpr double kMargin = 8;  // from the window's edges

// The one whose tooltip shows or is about to.
QPointer<ToolTipArea> activeArea;

}  // namespace

ToolTipArea::ToolTipArea(QQuickItem* parent) : QQuickItem(parent) {
  setAcceptHoverEvents(true);
}

QPointF ToolTipArea::positionOf(QSizeF toolTip) const {
  const QQuickItem* surface = window() ? window()->contentItem() : nullptr;
  return surface ? positionOf(toolTip, mapRectToItem(surface, boundingRect()), surface->size()) : QPointF();
}

QPointF ToolTipArea::positionOf(QSizeF toolTip, const QRectF& item, QSizeF window) {
  const double rightmost = std::max(kMargin, window.width() - kMargin - toolTip.width());
  const double below = item.bottom() + kGap;
  const bool fitsBelow = below + toolTip.height() + kMargin <= window.height();
  return {std::round(std::clamp(item.center().x() - toolTip.width() / 2, kMargin, rightmost)),
          std::round(fitsBelow ? below : item.top() - kGap - toolTip.height())};
}

void ToolTipArea::hoverEnterEvent(QHoverEvent* event) {
  event->ignore();  // what it lies on is hovered too
  if (activeArea) activeArea->dismiss();
  activeArea = this;
  m_watched = window();
  m_watched->installEventFilter(this);
  m_timer.start(m_delay, this);
}

void ToolTipArea::hoverLeaveEvent(QHoverEvent* event) {
  event->ignore();
  dismiss();
}

void ToolTipArea::timerEvent(QTimerEvent* event) {
  if (event->timerId() != m_timer.timerId()) return;
  m_timer.stop();
  m_isDue = true;
  Q_EMIT changed();
}

void ToolTipArea::itemChange(ItemChange change, const ItemChangeData& data) {
  if (change == ItemSceneChange || change == ItemVisibleHasChanged || change == ItemEnabledHasChanged) dismiss();
  QQuickItem::itemChange(change, data);
}

bool ToolTipArea::eventFilter(QObject* watched, QEvent* event) {
  if (watched == m_watched) {
    switch (event->type()) {
      case QEvent::MouseButtonPress:
      case QEvent::MouseButtonDblClick:
      case QEvent::TouchBegin:
      case QEvent::Wheel:
      case QEvent::KeyPress:
      case QEvent::FocusOut:
      case QEvent::WindowBlocked:
        dismiss();
        break;
      default:
        break;
    }
  }
  return QQuickItem::eventFilter(watched, event);
}

void ToolTipArea::dismiss() {
  if (activeArea != this) return;
  activeArea = nullptr;
  m_timer.stop();
  if (m_watched) m_watched->removeEventFilter(this);
  m_watched = nullptr;
  if (std::exchange(m_isDue, false)) Q_EMIT changed();
}

}  // namespace lumagrid
