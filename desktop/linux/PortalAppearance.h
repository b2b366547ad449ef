#pragma once

#include <QSet>
#include <QtDBus/QDBusVariant>
#include <optional>

#include "Appearance.h"

class QDBusConnection;

namespace lumagrid {

// What the settings portal tells, live: the desktop's light or dark (org.freedesktop.appearance, color-scheme), high
// contrast and reduced motion, these two also as the desktops called them before the portal had names for them. Without
// a portal, or without a preference, the desktop's palette tells light or dark. Starts with the palette and hears from
// the portal later, so nothing waits for the bus. An override wins over light or dark.
class PortalAppearance final : public Appearance {
  Q_OBJECT

 public:
  explicit PortalAppearance(std::optional<ColorScheme> override = std::nullopt, QObject* parent = nullptr);

 protected:
  bool eventFilter(QObject* object, QEvent* event) override;

 private Q_SLOTS:
  void settingChanged(const QString& group, const QString& key, const QDBusVariant& value);

 private:
  void follow(QDBusConnection bus);
  void take(const QString& group, const QString& key, const QVariant& value);
  void update();

  const std::optional<ColorScheme> m_override;
  ColorScheme m_paletteScheme;
  std::optional<ColorScheme> m_preference;
  QSet<QString> m_wantContrast;  // the settings that ask for it
  QSet<QString> m_wantNoMotion;
};

}  // namespace lumagrid
