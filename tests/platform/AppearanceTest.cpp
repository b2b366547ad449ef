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

class TestAppearance : public Appearance {
 public:
  using Appearance::Appearance;
  using Appearance::setColorScheme;
};

}  // namespace

// The settings portal, on a bus of its own.
class FakePortal : public QObject {
  Q_OBJECT
  Q_CLASSINFO("D-Bus Interface", "org.freedesktop.portal.Settings")

 public:
  explicit FakePortal(const QString& address)
      : m_bus(QDBusConnection::connectToBus(address, QStringLiteral("portal"))) {
    m_bus.registerObject(QStringLiteral("/org/freedesktop/portal/desktop"), this,
                         QDBusConnection::ExportAllSlots | QDBusConnection::ExportAllSignals);
    m_bus.registerService(QStringLiteral("org.freedesktop.portal.Desktop"));
  }
  ~FakePortal() override { QDBusConnection::disconnectFromBus(QStringLiteral("portal")); }

  std::optional<uint> preference;  // none: the portal answers with an error
  int reads = 0;

  void change(const QString& group, const QString& key, uint value) {
    Q_EMIT SettingChanged(group, key, QDBusVariant(value));
  }

 public Q_SLOTS:
  Q_SCRIPTABLE QDBusVariant Read(const QString&, const QString&, const QDBusMessage& call) {
    ++reads;
    if (preference) return QDBusVariant(QVariant::fromValue(QDBusVariant(*preference)));
    call.setDelayedReply(true);
    m_bus.send(call.createErrorReply(QDBusError::Failed, QStringLiteral("not found")));
    return {};
  }

 Q_SIGNALS:
  Q_SCRIPTABLE void SettingChanged(const QString& group, const QString& key, const QDBusVariant& value);

 private:
  QDBusConnection m_bus;
};

class AppearanceTest : public QObject {
  Q_OBJECT

 private Q_SLOTS:
  void followsThePaletteWithoutABus();
  void anOverrideAsksNobody();
  void followsThePortal_data();
  void followsThePortal();
  void widgetsMatchTheWindowOnceOneOpens();
  void cleanupTestCase();

 private:
  QProcess m_bus;
  QString m_address;
};

void AppearanceTest::followsThePaletteWithoutABus() {
  const PortalAppearance appearance;
  QCOMPARE(appearance.colorScheme(), ColorScheme::light);
  QCOMPARE(colorSchemeOf(QPalette(Qt::black)), ColorScheme::dark);
  // What the application sets for its own widgets is not what the desktop wants.
  QApplication::setPalette(QPalette(Qt::black));
  QCOMPARE(appearance.colorScheme(), ColorScheme::light);
  QApplication::setPalette(QPalette());
}

void AppearanceTest::anOverrideAsksNobody() {
  QCOMPARE(PortalAppearance(ColorScheme::dark).colorScheme(), ColorScheme::dark);
  QCOMPARE(PortalAppearance(ColorScheme::light).colorScheme(), ColorScheme::light);
}

void AppearanceTest::followsThePortal_data() {
  // One bus for all rows: the process has one connection to its session bus.
  m_bus.start(QStringLiteral("dbus-daemon"),
              {QStringLiteral("--session"), QStringLiteral("--nofork"), QStringLiteral("--print-address")});
  QVERIFY2(m_bus.waitForReadyRead(), "dbus-daemon does not start");
  m_address = QString::fromLocal8Bit(m_bus.readLine().trimmed());
  qputenv("DBUS_SESSION_BUS_ADDRESS", m_address.toLocal8Bit());

  QTest::addColumn<std::optional<uint>>("preference");
  QTest::addColumn<ColorScheme>("scheme");
  QTest::newRow("dark") << std::optional<uint>(1) << ColorScheme::dark;
  QTest::newRow("light") << std::optional<uint>(2) << ColorScheme::light;
  QTest::newRow("no preference is the palette's") << std::optional<uint>(0) << ColorScheme::light;
  QTest::newRow("an unknown value is no preference") << std::optional<uint>(7) << ColorScheme::light;
  QTest::newRow("an error is no preference") << std::optional<uint>() << ColorScheme::light;
}

void AppearanceTest::followsThePortal() {
  QFETCH(std::optional<uint>, preference);
  QFETCH(ColorScheme, scheme);
  FakePortal portal(m_address);
  portal.preference = preference;
  PortalAppearance appearance;
  QCOMPARE(appearance.colorScheme(), ColorScheme::light);  // nothing is known yet, and nothing was waited for
  QTRY_COMPARE(portal.reads, 1);
  QTRY_COMPARE(appearance.colorScheme(), scheme);

  const QString group = QStringLiteral("org.freedesktop.appearance");
  const QString key = QStringLiteral("color-scheme");
  portal.change(group, key, 2);
  QTRY_COMPARE(appearance.colorScheme(), ColorScheme::light);
  const QSignalSpy changes(&appearance, &Appearance::colorSchemeChanged);
  portal.change(group, QStringLiteral("contrast"), 1);
  portal.change(QStringLiteral("org.gnome.desktop.interface"), key, 1);
  portal.change(group, key, 2);
  portal.change(group, key, 1);
  QTRY_COMPARE(appearance.colorScheme(), ColorScheme::dark);
  QCOMPARE(changes.count(), 1);
  portal.change(group, key, 0);
  QTRY_COMPARE(appearance.colorScheme(), ColorScheme::light);
}

void AppearanceTest::widgetsMatchTheWindowOnceOneOpens() {
  TestAppearance appearance(ColorScheme::dark);
  WidgetPalette palette(appearance);
  appearance.setColorScheme(ColorScheme::light);
  appearance.setColorScheme(ColorScheme::dark);
  QVERIFY(!QCoreApplication::testAttribute(Qt::AA_SetPalette));  // no dialog has opened
  palette.apply();
  QCOMPARE(colorSchemeOf(QApplication::palette()), ColorScheme::dark);
  QCOMPARE(colorSchemeOf(QWidget().palette()), ColorScheme::dark);
  appearance.setColorScheme(ColorScheme::light);
  QCOMPARE(colorSchemeOf(QApplication::palette()), ColorScheme::light);
  QVERIFY(!QCoreApplication::testAttribute(Qt::AA_SetPalette));  // the desktop's own is light already
  appearance.setColorScheme(ColorScheme::dark);
  QCOMPARE(colorSchemeOf(QApplication::palette()), ColorScheme::dark);
  QApplication::setPalette(QPalette());
}

void AppearanceTest::cleanupTestCase() {
  m_bus.terminate();
  m_bus.waitForFinished();
}

int main(int argc, char** argv) {
  const TemporaryHome home;
  QApplication application(argc, argv);
  AppearanceTest test;
  return QTest::qExec(&test, argc, argv);
}

#include "AppearanceTest.moc"
