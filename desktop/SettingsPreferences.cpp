#include "SettingsPreferences.h"

#include <QStandardPaths>

namespace lumagrid {

SettingsPreferences::SettingsPreferences()
    : m_settings(QStandardPaths::writableLocation(QStandardPaths::GenericConfigLocation) +
                     QLatin1String("/lumagrid/lumagrid.conf"),
                 QSettings::IniFormat) {}

std::optional<QStringList> SettingsPreferences::stringArray(const QString& key) const {
  const QVariant value = m_settings.value(key);
  // A list of one entry is held as that entry.
  if (value.typeId() != QMetaType::QStringList && value.typeId() != QMetaType::QString) return std::nullopt;
  return value.toStringList();
}

void SettingsPreferences::set(const QString& key, const QStringList& value) {
  if (value.isEmpty()) return m_settings.remove(key);
  m_settings.setValue(key, value);
}

void SettingsPreferences::removeObject(const QString& key) {
  m_settings.remove(key);
}

}  // namespace lumagrid
