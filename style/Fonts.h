#pragma once

#include <QtQml/qqmlregistration.h>
#include <QFont>
#include <QObject>

namespace lumagrid {

// The system's font in the sizes of the interface: a size in points of the layout is a pixel size of the font. The
// rounded design of a text is the system's font too: few systems have one, and looking for it would cost start-up.
class Fonts : public QObject {
  Q_OBJECT
  QML_ELEMENT
  QML_SINGLETON

 public:
  // `weight` is a font weight (Font.Medium, Font.DemiBold, Font.Bold).
  Q_INVOKABLE static QFont system(int size, int weight);
};

}  // namespace lumagrid
