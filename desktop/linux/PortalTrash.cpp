#include "PortalTrash.h"

#include <fcntl.h>
#include <sys/stat.h>

#include <QFileInfo>
#include <QtDBus/QDBusConnection>
#include <QtDBus/QDBusMessage>
#include <QtDBus/QDBusUnixFileDescriptor>
#include <cerrno>

#include "FileDescriptor.h"
#include "SystemError.h"

namespace lumagrid {

bool PortalTrash::isNeeded() {
  return QFileInfo::exists(QStringLiteral("/.flatpak-info"));
}

std::optional<QString> PortalTrash::trashItem(const FileUrl& file, const FileIdentity& meant) {
  const FileDescriptor photo =
      FileDescriptor::from([&] { return ::open(file.path().constData(), O_PATH | O_NOFOLLOW | O_CLOEXEC); });
  struct stat status = {};
  if (!photo.isOpen() || ::fstat(photo.number(), &status) != 0) return systemErrorText(errno);
  if (!meant.isOfAFile() || FileIdentity(status) != meant) return QStringLiteral("It is not the same photo any more");

  QDBusMessage request = QDBusMessage::createMethodCall(
      QStringLiteral("org.freedesktop.portal.Desktop"), QStringLiteral("/org/freedesktop/portal/desktop"),
      QStringLiteral("org.freedesktop.portal.Trash"), QStringLiteral("TrashFile"));
  request << QVariant::fromValue(QDBusUnixFileDescriptor(photo.number()));
  constexpr uint kMoved = 1;
  const QDBusMessage reply = QDBusConnection::sessionBus().call(request);
  if (reply.type() == QDBusMessage::ReplyMessage && reply.arguments().value(0).toUInt() == kMoved) return std::nullopt;
  return QStringLiteral("The desktop's Trash did not take it");
}

}  // namespace lumagrid
