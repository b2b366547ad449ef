#pragma once

#include <QtQml/qqmlregistration.h>
#include <QColor>
#include <QQuickItem>

#include "SpinnerClock.h"

namespace lumagrid {

// An indeterminate progress spinner in the middle of the item; it turns in steps while it is visible in an exposed
// window, and costs nothing otherwise. Main thread.
class Spinner : public QQuickItem {
  Q_OBJECT
  QML_ELEMENT
  Q_PROPERTY(QColor color READ color WRITE setColor NOTIFY colorChanged FINAL)

 public:
  explicit Spinner(QQuickItem* parent = nullptr);

  [[nodiscard]] QColor color() const { return m_color; }
  void setColor(const QColor& color);

 Q_SIGNALS:
  void colorChanged();

 protected:
  QSGNode* updatePaintNode(QSGNode* old, UpdatePaintNodeData*) override;
  void itemChange(ItemChange change, const ItemChangeData& data) override;

 private:
  void runWhileVisible();

  QColor m_color = Qt::gray;
  SpinnerClock::Running m_running;
};

}  // namespace lumagrid
