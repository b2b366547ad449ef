#include <QApplication>
#include <QPalette>
#include <QProcess>
#include <QSignalSpy>
#include <QTest>
#include <QtDBus/QtDBus>

#include "PortalAppearance.h"
#include "TemporaryHome.h"
#include "WidgetPalette.h"

using namespace lumagrid;

namespace {

const TemporaryHome kHome;

}  // namespace

// The settings portal, which prefers the dark until it is changed.
class FakePortal : public QObject {
  Q_OBJECT
  Q_CLASSINFO("D-Bus Interface", "org.freedesktop.portal.Settings")

 public Q_SLOTS:
  Q_SCRIPTABLE QDBusVariant Read(const QString&, const QString&) {
    return QDBusVariant(QVariant::fromValue(QDBusVariant(1U)));
  }

 Q_SIGNALS:
  Q_SCRIPTABLE void SettingChanged(const QString& group, const QString& key, const QDBusVariant& value);
};

class AppearanceTest : public QObject {
  Q_OBJECT

 private Q_SLOTS:
  void followsThePaletteWithoutABus() {
    const PortalAppearance appearance;
    QCOMPARE(appearance.colorScheme(), ColorScheme::light);
    QApplication::setPalette(QPalette(Qt::black));  // for the application's own widgets: not what the desktop wants
    QCOMPARE(colorSchemeOf(QApplication::palette()), ColorScheme::dark);
    QCOMPARE(appearance.colorScheme(), ColorScheme::light);
    QApplication::setPalette(QPalette());
  }

  void followsThePortal() {
    QProcess daemon;
    daemon.start(QStringLiteral("dbus-daemon"),
                 {QStringLiteral("--session"), QStringLiteral("--nofork"), QStringLiteral("--print-address")});
    QVERIFY2(daemon.waitForReadyRead(), "dbus-daemon does not start");
    qputenv("DBUS_SESSION_BUS_ADDRESS", daemon.readLine().trimmed());
    FakePortal portal;
    auto bus = QDBusConnection::connectToBus(QDBusConnection::SessionBus, QStringLiteral("portal"));
    bus.registerObject(QStringLiteral("/org/freedesktop/portal/desktop"), &portal,
                       QDBusConnection::ExportAllSlots | QDBusConnection::ExportAllSignals);
    bus.registerService(QStringLiteral("org.freedesktop.portal.Desktop"));

    const PortalAppearance overridden(ColorScheme::light);
    const PortalAppearance appearance;
    const QSignalSpy changes(&appearance, &Appearance::colorSchemeChanged);
    WidgetPalette palette(appearance);
    QCOMPARE(appearance.colorScheme(), ColorScheme::light);  // nothing is known yet, and nothing was waited for
    QTRY_COMPARE(appearance.colorScheme(), ColorScheme::dark);
    QVERIFY(!QCoreApplication::testAttribute(Qt::AA_SetPalette));  // no dialog has opened
    palette.apply();
    const auto change = [&portal](const char* group, const char* key, uint value) {
      Q_EMIT portal.SettingChanged(QLatin1String(group), QLatin1String(key), QDBusVariant(value));
    };
    for (const uint light : {2U, 0U}) {  // without a preference, as the desktop's palette
      QCOMPARE(colorSchemeOf(QWidget().palette()), ColorScheme::dark);
      change("org.freedesktop.appearance", "contrast", 2);
      change("org.gnome.desktop.interface", "color-scheme", 2);
      change("org.freedesktop.appearance", "color-scheme", 1);
      change("org.freedesktop.appearance", "color-scheme", light);
      QTRY_COMPARE(appearance.colorScheme(), ColorScheme::light);
      QVERIFY(!QCoreApplication::testAttribute(Qt::AA_SetPalette));  // the desktop's own is light already
      change("org.freedesktop.appearance", "color-scheme", 1);
      QTRY_COMPARE(appearance.colorScheme(), ColorScheme::dark);
    }
    QCOMPARE(changes.count(), 5);
    QCOMPARE(overridden.colorScheme(), ColorScheme::light);
    QDBusConnection::disconnectFromBus(QStringLiteral("portal"));
    daemon.terminate();
    daemon.waitForFinished();
  }
};

QTEST_MAIN(AppearanceTest)
#include "AppearanceTest.moc"
