#pragma once

#include <QString>
#include <QStringList>
#include <optional>

namespace lumagrid {

// The user's preferences: lists of strings under a key. Main thread. Writes are not checked.
class Preferences {
 public:
  virtual ~Preferences() = default;

  // Nothing when the key is absent or its value is not a list of strings.
  [[nodiscard]] virtual std::optional<QStringList> stringArray(const QString& key) const = 0;
  virtual void set(const QString& key, const QStringList& value) = 0;
  virtual void removeObject(const QString& key) = 0;
};

}  // namespace lumagrid
