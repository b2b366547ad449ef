#pragma once

#include <QSettings>

#include "Preferences.h"

namespace lumagrid {

// Preferences in the file lumagrid/lumagrid.json of the user's configuration folder, written soon after each change.
// Whatever else stands there is as good as empty until something is stored; where nothing can be stored, they last as
// long as the program.
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
