#pragma once

#include <QObject>

namespace lumagrid {

// What the desktop's user wants of every window: light or dark, how strong its lines and texts are, and whether it may
// move by itself. This one stays as it was made; a desktop's own follows the desktop. Main thread.
class Appearance : public QObject {
  Q_OBJECT
  Q_PROPERTY(ColorScheme colorScheme READ colorScheme NOTIFY colorSchemeChanged)

 public:
  enum class ColorScheme { light, dark };
  Q_ENUM(ColorScheme)
  enum class Contrast { standard, high };
  enum class Motion { full, reduced };

  explicit Appearance(ColorScheme colorScheme, Contrast contrast = Contrast::standard, Motion motion = Motion::full,
                      QObject* parent = nullptr)
      : QObject(parent), m_colorScheme(colorScheme), m_contrast(contrast), m_motion(motion) {}

  [[nodiscard]] ColorScheme colorScheme() const { return m_colorScheme; }
  [[nodiscard]] Contrast contrast() const { return m_contrast; }
  [[nodiscard]] Motion motion() const { return m_motion; }

 Q_SIGNALS:
  // After a change; never when it stays as it is.
  void colorSchemeChanged(lumagrid::Appearance::ColorScheme colorScheme);
  void contrastChanged();
  void motionChanged();

 protected:
  void setColorScheme(ColorScheme colorScheme);
  void setContrast(Contrast contrast);
  void setMotion(Motion motion);

 private:
  ColorScheme m_colorScheme;
  Contrast m_contrast;
  Motion m_motion;
};

using ColorScheme = Appearance::ColorScheme;
using Contrast = Appearance::Contrast;

}  // namespace lumagrid
