#pragma once

#include <QtQml/qqmlregistration.h>
#include <QEasingCurve>
#include <QObject>
#include <QPointer>

#include "Appearance.h"

class QJSEngine;
class QQmlEngine;

namespace lumagrid {

// The curves that the window's animations follow, and whether there are any; everything that eases takes both from
// here. One for the process, made on first use, for QML and C++ alike. Main thread.
class Curves : public QObject {
  Q_OBJECT
  QML_ELEMENT
  QML_SINGLETON
  Q_PROPERTY(QEasingCurve easeOut READ easeOut CONSTANT FINAL)      // what answers a press, a click or the wheel
  Q_PROPERTY(QEasingCurve easeInOut READ easeInOut CONSTANT FINAL)  // what moves by itself
  // What a duration is multiplied by: 0 where the user wants no motion, so that everything is at once where it goes.
  Q_PROPERTY(int pace READ pace NOTIFY paceChanged FINAL)

 public:
  [[nodiscard]] static Curves* instance();
  static Curves* create(QQmlEngine*, QJSEngine*);

  // The cubic Bézier curves with the control points (0, 0), (0.58, 1) and (0.42, 0), (0.58, 1).
  [[nodiscard]] static QEasingCurve easeOut();
  [[nodiscard]] static QEasingCurve easeInOut();

  // Follows `appearance`, which lives on as its owner likes; full motion without one.
  void setAppearance(const Appearance* appearance);
  [[nodiscard]] int pace() const { return m_pace; }

 Q_SIGNALS:
  void paceChanged();

 private:
  Curves() = default;

  QPointer<const Appearance> m_appearance;
  int m_pace = 1;
};

}  // namespace lumagrid
