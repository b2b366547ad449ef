#include "PortalAppearance.h"

#include <QCoreApplication>
#include <QEvent>
#include <QGuiApplication>
#include <QPalette>
#include <QPointer>
#include <QtDBus/QDBusConnection>
#include <QtDBus/QDBusMessage>
#include <QtDBus/QDBusPendingCallWatcher>

#include "SessionBus.h"
#include "WidgetPalette.h"
#include "WorkerPool.h"
#include "moc_PortalAppearance.cpp"

namespace lumagrid {

namespace {

constexpr QLatin1String kService("org.freedesktop.portal.Desktop");
constexpr QLatin1String kPath("/org/freedesktop/portal/desktop");
constexpr QLatin1String kInterface("org.freedesktop.portal.Settings");
constexpr QLatin1String kGroup("org.freedesktop.appearance");
constexpr QLatin1String kKey("color-scheme");

// The portal's values; any other is no preference.
constexpr uint kPreferDark = 1;
constexpr uint kPreferLight = 2;

}  // namespace

PortalAppearance::PortalAppearance(std::optional<ColorScheme> override, QObject* parent)
    : Appearance(override.value_or(colorSchemeOf(QGuiApplication::palette())), parent),
      m_paletteScheme(colorSchemeOf(QGuiApplication::palette())) {
  if (override) return;
  QCoreApplication::instance()->installEventFilter(this);
  if (!hasSessionBus()) return;
  // Connecting waits for the bus to answer: elsewhere.
  const auto connectToBus = [self = QPointer<PortalAppearance>(this)] {
    const QDBusConnection bus = QDBusConnection::sessionBus();
    QMetaObject::invokeMethod(
        QCoreApplication::instance(),
        [self, bus] {
          if (self && bus.isConnected()) self->follow(bus);
        },
        Qt::QueuedConnection);
  };
  startWork(connectToBus, 0);
}

bool PortalAppearance::eventFilter(QObject* object, QEvent* event) {
  // A palette that the application set itself says nothing about the desktop.
  if (event->type() == QEvent::ApplicationPaletteChange && !QCoreApplication::testAttribute(Qt::AA_SetPalette)) {
    m_paletteScheme = colorSchemeOf(QGuiApplication::palette());
    update();
  }
  return Appearance::eventFilter(object, event);
}

void PortalAppearance::follow(QDBusConnection bus) {
  qRegisterMetaType<QDBusVariant>();  // the connection looks the slot's types up by their names
  // From any sender: naming the portal here would wait for the bus to look up its owner.
  bus.connect(QString(), kPath, kInterface, QStringLiteral("SettingChanged"), this,
              SLOT(settingChanged(QString, QString, QDBusVariant)));

  QDBusMessage read = QDBusMessage::createMethodCall(kService, kPath, kInterface, QStringLiteral("Read"));
  read << QString(kGroup) << QString(kKey);
  auto* watcher = new QDBusPendingCallWatcher(bus.asyncCall(read), this);
  connect(watcher, &QDBusPendingCallWatcher::finished, this, [this, watcher] {
    watcher->deleteLater();
    const QDBusMessage reply = watcher->reply();
    if (reply.type() == QDBusMessage::ReplyMessage) setPreference(reply.arguments().value(0));
  });
}

void PortalAppearance::settingChanged(const QString& group, const QString& key, const QDBusVariant& value) {
  if (group == kGroup && key == kKey) setPreference(QVariant::fromValue(value));
}

void PortalAppearance::setPreference(const QVariant& value) {
  QVariant preference = value;  // a variant in a variant, from some portals
  while (preference.metaType() == QMetaType::fromType<QDBusVariant>()) {
    preference = preference.value<QDBusVariant>().variant();
  }
  m_preference.reset();
  if (preference.toUInt() == kPreferDark) m_preference = ColorScheme::dark;
  if (preference.toUInt() == kPreferLight) m_preference = ColorScheme::light;
  update();
}

void PortalAppearance::update() {
  setColorScheme(m_preference.value_or(m_paletteScheme));
}

}  // namespace lumagrid
