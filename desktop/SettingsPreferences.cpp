#include "SettingsPreferences.h"

#include <QFileInfo>
#include <QIODevice>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QStandardPaths>
#include <algorithm>

namespace lumagrid {

namespace {

constexpr qint64 kMostBytes = 1 << 20;

bool read(QIODevice& file, QSettings::SettingsMap& values) {
  const QByteArray content = file.read(kMostBytes + 1);
  if (content.size() > kMostBytes) return false;
  const QJsonObject object = QJsonDocument::fromJson(content).object();
  for (auto each = object.begin(); each != object.end(); ++each) {
    const QJsonArray array = each.value().toArray();
    const bool isOfStrings =
        std::all_of(array.begin(), array.end(), [](const auto& value) { return value.isString(); });
    if (each.value().isArray() && isOfStrings) values.insert(each.key(), array.toVariantList());
  }
  return true;
}

bool write(QIODevice& file, const QSettings::SettingsMap& values) {
  QJsonObject object;
  for (auto each = values.begin(); each != values.end(); ++each) {
    object.insert(each.key(), QJsonArray::fromStringList(each.value().toStringList()));
  }
  const QByteArray content = QJsonDocument(object).toJson();
  return file.write(content) == content.size();
}

// The toolkit's own formats read a file of any size whole, and reserve the memory for lists of any length that it
// tells.
QSettings::Format format() {
  static const QSettings::Format format = QSettings::registerFormat(QStringLiteral("json"), &read, &write);
  return format;
}

// A path where nothing can be when what stands in the file's place is a pipe or a device: the toolkit would wait for
// it.
QString filePath() {
  const QString path = QStandardPaths::writableLocation(QStandardPaths::GenericConfigLocation) +
                       QLatin1String("/lumagrid/lumagrid.json");
  const QFileInfo found(path);
  return found.exists() && !found.isFile() && !found.isDir() ? path + QLatin1String("/none") : path;
}

}  // namespace

SettingsPreferences::SettingsPreferences() : m_settings(filePath(), format()) {}

std::optional<QStringList> SettingsPreferences::stringArray(const QString& key) const {
  const QVariant value = m_settings.value(key);
  return value.isValid() ? std::optional(value.toStringList()) : std::nullopt;
}

void SettingsPreferences::set(const QString& key, const QStringList& value) {
  m_settings.setValue(key, value);
}

void SettingsPreferences::removeObject(const QString& key) {
  m_settings.remove(key);
}

}  // namespace lumagrid
