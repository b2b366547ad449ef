#pragma once

#include <QtDBus/QDBusVariant>
#include <optional>

#include "Appearance.h"

class QDBusConnection;

namespace lumagrid {

// The desktop's light or dark: the preference that the settings portal tells (org.freedesktop.appearance,
// color-scheme), live; without a portal, or without a preference, what the desktop's palette looks like. Starts with
// the palette and hears from the portal later, so nothing waits for the bus. An override wins over all of it, and asks
// nobody.
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
  void setPreference(const QVariant& value);
  void update();

  ColorScheme m_paletteScheme;
  std::optional<ColorScheme> m_preference;
};

}  // namespace lumagrid
