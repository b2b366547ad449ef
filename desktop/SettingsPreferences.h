#pragma once

#include <QSettings>

#include "Preferences.h"

namespace lumagrid {

// Preferences in the file lumagrid/lumagrid.conf of the user's configuration folder, written soon after each change.
// The file knows no empty list: setting one removes the key.
class SettingsPreferences final : public Preferences {
 public:
  SettingsPreferences();

  [[nodiscard]] std::optional<QStringList> stringArray(const QString& key) const override;
  void set(const QString& key, const QStringList& value) override;
  void removeObject(const QString& key) override;

 private:
  QSettings m_settings;
};

}  // namespace lumagrid
