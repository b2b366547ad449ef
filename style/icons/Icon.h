#pragma once

#include <QColor>
#include <QFont>

#include "PictureItem.h"

namespace lumagrid {

// One of the project's icons (IconImage.h), in the middle of the item, as crisp as the window's pixels allow. `size` is
// the font size, in points, of the text that the icon belongs to; the item's implicit size follows. `weight` is a font
// weight: up to medium, demi-bold or bold. An unknown name draws nothing.
// With a blur it is the icon's shadow, under a Gaussian of sigma blur / 2. Main thread.
class Icon : public lumagrid::PictureItem {
  Q_OBJECT
  QML_ELEMENT
  Q_PROPERTY(QString name MEMBER m_name NOTIFY changed FINAL)  // as in IconName: "trash", "chevronLeft", …
  Q_PROPERTY(double size MEMBER m_size NOTIFY changed FINAL)
  Q_PROPERTY(int weight MEMBER m_weight NOTIFY changed FINAL)
  Q_PROPERTY(QColor color MEMBER m_color NOTIFY changed FINAL)
  Q_PROPERTY(double blur MEMBER m_blur NOTIFY changed FINAL)

 public:
  explicit Icon(QQuickItem* parent = nullptr);

 protected:
  QSGNode* updatePaintNode(QSGNode* old, UpdatePaintNodeData*) override;

 private:
  void updateImplicitSize();

  QString m_name;
  double m_size = 15;
  int m_weight = QFont::Medium;
  QColor m_color = Qt::black;
  double m_blur = 0;
};

}  // namespace lumagrid
