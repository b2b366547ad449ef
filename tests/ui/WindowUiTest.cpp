#include <QPainter>

#include "UiWindow.h"

using namespace lumagrid;

// What belongs to a window as a whole.
class WindowUiTest : public QObject {
  Q_OBJECT

 private Q_SLOTS:
  void aWindowHasALeastSize();
  void windowsShareTheRecentFolders();
  void tabWalksInReadingOrder_data();
  void tabWalksInReadingOrder();
  void everythingHasANameAndARole();
  void namesAreShownLiterally_data();
  void namesAreShownLiterally();

 private:
  static QStringList nameless(QAccessibleInterface* parent);
  // "grid", "selection" or "detail"
  static void bringTo(UiWindow& window, const QString& state);
};

void WindowUiTest::aWindowHasALeastSize() {
  UiApp app;
  UiWindow window(app.app);
  QCOMPARE(window.window.minimumWidth(), 1100);
  QVERIFY(window.menuBarHeight() > 0 && window.menuBarHeight() < 40);
  QCOMPARE(window.window.size(), window.window.minimumSize());
  QCOMPARE(window.rectOf("Choose Folder").right(), 1100 - 22 - 1);
}

void WindowUiTest::windowsShareTheRecentFolders() {
  const Photos a({QStringLiteral("a.jpg")});
  const Photos b({QStringLiteral("b.jpg")});
  UiApp app;
  UiWindow left(app.app);
  UiWindow right(app.app);
  const auto openFileMenu = [&app](UiWindow& window) {
    app.platform.popupMenu.entries.clear();
    window.click("File");
    return app.platform.popupMenu.entries;
  };
  QVERIFY(!left.isEnabled("File") && openFileMenu(left).empty());
  choose(app, left, a.url());
  choose(app, right, b.url());
  QTRY_VERIFY(left.shows("a.jpg") && right.shows("b.jpg"));
  right.click("b.jpg");
  QTRY_VERIFY(right.shows("Grid"));

  QVERIFY(left.isEnabled("File"));
  const std::vector<MenuEntry> menu = openFileMenu(left);
  QCOMPARE(menu.size(), 1U);
  const std::vector<MenuEntry>& recent = menu.front().submenu;
  QCOMPARE(recent.size(), 4U);
  QCOMPARE(recent[0].title, b.url().displayName());
  QCOMPARE(recent[1].title, a.url().displayName());
  recent[1].action();
  for (UiWindow* window : {&left, &right}) {
    QTRY_VERIFY(window->shows("a.jpg"));
    QVERIFY(window->shows("Sort order") && !window->shows("Grid"));
  }
  QTRY_COMPARE(openFileMenu(right).front().submenu[0].title, a.url().displayName());

  openFileMenu(right).front().submenu.back().action();  // "Clear Recents"
  QTRY_VERIFY(!left.isEnabled("File") && !right.isEnabled("File"));
  QTRY_COMPARE(app.app.thumbnailQueue().pendingCount(), 0);
}

void WindowUiTest::bringTo(UiWindow& window, const QString& state) {
  if (state == QStringLiteral("selection")) {
    window.click("1.jpg", Qt::ControlModifier);
    QTRY_VERIFY(window.shows("1 selected") && !window.shows("Sort order"));
  } else if (state == QStringLiteral("detail")) {
    window.click("1.jpg");
    QTRY_VERIFY(window.shows("Next photo"));
  }
}

void WindowUiTest::tabWalksInReadingOrder_data() {
  QTest::addColumn<QString>("state");
  QTest::addColumn<QStringList>("order");
  const auto row = [](const char* name, const char* state, const QString& order) {
    QTest::newRow(name) << QString::fromLatin1(state)
                        << (QStringLiteral("Lumagrid|File|") + order).split(QLatin1Char('|'));
  };
  row("the grid", "grid",
      QStringLiteral("Zoom in to show fewer thumbnails|4|9|16|25|36|Zoom out to show more thumbnails|Sort order|"
                     "Choose Folder|"));
  row("a selection", "selection", QStringLiteral("Clear|Delete|"));
  row("a photo", "detail", QStringLiteral("Grid|Choose Folder|Previous photo|Next photo|Move current photo to Trash"));
}

void WindowUiTest::tabWalksInReadingOrder() {
  QFETCH(QString, state);
  QFETCH(QStringList, order);
  const Photos folder(3);
  UiApp app;
  UiWindow window(app.app);
  choose(app, window, folder.url());
  QTRY_VERIFY(window.shows("1.jpg"));
  bringTo(window, state);
  const auto focused = [&window] {
    const QAccessibleInterface* control = QAccessible::queryAccessibleInterface(window.window.activeFocusItem());
    return control ? control->text(QAccessible::Name) : QString();
  };
  const QRgb accent = qRgb(31, 111, 95);
  for (int tabs = 0; focused() != order.first(); ++tabs) {
    QVERIFY(tabs < 20);
    window.press(Qt::Key_Tab);
  }
  for (int time = 0; time < 2; ++time) {
    for (const QString& name : order) {
      QCOMPARE(focused(), name);
      if (name.isEmpty()) {  // the tiles, of which one has the ring
        const QRect tile = window.rectOf("0.jpg");
        QTRY_COMPARE(window.grab().pixel(tile.left() - 4, tile.center().y()), accent);
      } else {  // left of the control
        const QRect rect = window.rectOf(name);
        QTRY_COMPARE(window.grab().pixel(rect.left() - 3, rect.center().y()), accent);
      }
      window.press(Qt::Key_Tab);
    }
  }
  // And back.
  window.press(Qt::Key_Backtab, Qt::ShiftModifier);
  QCOMPARE(focused(), order.last());
  QTRY_COMPARE(app.app.thumbnailQueue().pendingCount(), 0);
}

