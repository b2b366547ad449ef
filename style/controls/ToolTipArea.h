#pragma once

#include <QtQml/qqmlregistration.h>
#include <QBasicTimer>
#include <QPointer>
#include <QQuickItem>
#include <QQuickWindow>

namespace lumagrid {

// Decides when the tooltip of what it lies on shows, and where. It comes when the pointer has been on the item for
// `delay`, and leaves with the pointer, with the item (hidden, disabled or gone), and with whatever else the user does
// in the window or another window does to it: then it does not come again before the pointer does. At most one shows at
// a time. Main thread.
class ToolTipArea : public QQuickItem {
  Q_OBJECT
  QML_ELEMENT
  Q_PROPERTY(QString text MEMBER m_text NOTIFY changed FINAL)  // plain; empty: none shows
  Q_PROPERTY(int delay MEMBER m_delay NOTIFY changed FINAL)    // milliseconds
  Q_PROPERTY(bool isShown READ isShown NOTIFY changed FINAL)

 public:
  explicit ToolTipArea(QQuickItem* parent = nullptr);

  [[nodiscard]] bool isShown() const { return m_isDue && !m_text.isEmpty(); }
  // The top left of a tooltip of this size, in points of the window: centered below the item, above it where there is
  // no room, and within the window's edges.
  Q_INVOKABLE QPointF positionOf(QSizeF toolTip) const;
  [[nodiscard]] static QPointF positionOf(QSizeF toolTip, const QRectF& item, QSizeF window);

 Q_SIGNALS:
  void changed();

 protected:
  void hoverEnterEvent(QHoverEvent* event) override;
  void hoverLeaveEvent(QHoverEvent* event) override;
  void timerEvent(QTimerEvent* event) override;
  void itemChange(ItemChange change, const ItemChangeData& data) override;
  bool eventFilter(QObject* watched, QEvent* event) override;

 private:
  void dismiss();

  QString m_text;
  int m_delay = 700;
  QBasicTimer m_timer;
  bool m_isDue = false;
  QPointer<QQuickWindow> m_watched;  // what the tooltip that shows, or is about to, leaves with
};

}  // namespace lumagrid
