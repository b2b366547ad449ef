#include <QSignalSpy>

#include "UiWindow.h"

using namespace lumagrid;

namespace {

constexpr int kPhotos = 12;
const char* const kFewer = "Zoom in to show fewer thumbnails";
const char* const kMore = "Zoom out to show more thumbnails";

QSet<int> checkedTiles(const UiWindow& window) {
  QSet<int> checked;
  for (int number = 0; number < kPhotos; ++number) {
    if (window.isChecked(photoName(number))) checked.insert(number);
  }
  return checked;
}

// The bar's buttons and the tiles tell the same number of columns.
bool showsColumns(const UiWindow& window, int columns) {
  for (int preset = 2; preset <= 6; ++preset) {
    if (window.isChecked(QString::number(preset * preset)) != (preset == columns)) return false;
  }
  QSet<int> lefts;
  for (int number = 0; number < kPhotos; ++number) {
    if (const QRect rect = window.rectOf(photoName(number)); !rect.isEmpty()) lefts.insert(rect.left());
  }
  return lefts.size() == columns && window.isEnabled(kFewer) == (columns > 2) &&
         window.isEnabled(kMore) == (columns < 6);
}

}  // namespace

// The grid of a window, with pointer and keys.
class GridUiTest : public QObject {
  Q_OBJECT

 private Q_SLOTS:
  void theSelectionSwapsTheBars() {
    OnlyWindow window(m_folder.url());
    const QRect chooseFolder = window.rectOf("Choose Folder");
    window.platform.chooser.asked.clear();
    const QList<std::tuple<int, Qt::KeyboardModifiers, QSet<int>>> clicks{
        {2, Qt::ShiftModifier, {0, 1, 2}},  // from the current photo
        {7, Qt::ControlModifier, {0, 1, 2, 7}},    {5, Qt::ShiftModifier, {0, 1, 2, 5, 6, 7}},  // from the last one
        {1, Qt::ControlModifier, {0, 2, 5, 6, 7}}, {9, Qt::ControlModifier | Qt::ShiftModifier, {0, 2, 5, 6, 7, 9}},
    };
    for (const auto& [number, modifiers, checked] : clicks) {
      window.click(photoName(number), modifiers);
      QTest::mouseClick(&window.window, Qt::LeftButton, {}, chooseFolder.center());
      QTRY_COMPARE(checkedTiles(window), checked);
      QTRY_VERIFY(window.shows(QStringLiteral("%1 selected").arg(checked.size())));
    }
    QVERIFY(window.platform.chooser.asked.isEmpty());  // what leaves no longer acts
    window.find(photoName(9))->actionInterface()->doAction(QAccessibleActionInterface::toggleAction());
    QTRY_VERIFY(window.shows("5 selected"));
    QTRY_VERIFY(window.shows("Delete") && !window.shows("Choose Folder") && !window.shows("Sort order"));
    window.click("Clear");
    QTRY_VERIFY(checkedTiles(window).isEmpty() && window.shows("Choose Folder") && window.shows("Sort order"));
    QTRY_VERIFY(!window.shows("Clear") && !window.shows("Delete"));
    QCOMPARE(window.rectOf("Choose Folder"), chooseFolder);
  }

