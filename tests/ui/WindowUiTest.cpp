#include <QTimer>
#include <QTranslator>

#include "ShownName.h"
#include "UiWindow.h"

using namespace lumagrid;

namespace {

// Into a language of brackets.
struct Brackets : QTranslator {
  Brackets() { QCoreApplication::installTranslator(this); }
  [[nodiscard]] bool isEmpty() const override { return false; }
  QString translate(const char*, const char* source, const char*, int) const override {
    return u'[' + QString::fromUtf8(source) + u']';
  }
};

}  // namespace

// What belongs to a window as a whole.
class WindowUiTest : public QObject {
  Q_OBJECT

 private Q_SLOTS:
  void windowsShareTheRecentFolders() {
    const Photos a({QStringLiteral("a.jpg")});
    const Photos b({QStringLiteral("b.jpg")});
    UiApp app;
    UiWindow left(app);
    UiWindow right(app);
    QVERIFY(left.menuBarHeight() > 0 && left.menuBarHeight() < 40);
    QCOMPARE(left.window.size(), QSize(1100, 760 + left.menuBarHeight()));
    const std::vector<MenuEntry>& menu = app.platform.popupMenu.entries;
    left.click("File");
    QVERIFY(!left.isEnabled("File") && menu.empty());
    const auto recent = [&menu](UiWindow& window) {
      window.click("File");
      return menu.front().submenu;
    };
    left.open(a.url());
    right.open(b.url());
    right.openPhoto("b.jpg");
    QVERIFY(left.shows("a.jpg") && left.isEnabled("File"));
    const auto entries = recent(left);
    QVERIFY(entries.size() == 4 && entries[3].title == u"Clear Recents");
    for (int i : {0, 1}) QCOMPARE(entries[i].title, (i == 0 ? b : a).url().displayName());
    left.click("Lumagrid");
    QVERIFY(left.window.geometry().contains(app.platform.popupMenu.position));
    QCOMPARE(menu.back().title, QStringLiteral("Quit"));
    menu.front().action();
    QCOMPARE(app.platform.alert.asked.size(), 1);
    recent(left)[1].action();
    for (UiWindow* window : {&left, &right}) {
      QTRY_VERIFY(window->shows("a.jpg") && window->shows("Sort order") && !window->shows("Grid"));
    }
    recent(right).back().action();  // clears them
    QTRY_VERIFY(!left.isEnabled("File") && !right.isEnabled("File"));
    QVERIFY(app.platform.preferences.values.isEmpty());
  }

  void controlQQuits() {
    UiApp app;
    UiWindow left(app);
    const UiWindow right(app);
    const auto quits = [](const std::function<void()>& act) {
      QTimer::singleShot(0, [&] {
        act();
        QTimer::singleShot(0, [] { QCoreApplication::exit(1); });
      });
      return QGuiApplication::exec() == 0;
    };
    app.platform.alert.whileOpen = [&] { left.press(Qt::Key_Q, Qt::ControlModifier); };
    QVERIFY(!quits([&] { app.app.menus().applicationMenu().front().action(); }));  // a dialog is answered first
    QVERIFY(quits([&] { left.press(Qt::Key_Q, Qt::ControlModifier); }));
  }

  void aLaterStartTakesAWindowThatShowsNoFolderOrANewOne() {
    const Photos first(1);
    const Photos second(2);
    UiApp app;
    const auto opened = [&app] {
      QSet<QByteArray> folders;
      for (QWindow* window : QGuiApplication::allWindows()) {
        ContentView* view = app.app.contentView(qobject_cast<QQuickWindow*>(window));
        folders.insert(window->isVisible() ? view->library()->folderURL().value_or(FileUrl()).path() : "hidden");
      }
      return folders;
    };
    app.app.open({});
    QCOMPARE(opened(), QSet<QByteArray>{""});
    app.app.open({first.url()});
    QCOMPARE(opened(), QSet<QByteArray>{first.url().path()});
    app.app.open({second.url()});
    const QSet<QByteArray> both{first.url().path(), second.url().path()};
    QCOMPARE(opened(), both);
    QGuiApplication::allWindows().first()->close();
    QTRY_COMPARE(QGuiApplication::allWindows().size(), 1);
    const FileUrl closed = opened().contains(first.url().path()) ? second.url() : first.url();
    app.platform.alert.whileOpen = [&] { app.app.open({closed}); };
    app.app.menus().applicationMenu().front().action();
    QCOMPARE(app.platform.alert.asked.size(), 1);
    QCOMPARE(opened(), both);  // once the dialog was answered
  }

