#include <QSignalSpy>
#include <QTest>
#include <QtDBus>
#include <QtWidgets>
#include <future>

#include "PortalAppearance.h"
#include "PortalTrash.h"
#include "QtAlert.h"
#include "QtFolderChooser.h"
#include "QtPopupMenu.h"
#include "Table.h"
#include "TemporaryHome.h"
#include "WidgetPalette.h"

using namespace lumagrid;

namespace {

const TemporaryHome kHome;

// Calls `answer` from the event loop of the modal dialog that opens next.
template <typename Dialog>
void whenOpen(std::function<void(Dialog&)> answer) {
  QTimer::singleShot(0, [answer] { answer(dynamic_cast<Dialog&>(*QApplication::activeModalWidget())); });
}

QMenu* openMenu() {
  return qobject_cast<QMenu*>(QApplication::activePopupWidget());
}

}  // namespace

// The settings portal, which prefers the dark until it is changed.
class FakeSettings : public QDBusAbstractAdaptor {
  Q_OBJECT
  Q_CLASSINFO("D-Bus Interface", "org.freedesktop.portal.Settings")

 public:
  explicit FakeSettings(QObject* portal) : QDBusAbstractAdaptor(portal) {}

 public Q_SLOTS:
  QMap<QString, QVariantMap> ReadAll(const QStringList& groups) {
    return {{groups.front(), {{QStringLiteral("color-scheme"), 1U}}}};
  }

 Q_SIGNALS:
  void SettingChanged(const QString& group, const QString& key, const QDBusVariant& value);
};

// The Trash's portal, which takes one file.
class FakeTrashPortal : public QDBusAbstractAdaptor {
  Q_OBJECT
  Q_CLASSINFO("D-Bus Interface", "org.freedesktop.portal.Trash")

 public:
  explicit FakeTrashPortal(QObject* portal) : QDBusAbstractAdaptor(portal) {}
  QStringList asked;

 public Q_SLOTS:
  uint TrashFile(const QDBusUnixFileDescriptor& file) {
    asked.append(QFile::symLinkTarget(QStringLiteral("/proc/self/fd/%1").arg(file.fileDescriptor())));
    return asked.size() == 1 ? 1 : 0;
  }
};

class DesktopTest : public QObject {
  Q_OBJECT

 private:
  MenuEntry entry(const char* title) {
    return {.title = QString::fromLatin1(title), .action = [this, title] { m_ran = openMenu() ? "too early" : title; }};
  }
  void open(const std::vector<MenuEntry>& entries) { m_menu.open(&m_window, QPoint(10, 10), entries); }

  Appearance m_appearance{ColorScheme::light};
  WidgetPalette m_palette{m_appearance};
  QWindow m_window;
  QtPopupMenu m_menu{m_palette};
  QByteArray m_ran;  // the menu entry

 private Q_SLOTS:
  void initTestCase() { m_window.show(); }

  // Dialogs and menus leave nothing. The font library caches what the system has not.
  void cleanupTestCase() {
    QVERIFY(QDir(QFile::decodeName(kHome.path() + "/cache/fontconfig")).removeRecursively());
    QCOMPARE(filesBelow(kHome.path()), QStringList());
  }

  void alertAnswers() {
    QString shown;
    const auto ask = [&](const std::function<void(QMessageBox&)>& answer) {
      whenOpen<QMessageBox>([&shown, answer](QMessageBox& box) {
        shown = box.defaultButton()->text();
        for (const QLabel* label : box.findChildren<QLabel*>()) {
          if (label->isVisible() && label->textFormat() == Qt::PlainText) shown += label->text();
        }
        answer(box);
      });
      // A name that runs leftwards, set apart, turns no sentence around.
      return QtAlert(m_palette).runModal(
          {QStringLiteral("\u2068a\u2069 \u05D0"),
           QStringLiteral("\u2068\u05D0\u2069 <img src=x>\n&amp; will be moved."),
           {{QStringLiteral("Move && Go"), AlertRole::accept}, {QStringLiteral("Stay"), AlertRole::cancel}}});
    };
    QCOMPARE(ask([](QMessageBox& box) { QTest::keyClick(&box, Qt::Key_Return); }), AlertRole::accept);
    QCOMPARE(ask([](QMessageBox& box) { QTest::keyClick(&box, Qt::Key_Escape); }), AlertRole::cancel);
    const auto leave = [this](QMessageBox& box) {
      if (box.windowHandle()->transientParent() == &m_window && box.isModal()) box.done(-5);
    };
    QCOMPARE(ask(leave), AlertRole::cancel);  // it went unanswered
    QCOMPARE(shown, QStringLiteral("Move &&&& Go\u200F\u2068a\u2069 \u05D0\u200E\u2068\u05D0\u2069 <img src=x>\n"
                                   "&amp; will be moved."));
  }

