#pragma once

#include <QtQml/qqmlregistration.h>
#include <QQuickItem>

namespace lumagrid {

// An item whose picture is made for the window's device pixels: it is drawn again after changed(), which is the signal
// of its properties, and on another device pixel ratio. Subclasses name it in full, since the QML tools look for the
// name that is written. Main thread.
class PictureItem : public QQuickItem {
  Q_OBJECT
  QML_ANONYMOUS

 public:
  explicit PictureItem(QQuickItem* parent = nullptr) : QQuickItem(parent) {
    setFlag(ItemHasContents);
    update();  // takes part in the first frame, instead of asking for a second one
    connect(this, &PictureItem::changed, this, &QQuickItem::update);
  }

 Q_SIGNALS:
  void changed();

 protected:
  void itemChange(ItemChange change, const ItemChangeData& data) override {
    if (change == ItemDevicePixelRatioHasChanged) update();
    QQuickItem::itemChange(change, data);
  }
};

}  // namespace lumagrid
