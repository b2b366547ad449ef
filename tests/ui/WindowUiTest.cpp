#include <QPainter>

#include "UiWindow.h"

using namespace lumagrid;

namespace {

QStringList nameless(QAccessibleInterface* parent) {
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

}  // namespace

// What belongs to a window as a whole.
class WindowUiTest : public QObject {
  Q_OBJECT

 private Q_SLOTS:
  void aWindowHasALeastSize();
  void windowsShareTheRecentFolders();
  void tabWalksInReadingOrder_data();
  void tabWalksInReadingOrder();
  void namesAreShownLiterally_data();
  void namesAreShownLiterally();
};

void WindowUiTest::aWindowHasALeastSize() {
  UiApp app;
  UiWindow window(app);
  QCOMPARE(window.window.minimumWidth(), 1100);
  QVERIFY(window.menuBarHeight() > 0 && window.menuBarHeight() < 40);
  QCOMPARE(window.window.size(), window.window.minimumSize());
  QCOMPARE(window.rectOf("Choose Folder").right(), 1100 - 22 - 1);
}

void WindowUiTest::windowsShareTheRecentFolders() {
  const Photos a({QStringLiteral("a.jpg")});
  const Photos b({QStringLiteral("b.jpg")});
  UiApp app;
  UiWindow left(app);
  UiWindow right(app);
  const auto recent = [&app](UiWindow& window) {
    window.click("File");
    return app.platform.popupMenu.entries.front().submenu;
  };
  left.click("File");
  QVERIFY(!left.isEnabled("File") && app.platform.popupMenu.entries.empty());
  left.open(a.url());
  right.open(b.url());
  right.openPhoto("b.jpg");
  QVERIFY(left.shows("a.jpg") && left.isEnabled("File"));
  QCOMPARE(recent(left).at(0).title, b.url().displayName());
  QCOMPARE(recent(left).at(1).title, a.url().displayName());
  QCOMPARE(app.platform.preferences.values.first().size(), 2);

  recent(left).at(1).action();
  for (UiWindow* window : {&left, &right}) {
    QTRY_VERIFY(window->shows("a.jpg") && window->shows("Sort order") && !window->shows("Grid"));
  }
  QTRY_COMPARE(recent(right).at(0).title, a.url().displayName());
  recent(right).back().action();  // "Clear Recents"
  QTRY_VERIFY(!left.isEnabled("File") && !right.isEnabled("File"));
}

void WindowUiTest::tabWalksInReadingOrder_data() {
  QTest::addColumn<QString>("clicked");
  QTest::addColumn<Qt::KeyboardModifiers>("modifiers");
  QTest::addColumn<QString>("order");
  const auto row = [](const char* name, const char* clicked, Qt::KeyboardModifiers modifiers, const char* order) {
    QTest::newRow(name) << QString::fromLatin1(clicked) << modifiers << QString::fromLatin1(order);
  };
  row("the grid", "File", {},
      "Zoom in to show fewer thumbnails|4|9|16|25|36|Zoom out to show more thumbnails|Sort order|Choose Folder|");
  row("a selection", "1.jpg", Qt::ControlModifier, "Clear|Delete|");
  row("a photo", "1.jpg", {}, "Grid|Choose Folder|Previous photo|Next photo|Move current photo to Trash");
}

void WindowUiTest::tabWalksInReadingOrder() {
  QFETCH(QString, clicked);
  QFETCH(Qt::KeyboardModifiers, modifiers);
  QFETCH(QString, order);
  const QStringList names = (QStringLiteral("Lumagrid|File|") + order).split(QLatin1Char('|'));
  const Photos folder(3);
  UiApp app;
  UiWindow window(app);
  QCOMPARE(nameless(window.root()), QStringList());
  window.open(folder.url());
  window.click(clicked, modifiers);
  QTRY_VERIFY(window.shows(names.at(2)) && (clicked == QStringLiteral("File") || !window.shows("Sort order")));
  QCOMPARE(nameless(window.root()), QStringList());
  const auto focused = [&window] {
    const QAccessibleInterface* control = QAccessible::queryAccessibleInterface(window.window.activeFocusItem());
    return control ? control->text(QAccessible::Name) : QString();
  };
  const QRgb accent = qRgb(31, 111, 95);
  for (int tabs = 0; focused() != names.first(); ++tabs) {
    QVERIFY(tabs < 20);
    window.press(Qt::Key_Tab);
  }
  for (int time = 0; time < 2; ++time) {
    for (const QString& name : names) {
      QCOMPARE(focused(), name);
      // The ring is left of the control; that of the tiles, which have no name together, around one.
      const QRect rect = window.rectOf(name.isEmpty() ? photoName(0) : name);
      QTRY_COMPARE(window.grab().pixel(rect.left() - (name.isEmpty() ? 4 : 3), rect.center().y()), accent);
      window.press(Qt::Key_Tab);
    }
  }
  window.press(Qt::Key_Backtab, Qt::ShiftModifier);
  QCOMPARE(focused(), names.last());
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
  UiWindow window(app, folder.url());
  QVERIFY(window.find(name, QAccessible::Button));
  const auto open = [&](const QString& tile, const QString& title) {
    QTRY_VERIFY(window.shows(tile));
    window.openPhoto(tile);
    QTRY_VERIFY(window.find(title, QAccessible::StaticText));
    QTRY_VERIFY(window.shows(QStringLiteral("Showing \"%1\".").arg(title)));
  };
  // Without the info bar's texts, which end where the counter does, and the step buttons: of two neighbours, only one
  // is the first.
  const auto picture = [&](const QString& title) {
    QImage image = window.grab();
    const QPoint bottomRight(window.rectOf(window.library.counterText()).right(),
                             window.rectOf(QStringLiteral("Showing \"%1\".").arg(title)).bottom() + 10);
    QPainter painter(&image);
    painter.fillRect(QRect(window.rectOf(title).topLeft() - QPoint(0, 10), bottomRight), Qt::black);
    for (const char* button : {"Previous photo", "Next photo"}) {
      painter.fillRect(window.rectOf(button).adjusted(-20, -20, 20, 20), Qt::black);
    }
    painter.end();
    return image;
  };
  open(plain, plain);
  const QImage expected = picture(plain);
  const QRect place = window.rectOf(plain);
  window.press(Qt::Key_Escape);
  open(name, shown);
  QTRY_COMPARE(window.rectOf(shown), place);
  QTRY_COMPARE(picture(shown), expected);
}

LUMAGRID_UI_TEST_MAIN(WindowUiTest)
#include "WindowUiTest.moc"