  void chooserReturnsAnExistingFolder() {
    const QString folder = QFile::decodeName(kHome.path() + "/Photos & <b>more");
    QVERIFY(QDir().mkpath(folder));
    bool isFit = false;
    whenOpen<QFileDialog>([&](QFileDialog& dialog) {
      const auto* newFolder = dialog.findChild<QToolButton*>(QStringLiteral("newFolderButton"));
      isFit = dialog.fileMode() == QFileDialog::Directory && dialog.windowTitle() == QStringLiteral("Title") &&
              dialog.labelText(QFileDialog::Accept) == QStringLiteral("Choose") &&
              dialog.windowHandle()->transientParent() == &m_window && newFolder && !newFolder->isEnabled();
      dialog.setDirectory(folder);
      QMetaObject::invokeMethod(&dialog, "accept");
    });
    QtFolderChooser chooser(m_palette);
    QCOMPARE(chooser.chooseFolder(QStringLiteral("Title"), QStringLiteral("Choose")), FileUrl::fromPath(folder));
    QVERIFY(isFit);
    whenOpen<QFileDialog>([](QFileDialog& dialog) { dialog.reject(); });
    QCOMPARE(chooser.chooseFolder(QString(), QString()), std::nullopt);
  }

  void menuRunsTheChosenEntryOnceItHasGone() {
    MenuEntry first = entry("Tom & Jerry");
    first.mark = MenuEntry::Mark::check;
    MenuEntry second = entry("second");
    second.shortcut = QStringLiteral("Ctrl+Q");
    const std::vector<MenuEntry> entries = {
        first, {}, second, {.title = QStringLiteral("More"), .submenu = {entry("inner")}}};
    const auto choose = [&](const QList<QKeyCombination>& keys) {
      m_ran.clear();
      open(entries);
      for (const QKeyCombination key : keys) QTest::keyClick(openMenu(), key.key(), key.keyboardModifiers());
      QCoreApplication::processEvents();
      return m_ran;
    };
    QCOMPARE(choose({Qt::Key_Down, Qt::Key_Down, Qt::Key_Return}), QByteArray("second"));  // over the separator
    QCOMPARE(choose({Qt::Key_Up, Qt::Key_Right, Qt::Key_Return}), QByteArray("inner"));
    QCOMPARE(choose({Qt::CTRL | Qt::Key_Q, Qt::Key_Escape}), QByteArray());
    QVERIFY(!openMenu());
    open(entries);
    QCOMPARE(openMenu()->windowHandle()->transientParent(), &m_window);
    const QList<QAction*> actions = openMenu()->actions();
    QCOMPARE(actions[0]->text(), QStringLiteral("Tom && Jerry"));
    QCOMPARE(actions[2]->text(), QStringLiteral("second\tCtrl+Q"));
    QVERIFY(actions[0]->isChecked() && !actions[2]->isCheckable());
  }

  void oneMenuIsOpenAtATime() {
    MenuEntry second = entry("second");
    second.action = [this] { open({entry("third")}); };
    open({second});  // the one that was open goes
    QCoreApplication::processEvents();
    for (const auto key : {Qt::Key_Down, Qt::Key_Return}) QTest::keyClick(openMenu(), key);
    QTRY_VERIFY(openMenu());
    QCOMPARE(openMenu()->actions().first()->text(), QStringLiteral("third"));
    openMenu()->close();
  }

  void followsThePaletteWithoutABus() {
    const PortalAppearance appearance;
    QCOMPARE(appearance.colorScheme(), ColorScheme::light);
    QApplication::setPalette(QPalette(Qt::black));  // for the application's own widgets: not what the desktop wants
    QCOMPARE(colorSchemeOf(QApplication::palette()), ColorScheme::dark);
    QCOMPARE(appearance.colorScheme(), ColorScheme::light);
    QApplication::setPalette(QPalette());
  }

