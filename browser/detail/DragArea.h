#pragma once

#include <QtQml/qqmlregistration.h>
#include <QPointF>
#include <QQuickItem>

namespace lumagrid {

// Recognizes a double click and a drag with the left button. A drag begins once the pointer is 10 points away from
// where the button went down; translations are counted from there, in points of the item. Main thread.
class DragArea : public QQuickItem {
  Q_OBJECT
  QML_ELEMENT
  // A drag would move something: the pointer is a hand, closed during the drag.
  Q_PROPERTY(bool canMove MEMBER m_canMove NOTIFY canMoveChanged FINAL)

 public:
  explicit DragArea(QQuickItem* parent = nullptr);

 Q_SIGNALS:
  void canMoveChanged();
  void dragged(QPointF translation);
  void ended(QPointF translation);
  // The drag under way ends without its last translation: something else has taken the mouse.
  void canceled();
  void doubleClicked();

 protected:
  void mousePressEvent(QMouseEvent* event) override;
  void mouseMoveEvent(QMouseEvent* event) override;
  void mouseReleaseEvent(QMouseEvent* event) override;
  void mouseDoubleClickEvent(QMouseEvent* event) override;
  void mouseUngrabEvent() override;

 private:
  void setDragging(bool isDragging);
  void updateCursor();

  bool m_canMove = false;
  bool m_isDragging = false;
  QPointF m_start;
};

}  // namespace lumagrid
