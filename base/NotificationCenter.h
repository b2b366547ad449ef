#pragma once

#include <QObject>
#include <QString>
#include <optional>

#include "FileUrl.h"

namespace lumagrid {

// The notification that a menu posts to have its folder opened by the windows; its object is the folder.
// NOLINTNEXTLINE(readability-identifier-naming): the notification's own name
inline constexpr QLatin1String openRecentFolder("openRecentFolder");

// One-to-many broadcast inside the process. Main thread; observers run inside post().
class NotificationCenter : public QObject {
  Q_OBJECT

 public:
  using QObject::QObject;

  void post(const QString& name, const std::optional<FileUrl>& object) { Q_EMIT posted(name, object); }

 Q_SIGNALS:
  void posted(const QString& name, const std::optional<lumagrid::FileUrl>& object);
};

}  // namespace lumagrid