  void asksThePortals() {
    QProcess daemon;
    daemon.start(QStringLiteral("dbus-daemon"),
                 {QStringLiteral("--session"), QStringLiteral("--nofork"), QStringLiteral("--print-address")});
    QVERIFY2(daemon.waitForReadyRead(), "dbus-daemon does not start");
    qputenv("DBUS_SESSION_BUS_ADDRESS", daemon.readLine().trimmed());
    qDBusRegisterMetaType<QMap<QString, QVariantMap>>();
    QObject portal;
    FakeSettings settings(&portal);
    FakeTrashPortal trash(&portal);
    auto bus = QDBusConnection::connectToBus(QDBusConnection::SessionBus, QStringLiteral("portal"));
    bus.registerObject(QStringLiteral("/org/freedesktop/portal/desktop"), &portal, QDBusConnection::ExportAdaptors);
    bus.registerService(QStringLiteral("org.freedesktop.portal.Desktop"));

    const PortalAppearance overridden(ColorScheme::light);
    const PortalAppearance appearance;
    const QSignalSpy changes(&appearance, &Appearance::colorSchemeChanged);
    WidgetPalette palette(appearance);
    QCOMPARE(appearance.colorScheme(), ColorScheme::light);  // nothing is known yet, and nothing was waited for
    QTRY_COMPARE(appearance.colorScheme(), ColorScheme::dark);
    QVERIFY(!QCoreApplication::testAttribute(Qt::AA_SetPalette));  // no dialog has opened
    palette.apply();
    const auto change = [&settings](const char* group, const char* key, const QVariant& value) {
      Q_EMIT settings.SettingChanged(QLatin1String(group), QLatin1String(key), QDBusVariant(value));
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

    // By the names of the portal, and by those that desktops had before; each as long as one of them asks for it.
    for (const auto& [group, key, wanting, other] :
         std::initializer_list<std::tuple<const char*, const char*, QVariant, QVariant>>{
             {"org.freedesktop.appearance", "contrast", 1U, 0U},
             {"org.gnome.desktop.a11y.interface", "high-contrast", true, false},
         }) {
      change(group, key, wanting);
      QTRY_COMPARE(appearance.contrast(), Contrast::high);
      change(group, key, other);
      QTRY_COMPARE(appearance.contrast(), Contrast::standard);
    }
    for (const auto& [group, key, wanting, other] :
         std::initializer_list<std::tuple<const char*, const char*, QVariant, QVariant>>{
             {"org.freedesktop.appearance", "reduced-motion", 1U, 0U},
             {"org.gnome.desktop.interface", "enable-animations", false, true},
             {"org.kde.kdeglobals.KDE", "AnimationDurationFactor", QStringLiteral("0"), QStringLiteral("1")},
         }) {
      change(group, key, wanting);
      QTRY_COMPARE(overridden.motion(), Appearance::Motion::reduced);  // light or dark alone is overridden
      change(group, key, other);
      QTRY_COMPARE(overridden.motion(), Appearance::Motion::full);
    }

    const QByteArray photo = kHome.path() + "/data/a.jpg";
    QVERIFY(QDir().mkpath(QFile::decodeName(kHome.path() + "/data")) && writeFile(photo, "a"));
    const auto move = [&photo](const FileIdentity& meant) {
      // The portal of this test is served while the call waits.
      auto reason = std::async(std::launch::async,
                               [&] { return PortalTrash().trashItem(FileUrl::fromPath(photo), meant).has_value(); });
      while (reason.wait_for(std::chrono::milliseconds(1)) != std::future_status::ready) {
        QCoreApplication::processEvents();
      }
      return !reason.get();
    };
    const FileIdentity meant = FileIdentity::of(FileUrl::fromPath(photo));
    QVERIFY(move(meant));
    QVERIFY(!move(meant));  // the portal says no
    QVERIFY(writeFile(photo, "other") && !move(meant));
    QCOMPARE(trash.asked, QStringList(2, QFile::decodeName(photo)));  // never for the other photo
    QVERIFY(QFile::remove(QFile::decodeName(photo)));
    QDBusConnection::disconnectFromBus(QStringLiteral("portal"));
    daemon.terminate();
    daemon.waitForFinished();
    QTRY_VERIFY(!QDBusConnection::sessionBus().isConnected());
    QCOMPARE(appearance.colorScheme(), ColorScheme::dark);  // stays as it was when the bus goes
  }
};

QTEST_MAIN(DesktopTest)
#include "DesktopTest.moc"