QStringList WindowUiTest::nameless(QAccessibleInterface* parent) {
  QStringList found;
  for (int i = 0; i < parent->childCount(); ++i) {
    QAccessibleInterface* child = parent->child(i);
    if (!child || child->state().invisible) continue;
    const bool isContainer = child->childCount() > 0;
    if (child->role() == QAccessible::NoRole || (!isContainer && child->text(QAccessible::Name).isEmpty())) {
      found.append(QString::fromLatin1(child->object()->metaObject()->className()));
    }
    found += nameless(child);
  }
  return found;
}

void WindowUiTest::everythingHasANameAndARole() {
  const Photos folder(3);
  UiApp app;
  UiWindow window(app.app);
  QCOMPARE(nameless(window.root()), QStringList());
  choose(app, window, folder.url());
  QTRY_VERIFY(window.shows("1.jpg"));
  for (const char* state : {"grid", "selection", "detail"}) {
    bringTo(window, QString::fromLatin1(state));
    QCOMPARE(nameless(window.root()), QStringList());
    window.press(Qt::Key_Escape);
    QTRY_VERIFY(window.shows("Sort order") && window.shows("1.jpg"));
  }
  QTRY_COMPARE(app.app.thumbnailQueue().pendingCount(), 0);
}

void WindowUiTest::namesAreShownLiterally_data() {
  QTest::addColumn<QString>("name");
  QTest::addColumn<QString>("shown");
  const auto row = [](const char* title, const QString& name, const QString& shown = {}) {
    QTest::newRow(title) << name << (shown.isEmpty() ? name : shown);
  };
  row("a line break", QStringLiteral("a\nb.jpg"), QStringLiteral("a b.jpg"));
  row("a tab", QStringLiteral("a\tb.jpg"), QStringLiteral("a b.jpg"));
  row("markup", QStringLiteral("<b>x<b>.jpg"));
  row("an ampersand", QStringLiteral("you & me &amp; they.jpg"));
  row("right to left", QStringLiteral("שלום עולם.jpg"));
  row("right to left by a mark", QStringLiteral("a\u202Egpj.jpg"));
  row("as long as names can be", QString(251, QLatin1Char('n')) + QStringLiteral(".jpg"));
  row("letters that are tall", QStringLiteral("Ǻ漢字ก็.jpg"));
  row("percent signs that look like places", QStringLiteral("%1 %2.jpg"));
}

// … and whatever the name, everything but the texts stands where it stands for another.
void WindowUiTest::namesAreShownLiterally() {
  QFETCH(QString, name);
  QFETCH(QString, shown);
  const QString plain = QStringLiteral("plain.jpg");
  const Photos folder({plain, name});
  UiApp app;
  UiWindow window(app.app);
  choose(app, window, folder.url());
  QTRY_VERIFY(window.shows(plain));
  QVERIFY(window.find(name, QAccessible::Button));
  const auto open = [&](const QString& tile, const QString& title) {
    QTRY_VERIFY(window.shows(tile));
    window.click(tile);
    QTRY_VERIFY(window.shows("Next photo") && window.find(title, QAccessible::StaticText));
    QTRY_VERIFY(window.shows(QStringLiteral("Showing \"%1\".").arg(title)));
  };
  // The picture with the info bar's texts blotted out, which ends where the counter does.
  const auto picture = [&](const QString& title) {
    const QRect name = window.rectOf(title);
    const QRect status = window.rectOf(QStringLiteral("Showing \"%1\".").arg(title));
    const QRect counter = window.rectOf(window.library.counterText());
    QImage image = window.grab();
    QPainter(&image).fillRect(
        QRect(QPoint(name.left(), name.top() - 10), QPoint(counter.right(), status.bottom() + 10)), Qt::black);
    return image;
  };
  open(plain, plain);
  (void)window.grab();  // laid out
  const QRect place = window.rectOf(plain);
  const QImage expected = picture(plain);
  window.press(Qt::Key_Escape);
  open(name, shown);
  QTRY_COMPARE(window.rectOf(shown), place);
  // Only one of two neighbours can be the first: its button looks otherwise.
  const QRect left(window.rectOf("Previous photo").adjusted(-20, -20, 20, 20));
  const QRect right(window.rectOf("Next photo").adjusted(-20, -20, 20, 20));
  const auto withoutButtons = [&](QImage image) {
    QPainter painter(&image);
    painter.fillRect(left, Qt::black);
    painter.fillRect(right, Qt::black);
    return image;
  };
  QCOMPARE(withoutButtons(picture(shown)), withoutButtons(expected));
  QTRY_COMPARE(app.app.thumbnailQueue().pendingCount(), 0);
}

LUMAGRID_UI_TEST_MAIN(WindowUiTest)
#include "WindowUiTest.moc"