  void tabWalksThroughTranslatedControlsInReadingOrder() {
    const Brackets brackets;
    const Photos folder(3);
    UiApp app;
    UiWindow window(app);
    QVERIFY(window.shows("[Choose a folder to start browsing.]"));
    window.click("[Choose Folder]");
    QCOMPARE(app.platform.chooser.asked.join(QString()), QStringLiteral("[Choose a Photo Folder][Choose Folder]"));
    app.platform.decoder.damaged = {photoName(1)};
    window.view.openPath(folder.url());
    QTRY_VERIFY(window.shows("1.jpg"));
    for (const auto& [button, first] : {std::pair("[File]", "[Open Recent]"), {"[Sort order]", "[Name A–Z]"}}) {
      window.click(button);
      QCOMPARE(app.platform.popupMenu.entries.front().title, QString::fromUtf8(first));
    }
    QCOMPARE(app.app.menus().fileMenu().front().submenu.back().title, QStringLiteral("[Clear Recents]"));
    const auto focused = [&window] {
      const QAccessibleInterface* control = QAccessible::queryAccessibleInterface(window.window.activeFocusItem());
      return control ? control->text(QAccessible::Name) : QString();
    };
    const QList<std::pair<QString, Qt::KeyboardModifier>> ordersAndNextClicks{
        {QStringLiteral("[Zoom in to show fewer thumbnails]|[4]|[9]|[16]|[25]|[36]|[Zoom out to show more thumbnails]|"
                        "[Sort order]|[Choose Folder]|"),
         Qt::ControlModifier},
        {QStringLiteral("[Clear]|[Delete]|"), Qt::NoModifier},
        {QStringLiteral("[Grid]|[Choose Folder]|[Previous photo]|[Next photo]|[Move current photo to Trash]"), {}},
    };
    for (const auto& [order, modifier] : ordersAndNextClicks) {
      const QStringList names = (QStringLiteral("Lumagrid|[File]|") + order).split(u'|');
      for (const QString& name : names) QTRY_VERIFY(name.isEmpty() || window.isEnabled(name));
      for (int tabs = 0; focused() != names.first(); ++tabs) {
        QVERIFY(tabs < 20);
        window.press(Qt::Key_Tab);
      }
      for (const QString& name : names + names) {
        QCOMPARE(focused(), name);
        window.press(Qt::Key_Tab);
      }
      QVERIFY(window.shows("[Sort order]") || window.shows("[1 selected]") || window.shows("[No photo selected]"));
      window.click("1.jpg", modifier);
    }
  }

  // … and whatever the name, the texts stand where they stand for another.
  void namesAreShownAsTheyAre() {
    const QStringList names{QStringLiteral("plain.jpg"), QStringLiteral("<b>x<b>\n&amp; %1.jpg"),
                            QStringLiteral("Ǻ漢字ก็\u202E\u05D0.jpg"), QString(251, u'n') + QStringLiteral(".jpg")};
    const Photos folder(names);
    OnlyWindow window(folder.url());
    QList<QRect> places;
    for (const QString& name : names) {
      const QString title = shownName(name);
      QTRY_VERIFY(window.find(title, QAccessible::Button));
      window.openPhoto(title);
      const QStringList texts{title, QStringLiteral("Showing \"%1\".").arg(shownNameInSentence(name)),
                              window.library.counterText()};
      QTRY_VERIFY(window.find(title, QAccessible::StaticText) && window.shows(texts[1]) && window.shows(texts[2]));
      (void)window.grab();  // laid out
      QList<QRect> rects;
      for (const QString& text : texts) rects.append(window.rectOf(text));
      if (places.isEmpty()) places = rects;
      QCOMPARE(rects, places);
      window.press(Qt::Key_Escape);
    }
  }
};

LUMAGRID_UI_TEST_MAIN(WindowUiTest)
#include "WindowUiTest.moc"
