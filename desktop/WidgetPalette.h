#pragma once

#include <QObject>

#include "Appearance.h"

class QPalette;

namespace lumagrid {

// Light or dark, as the palette's own text and window colors tell.
[[nodiscard]] ColorScheme colorSchemeOf(const QPalette& palette);

// Lets dialogs and menus match the window. Nothing happens until the first of them is about to open; from then on the
// application's palette follows the appearance. The desktop's own palette stays where it is of the right kind already.
// Main thread.
class WidgetPalette : public QObject {
  Q_OBJECT

 public:
  explicit WidgetPalette(const Appearance& appearance, QObject* parent = nullptr);

  // To be called before a dialog or menu is made.
  void apply();

 private:
  void update();

  const Appearance& m_appearance;
  bool m_applied = false;
};

}  // namespace lumagrid
