#pragma once

#include <QtQml/qqmlregistration.h>
#include <QColor>
#include <QObject>
#include <QPointer>

#include "Appearance.h"
#include "SystemColors.h"

class QJSEngine;
class QQmlEngine;

namespace lumagrid {

// The window's named colors, sRGB; all but accent and danger follow the appearance. One for the process, made on first
// use, for QML and C++ alike. Main thread.
class Palette : public QObject {
  Q_OBJECT
  QML_NAMED_ELEMENT(WindowPalette)  // QtQuick has a Palette of its own, and that one wins
  QML_SINGLETON
  Q_PROPERTY(QColor line READ line NOTIFY changed FINAL)
  Q_PROPERTY(QColor text READ text NOTIFY changed FINAL)
  Q_PROPERTY(QColor muted READ muted NOTIFY changed FINAL)
  Q_PROPERTY(QColor accent READ accent CONSTANT FINAL)
  Q_PROPERTY(QColor danger READ danger CONSTANT FINAL)
  Q_PROPERTY(QColor softButton READ softButton NOTIFY changed FINAL)
  Q_PROPERTY(QColor windowBackground READ windowBackground NOTIFY changed FINAL)
  Q_PROPERTY(QColor focusRing READ focusRing NOTIFY changed FINAL)
  Q_PROPERTY(QColor errorBackground READ errorBackground CONSTANT FINAL)
  Q_PROPERTY(bool isDark READ isDark NOTIFY changed FINAL)

 public:
  [[nodiscard]] static Palette* instance();
  static Palette* create(QQmlEngine*, QJSEngine*);

  // Follows `appearance`, which lives on as its owner likes; light, of standard contrast, without one.
  void setAppearance(const Appearance* appearance);

  [[nodiscard]] QColor line() const { return withOpacity(text(), m_contrast == Contrast::high ? 0.5 : 0.1); }
  [[nodiscard]] QColor text() const { return m_colors.primaryContent; }
  [[nodiscard]] QColor muted() const { return m_colors.secondaryContent; }
  [[nodiscard]] QColor accent() const { return {31, 111, 95}; }
  [[nodiscard]] QColor danger() const { return {182, 63, 47}; }
  [[nodiscard]] QColor softButton() const { return withOpacity(text(), 0.1); }
  [[nodiscard]] QColor windowBackground() const { return m_colors.windowBackground; }
  // The accent, as light as it takes to stand out from what is dark.
  [[nodiscard]] QColor focusRing() const { return isDark() ? QColor(79, 180, 158) : accent(); }
  // What the color of danger can be read on: nothing dark, whatever the appearance.
  [[nodiscard]] static QColor errorBackground() { return SystemColors::of(ColorScheme::light).windowBackground; }
  [[nodiscard]] bool isDark() const { return m_scheme == ColorScheme::dark; }

  // `color` with its own opacity multiplied by `opacity`.
  Q_INVOKABLE static QColor withOpacity(QColor color, double opacity);

 Q_SIGNALS:
  void changed();

 private:
  Palette() = default;
  void follow(ColorScheme scheme, Contrast contrast);

  QPointer<const Appearance> m_appearance;
  ColorScheme m_scheme = ColorScheme::light;
  Contrast m_contrast = Contrast::standard;
  SystemColors m_colors = SystemColors::of(ColorScheme::light);
};

}  // namespace lumagrid
