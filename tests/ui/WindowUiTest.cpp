#include <QTimer>
#include <QTranslator>

#include "PhotoThumbnailTile.h"
#include "PictureStore.h"
#include "ShownName.h"
#include "StartAhead.h"
#include "ThumbnailStore.h"
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

QSet<QString> textsBelow(QAccessibleInterface* parent) {
  QSet<QString> texts;
  for (int i = 0; i < parent->childCount(); ++i) {
    QAccessibleInterface* child = parent->child(i);
    if (!child || child->state().invisible) continue;
    texts.unite({child->text(QAccessible::Name), child->text(QAccessible::Description)});
    texts.unite(textsBelow(child));
  }
  return texts;
}

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
    QStringList titles;
    for (const MenuEntry& entry : recent(left)) titles.append(entry.title);
    QCOMPARE(titles,
             (QStringList{b.url().displayName(), a.url().displayName(), QString(), QStringLiteral("Clear Recents")}));
    QCOMPARE(menu.front().title, QStringLiteral("Open Recent"));
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

  void fixedTextsAreTranslatedAndOthersAreNot() {
    const Brackets brackets;
    const Photos folder(3);
    UiApp app;
    UiWindow window(app);
    const auto hasNoOther = [&window](QSet<QString> untranslated) {
      untranslated.unite({QString(), QStringLiteral("Lumagrid"), window.library.statusMessage()});
      for (const QString& text : textsBelow(QAccessible::queryAccessibleInterface(&window.window))) {
        const bool isTranslated = text.startsWith(u'[') && text.endsWith(u']');
        if (isTranslated == untranslated.contains(text)) return qInfo() << text, false;
      }
      return true;
    };
    const QSet<QString> names{photoName(0), photoName(1), photoName(2)};
    QVERIFY(hasNoOther({}) && window.shows("[Choose a folder to start browsing.]"));
    window.click("[Choose Folder]");
    QCOMPARE(app.platform.chooser.asked,
             (QStringList{QStringLiteral("[Choose a Photo Folder]"), QStringLiteral("[Choose Folder]")}));
    window.view.openPath(folder.url());
    QTRY_VERIFY(window.shows(photoName(2)));
    QVERIFY(hasNoOther(names));
    for (const auto& [button, first] : {std::pair("[Sort order]", "[Name A–Z]"), {"[File]", "[Open Recent]"}}) {
      window.click(button);
      QCOMPARE(app.platform.popupMenu.entries.front().title, QString::fromUtf8(first));
    }
    QCOMPARE(app.platform.popupMenu.entries.front().submenu.back().title, QStringLiteral("[Clear Recents]"));
    window.library.toggleSelection(1);
    QTRY_VERIFY(window.shows("[1 selected]") && hasNoOther(names));
    window.click("[Delete]");
    QCOMPARE(app.platform.alert.asked.last().first(), QStringLiteral("Move 1 photo to Trash?"));
    app.platform.decoder.damaged = {photoName(0)};
    window.view.handleTileClick(0, Qt::NoModifier);
    QTRY_VERIFY(window.shows("[Next photo]"));
    QVERIFY(hasNoOther({photoName(0), window.library.counterText()}) && window.shows("[No photo selected]"));
  }

  void aStartMakesTheThumbnailsOfItsWindow() {
    const Photos shown(16);
    const Photos opening(16);
    const OnlyWindow window(shown.url());
    const double bound = PhotoThumbnailTile::maxPixelSize(window.rectOf("0.jpg").width());
    FakeImageDecoder decoder;
    PictureStore pictures(decoder);
    StartAhead ahead(opening.url(), pictures);
    QCOMPARE(ahead.takeScan().byName.size(), 16U);
    for (const QString& name : numberedNames(16)) {
      QTRY_VERIFY(!ThumbnailStore::cachedThumbnail(opening.url(name), bound).isNull());
    }
  }

  void tabWalksInReadingOrder() {
    const Photos folder(3);
    OnlyWindow window(folder.url());
    const auto focused = [&window] {
      const QAccessibleInterface* control = QAccessible::queryAccessibleInterface(window.window.activeFocusItem());
      return control ? control->text(QAccessible::Name) : QString();
    };
    // Left of the control; that of the tiles, which have no name together, around one.
    const auto ringColor = [&window](const QString& name) {
      const QRect rect = window.rectOf(name.isEmpty() ? photoName(0) : name);
      return window.grab().pixelColor(rect.left() - (name.isEmpty() ? 4 : 3), rect.center().y());
    };
    const QList<std::pair<const char*, Qt::KeyboardModifier>> ordersAndNextClicks{
        {"Zoom in to show fewer thumbnails|4|9|16|25|36|Zoom out to show more thumbnails|Sort order|Choose Folder|",
         Qt::ControlModifier},
        {"Clear|Delete|", Qt::NoModifier},
        {"Grid|Choose Folder|Previous photo|Next photo|Move current photo to Trash", Qt::NoModifier},
    };
    for (const auto& [order, modifier] : ordersAndNextClicks) {
      const QStringList names = (QStringLiteral("Lumagrid|File|") + QLatin1String(order)).split(u'|');
      for (const QString& name : names) QTRY_VERIFY(name.isEmpty() || window.isEnabled(name));
      for (int tabs = 0; focused() != names.first(); ++tabs) {
        QVERIFY(tabs < 20);
        window.press(Qt::Key_Tab);
      }
      for (const QString& name : names + names) {
        QCOMPARE(focused(), name);
        QTRY_COMPARE(ringColor(name), QColor(31, 111, 95));
        window.press(Qt::Key_Tab);
      }
      window.click("1.jpg", modifier);
    }
  }

  // … and whatever the name, the texts stand where they stand for another.
  void namesAreShownAsTheyAre() {
    const QStringList names{
        QStringLiteral("plain.jpg"),        QStringLiteral("a\nb.jpg"),   QStringLiteral("<b>x<b> &amp; %1.jpg"),
        QStringLiteral("a\u202Egpj.jpg"),   QStringLiteral("Ǻ漢字ก็.jpg"), QString(251, u'n') + QStringLiteral(".jpg"),
        QStringLiteral("\u05D0\u05D1.jpg"),
    };
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
      if (places.isEmpty()) {
        for (const QString& text : texts) places.append(window.rectOf(text));
      }
      for (int i = 0; i < texts.size(); ++i) QCOMPARE(window.rectOf(texts[i]), places[i]);
      window.press(Qt::Key_Escape);
    }
  }
};

LUMAGRID_UI_TEST_MAIN(WindowUiTest)
#include "WindowUiTest.moc"
