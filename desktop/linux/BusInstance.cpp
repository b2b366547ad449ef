#include "BusInstance.h"

#include <QUrl>
#include <QtDBus/QDBusConnection>
#include <QtDBus/QDBusMessage>
#include <chrono>

#include "SessionBus.h"
#include "moc_BusInstance.cpp"

namespace lumagrid {

namespace {

constexpr QLatin1String kApplication("org.lumagrid.lumagrid");
constexpr QLatin1String kApplicationPath("/org/lumagrid/lumagrid");
constexpr QLatin1String kApplicationInterface("org.freedesktop.Application");

constexpr QLatin1String kBus("org.freedesktop.DBus");
constexpr QLatin1String kBusPath("/org/freedesktop/DBus");
constexpr uint kDoNotQueue = 4;
constexpr uint kExists = 3;  // another has the name

// The bus answers within a millisecond or two, unless something is wrong with it.
constexpr std::chrono::milliseconds kPatienceWithBus{1000};
// The other program may be reading a large picture.
constexpr std::chrono::milliseconds kPatienceWithProgram{5000};

constexpr QLatin1String kActivationToken("activation-token");
constexpr char kTokenVariable[] = "XDG_ACTIVATION_TOKEN";

}  // namespace

BusInstance::BusInstance(QObject* parent) : SingleInstance(parent) {
  if (hasSessionBus()) m_isTaken = std::async(std::launch::async, [this] { return isTaken(); });
}

BusInstance::~BusInstance() {
  if (m_isTaken.valid()) m_isTaken.wait();
}

bool BusInstance::isTaken() {
  QDBusConnection bus = QDBusConnection::sessionBus();
  // First what is called, then the name under which it is found.
  if (!bus.registerObject(kApplicationPath, this, QDBusConnection::ExportScriptableSlots)) return false;
  QDBusMessage request = QDBusMessage::createMethodCall(kBus, kBusPath, kBus, QStringLiteral("RequestName"));
  request << QString(kApplication) << kDoNotQueue;
  return bus.call(request, QDBus::Block, int(kPatienceWithBus.count())).arguments().value(0).toUInt() == kExists;
}

bool BusInstance::handOver(const std::vector<FileUrl>& files) {
  if (!m_isTaken.valid() || m_isTaken.wait_for(kPatienceWithBus) != std::future_status::ready || !m_isTaken.get()) {
    return false;
  }
  QVariantMap platformData;
  if (const QString token = qEnvironmentVariable(kTokenVariable); !token.isEmpty()) {
    platformData[kActivationToken] = token;
  }
  QStringList uris;
  for (const FileUrl& file : files) uris.append(QString::fromLatin1(file.encodedUrl()));
  QDBusMessage request =
      QDBusMessage::createMethodCall(kApplication, kApplicationPath, kApplicationInterface,
                                     files.empty() ? QStringLiteral("Activate") : QStringLiteral("Open"));
  if (!files.empty()) request << uris;
  request << platformData;
  const QDBusMessage reply =
      QDBusConnection::sessionBus().call(request, QDBus::Block, int(kPatienceWithProgram.count()));
  return reply.type() == QDBusMessage::ReplyMessage;
}

void BusInstance::Activate(const QVariantMap& platformData) {
  Open({}, platformData);
}

void BusInstance::Open(const QStringList& uris, const QVariantMap& platformData) {
  std::vector<FileUrl> files;
  for (const QString& uri : uris) {
    if (FileUrl file = FileUrl::fromUrl(QUrl::fromEncoded(uri.toUtf8())); !file.isEmpty()) {
      files.push_back(std::move(file));
    }
  }
  const auto open = [this, files, token = platformData.value(kActivationToken).toString()] {
    // What lets a window come to the front; the toolkit takes it from there.
    if (!token.isEmpty()) qputenv(kTokenVariable, token.toUtf8());
    Q_EMIT openRequested(files);
  };
  QMetaObject::invokeMethod(this, open, Qt::QueuedConnection);
}

}  // namespace lumagrid
