#include "PortalAppearance.h"

#include <QCoreApplication>
#include <QEvent>
#include <QGuiApplication>
#include <QPalette>
#include <QPointer>
#include <QtDBus/QDBusArgument>
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

// Settings, and the value that asks for it; any other does not.
struct Wish {
  const char* group;
  const char* key;
  const char* value;
};
constexpr Wish kContrastWishes[] = {
    {"org.freedesktop.appearance", "contrast", "1"},
    {"org.gnome.desktop.a11y.interface", "high-contrast", "true"},
};
constexpr Wish kNoMotionWishes[] = {
    {"org.freedesktop.appearance", "reduced-motion", "1"},
    {"org.gnome.desktop.interface", "enable-animations", "false"},
    {"org.kde.kdeglobals.KDE", "AnimationDurationFactor", "0"},
};

constexpr QLatin1String kGroup("org.freedesktop.appearance");
constexpr QLatin1String kKey("color-scheme");
// The portal's values; any other is no preference.
constexpr uint kPreferDark = 1;
constexpr uint kPreferLight = 2;

}  // namespace

PortalAppearance::PortalAppearance(std::optional<ColorScheme> override, QObject* parent)
    : Appearance(override.value_or(colorSchemeOf(QGuiApplication::palette())), Contrast::standard, Motion::full,
                 parent),
      m_override(override),
      m_paletteScheme(colorSchemeOf(QGuiApplication::palette())) {
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

  QDBusMessage read = QDBusMessage::createMethodCall(kService, kPath, kInterface, QStringLiteral("ReadAll"));
  QStringList groups{kGroup};
  for (const auto& wish : kContrastWishes) groups.append(QLatin1String(wish.group));
  for (const auto& wish : kNoMotionWishes) groups.append(QLatin1String(wish.group));
  read << groups;
  auto* watcher = new QDBusPendingCallWatcher(bus.asyncCall(read), this);
  connect(watcher, &QDBusPendingCallWatcher::finished, this, [this, watcher] {
    watcher->deleteLater();
    const auto told = qdbus_cast<QMap<QString, QVariantMap>>(watcher->reply().arguments().value(0));
    for (auto group = told.begin(); group != told.end(); ++group) {
      for (auto setting = group->begin(); setting != group->end(); ++setting) {
        take(group.key(), setting.key(), setting.value());
      }
    }
  });
}

void PortalAppearance::settingChanged(const QString& group, const QString& key, const QDBusVariant& value) {
  take(group, key, value.variant());
}

void PortalAppearance::take(const QString& group, const QString& key, const QVariant& value) {
  if (group == kGroup && key == kKey) {
    m_preference.reset();
    if (value.toUInt() == kPreferDark) m_preference = ColorScheme::dark;
    if (value.toUInt() == kPreferLight) m_preference = ColorScheme::light;
    update();
  }
  const auto note = [&](const auto& wishes, QSet<QString>& wanting) {
    for (const Wish& wish : wishes) {
      if (group != QLatin1String(wish.group) || key != QLatin1String(wish.key)) continue;
      if (value.toString() == QLatin1String(wish.value)) {
        wanting.insert(group);
      } else {
        wanting.remove(group);
      }
    }
  };
  note(kContrastWishes, m_wantContrast);
  note(kNoMotionWishes, m_wantNoMotion);
  setContrast(m_wantContrast.isEmpty() ? Contrast::standard : Contrast::high);
  setMotion(m_wantNoMotion.isEmpty() ? Motion::full : Motion::reduced);
}

void PortalAppearance::update() {
  setColorScheme(m_override.value_or(m_preference.value_or(m_paletteScheme)));
}

}  // namespace lumagrid
