#pragma once

#include <QObject>

namespace lumagrid {

// Whether the window is light or dark. This one stays as it was made; a desktop's own follows the desktop. Main thread.
class Appearance : public QObject {
  Q_OBJECT
  Q_PROPERTY(ColorScheme colorScheme READ colorScheme NOTIFY colorSchemeChanged)

 public:
  enum class ColorScheme { light, dark };
  Q_ENUM(ColorScheme)

  explicit Appearance(ColorScheme colorScheme, QObject* parent = nullptr)
      : QObject(parent), m_colorScheme(colorScheme) {}

  [[nodiscard]] ColorScheme colorScheme() const { return m_colorScheme; }

 Q_SIGNALS:
  // After a change; never when the scheme stays as it is.
  void colorSchemeChanged(lumagrid::Appearance::ColorScheme colorScheme);

 protected:
  void setColorScheme(ColorScheme colorScheme);

 private:
  ColorScheme m_colorScheme;
};

using ColorScheme = Appearance::ColorScheme;

}  // namespace lumagrid