  void onlyTheLeftButtonClicks() {
    OnlyWindow window(m_folder.url());
    constexpr auto kLeft = Qt::LeftButton;
    constexpr auto kRight = Qt::RightButton;
    constexpr auto kBoth = kLeft | kRight;
    // What is held, one after the other, and the clicks that it makes.
    const QList<std::pair<QList<Qt::MouseButtons>, int>> presses{{{kLeft, {}}, 1},
                                                                 {{kRight, {}}, 0},
                                                                 {{Qt::MiddleButton, {}}, 0},
                                                                 {{Qt::BackButton, {}}, 0},
                                                                 {{kLeft, kBoth, kLeft, {}}, 1},
                                                                 {{kLeft, kBoth, kRight, {}}, 1},
                                                                 {{kRight, kBoth, kRight, {}}, 1},
                                                                 {{kRight, kBoth, kLeft, {}}, 1}};
    for (const auto& [buttons, clicks] : presses) {
      const auto press = [&, &held = buttons](QAnyStringView name, Qt::KeyboardModifiers modifiers = {}) {
        const QPoint position = window.rectOf(name).center();
        for (const Qt::MouseButtons now : held) window.pointTo(position, now, modifiers);
      };
      QSignalSpy toggles(&window.library, &PhotoLibrary::selectedIndicesChanged);
      press(photoName(5), Qt::ControlModifier);
      QCOMPARE(toggles.count(), clicks);
      window.library.clearSelection();
      QTRY_VERIFY(window.shows(kFewer));
      window.view.setGridDimension(6);
      press(kFewer);
      QCOMPARE(window.view.gridDimension(), 6 - clicks);
      window.platform.popupMenu.entries.clear();
      press("Lumagrid");
      QCOMPARE(!window.platform.popupMenu.entries.empty(), clicks > 0);
      if (clicks == 0) press(photoName(5));
      QVERIFY(window.view.showsGrid());
    }
    const QRect tile = window.rectOf(photoName(5));
    QTest::mousePress(&window.window, kLeft, {}, tile.center());
    QTest::mouseRelease(&window.window, kLeft, {}, window.rectOf(photoName(6)).center());
    QVERIFY(window.view.showsGrid());
    QTest::mouseClick(&window.window, kLeft, {}, tile.topLeft() + QPoint(2, 2));  // in the corner
    QVERIFY(!window.view.showsGrid());
  }

  void theSelectionIsMovedAfterAQuestion() {
    OnlyWindow window(m_folder.url());
    window.click(photoName(1), Qt::ControlModifier);
    window.click(photoName(3), Qt::ShiftModifier);
    QTRY_VERIFY(window.shows("3 selected"));
    window.platform.trash.stuck = {photoName(2)};
    for (const AlertRole answer : {AlertRole::cancel, AlertRole::accept}) {
      QVERIFY(window.platform.trash.moved.isEmpty());
      QCOMPARE(checkedTiles(window), (QSet<int>{1, 2, 3}));
      window.platform.alert.answer = answer;
      window.click("Delete");
      QCOMPARE(window.platform.alert.asked.last().join(u'|'),
               QStringLiteral("Move 3 photos to Trash?|3 selected photos will be moved to the Trash.|"
                              "Move to Trash|Cancel"));
    }
    QTRY_VERIFY(checkedTiles(window).isEmpty() && window.shows("Choose Folder"));
    QTRY_VERIFY(!window.shows(photoName(1)) && window.shows(photoName(2)) && !window.shows(photoName(3)));
    window.turnWheel(-120);
    window.press(Qt::Key_Escape);
    QVERIFY(window.find("Moved 2 photos to Trash. 1 failed.", QAccessible::AlertMessage));  // an error stays
  }

  void theColumnsChange() {
    OnlyWindow window(m_folder.url());
    const auto leadsTo = [&window](const QList<int>& columns, const std::function<void()>& action) {
      for (const int expected : columns) {
        action();
        QTRY_VERIFY(showsColumns(window, expected));
      }
    };
    QTRY_VERIFY(showsColumns(window, 4));
    leadsTo({3, 2, 2}, [&] { window.click(kFewer); });
    leadsTo({3, 4, 5, 6, 6}, [&] { window.click(kMore); });
    for (const int columns : {2, 3, 5, 6, 4}) {
      leadsTo({columns}, [&] { window.click(QString::number(columns * columns)); });
    }
    leadsTo({3, 2}, [&] { window.pinch({1.09, 1.17}); });  // each from its own start
    leadsTo({3, 4, 5}, [&] { window.turnWheel(-120, Qt::ControlModifier); });
    QTRY_COMPARE(window.view.lastMagnification(), 1.0);  // the wheel has come to rest
    leadsTo({6}, [&] { window.pinch({0.91}); });
  }

