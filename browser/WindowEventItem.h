#pragma once

#include <QtQml/qqmlregistration.h>
#include <QPointer>
#include <QQuickItem>
#include <QQuickWindow>

namespace lumagrid {

// An item without a picture that sees every event of its window before the window does. Subclasses name it in full,
// since the QML tools look for the name that is written. Main thread.
class WindowEventItem : public QQuickItem {
  Q_OBJECT
  QML_ANONYMOUS

 public:
  using QQuickItem::QQuickItem;

 protected:
  // True takes the event: nobody else sees it.
  virtual bool windowEvent(QEvent& event) = 0;

  bool eventFilter(QObject* watched, QEvent* event) final {
    return watched == m_window ? windowEvent(*event) : QQuickItem::eventFilter(watched, event);
  }

  void itemChange(ItemChange change, const ItemChangeData& data) override {
    if (change == ItemSceneChange) {
      if (m_window) m_window->removeEventFilter(this);
      m_window = data.window;
      if (m_window) m_window->installEventFilter(this);
    }
    QQuickItem::itemChange(change, data);
  }

 private:
  QPointer<QQuickWindow> m_window;
};

}  // namespace lumagrid
