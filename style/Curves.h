#pragma once

#include <QtQml/qqmlregistration.h>
#include <QEasingCurve>
#include <QObject>

namespace lumagrid {

// The curves that the window's animations follow; everything that eases takes its curve from here. Main thread.
class Curves : public QObject {
  Q_OBJECT
  QML_ELEMENT
  QML_SINGLETON
  Q_PROPERTY(QEasingCurve easeOut READ easeOut CONSTANT FINAL)      // what answers a press, a click or the wheel
  Q_PROPERTY(QEasingCurve easeInOut READ easeInOut CONSTANT FINAL)  // what moves by itself

 public:
  // The cubic Bézier curves with the control points (0, 0), (0.58, 1) and (0.42, 0), (0.58, 1).
  [[nodiscard]] static QEasingCurve easeOut();
  [[nodiscard]] static QEasingCurve easeInOut();
};

}  // namespace lumagrid