  void keysMoveTheRing() {
    OnlyWindow window(m_folder.url());
    window.library.openPhoto(1);
    const QList<std::pair<Qt::Key, int>> keysAndTiles{
        {Qt::Key_Right, 2}, {Qt::Key_Down, 6}, {Qt::Key_Left, 5}, {Qt::Key_End, 11},
        {Qt::Key_Up, 7},    {Qt::Key_Home, 0}, {Qt::Key_Left, 0}, {Qt::Key_PageDown, 11},
    };
    for (const auto& [key, tile] : keysAndTiles) {
      window.press(key);
      window.press(Qt::Key_Space);
      QCOMPARE(window.library.selectedIndices(), PhotoLibrary::IndexSet{tile});
      window.press(Qt::Key_Space);
    }
    for (const Qt::Key key : {Qt::Key_Up, Qt::Key_Tab, Qt::Key_Backtab, Qt::Key_Return}) window.press(key);
    QTRY_VERIFY(window.shows("Next photo"));
    QCOMPARE(window.library.currentIndex(), 7);  // Tab alone moves no ring
  }

  void theSortMenuStoresTheOrderThatItMarks() {
    OnlyWindow window(m_folder.url());
    const std::pair<SortOrder, QString> menu[] = {{SortOrder::nameAscending, QStringLiteral("Name A\u2013Z")},
                                                  {SortOrder::nameDescending, QStringLiteral("Name Z\u2013A")},
                                                  {SortOrder::dateNewest, QStringLiteral("Newest First")},
                                                  {SortOrder::dateOldest, QStringLiteral("Oldest First")}};
    for (const std::size_t chosen : {3, 2, 0, 1}) {
      window.click("Sort order");
      const std::vector<MenuEntry> entries = window.platform.popupMenu.entries;
      QCOMPARE(entries.size(), std::size(menu));
      for (std::size_t i = 0; i < entries.size(); ++i) {
        QCOMPARE(entries[i].title, menu[i].second);
        QCOMPARE(entries[i].mark == MenuEntry::Mark::check, menu[i].first == window.library.sortOrder());
      }
      entries[chosen].action();
      QCOMPARE(window.library.sortOrder(), menu[chosen].first);
    }
    QTRY_VERIFY(window.rectOf("11.jpg").top() < window.rectOf("0.jpg").top());
    QCOMPARE(window.platform.popupMenu.position,
             window.window.mapToGlobal(window.rectOf("Sort order").topLeft()) + QPoint(0, 32));
  }

  void aStatusShowsUntilItWasSeen() {
    const Photos folder({QStringLiteral("only.jpg")});
    UiApp app;
    UiWindow window(app);
    QVERIFY(window.shows("Choose a folder to start browsing.") && window.shows("Sort order"));
    QCOMPARE(window.drop(QUrl(QStringLiteral("https://example.org/folder"))), std::nullopt);
    QCOMPARE(window.drop(QUrl::fromLocalFile(QFile::decodeName(folder.url().path()))), true);
    QTRY_VERIFY(window.find(window.library.statusMessage(), QAccessible::AlertMessage));
    QTRY_VERIFY_WITH_TIMEOUT(!window.shows(window.library.statusMessage()), 60'000);
    QVERIFY(window.shows("only.jpg") && !window.shows("Choose a folder to start browsing."));
    window.openPhoto("only.jpg");  // its own info bar shows its status
    window.press(Qt::Key_Escape);
    QTRY_VERIFY(window.shows("Sort order") && window.shows("only.jpg"));
    QVERIFY(!window.shows("Showing \"only.jpg\"."));
  }

  void thePhotoThatWasShownComesToTheCenter() {
    const Photos many(200);
    OnlyWindow window(many.url());
    window.openPhoto("15.jpg");
    window.library.openPhoto(100);
    window.press(Qt::Key_Escape);
    const auto rect = [&window] { return window.rectOf("100.jpg"); };
    const int middle = (window.window.height() + window.menuBarHeight()) / 2;  // of the stage
    QTRY_VERIFY(!rect().isEmpty() && std::abs(rect().center().y() - middle) <= 1);
    const int side = rect().width();
    window.click("36");  // the middle row stays
    QTRY_VERIFY(!rect().isEmpty() && rect().width() < side && std::abs(rect().center().y() - middle) < side);
    const int top = rect().top();
    window.turnWheel(-120, {}, -33);  // a touch pad
    QTRY_COMPARE(rect().top(), top - 33);
  }

 private:
  const Photos m_folder{kPhotos};
};

LUMAGRID_UI_TEST_MAIN(GridUiTest)
#include "GridUiTest.moc"
