#include "UiWindow.h"

using namespace lumagrid;

namespace {

constexpr int kPhotos = 12;

struct Click {
  QString name;
  Qt::KeyboardModifiers modifiers = {};
};

QSet<int> checkedTiles(const UiWindow& window) {
  QSet<int> checked;
  for (int number = 0; number < kPhotos; ++number) {
    if (window.isChecked(photoName(number))) checked.insert(number);
  }
  return checked;
}

}  // namespace

// The grid of a window, with pointer and keys.
class GridUiTest : public QObject {
  Q_OBJECT

 private Q_SLOTS:
  void tilesAreSelected_data();
  void tilesAreSelected();
  void theBarsSwap();
  void theSelectionIsMovedAfterAQuestion_data();
  void theSelectionIsMovedAfterAQuestion();
  void theColumnsChange_data();
  void theColumnsChange();
  void theSortMenuMarksTheActiveOrder();
  void foldersAreDropped_data();
  void foldersAreDropped();
  void aPlaceholderStandsForPhotos();
  void aStatusShowsUntilItWasSeen();
  void thePhotoThatWasShownComesToTheCentre();

 private:
  const Photos m_folder{kPhotos};
};

void GridUiTest::tilesAreSelected_data() {
  const auto ctrl = [](int number) { return Click{photoName(number), Qt::ControlModifier}; };
  const auto shift = [](int number) { return Click{photoName(number), Qt::ShiftModifier}; };
  const Click clear{QStringLiteral("Clear")};
  const Click escape{QStringLiteral("Esc")};
  QTest::addColumn<QList<Click>>("clicks");
  QTest::addColumn<QSet<int>>("checked");
  QTest::newRow("Ctrl checks, and unchecks") << QList<Click>{ctrl(2), ctrl(7), ctrl(2)} << QSet<int>{7};
  QTest::newRow("Shift extends from the current photo") << QList<Click>{shift(2)} << QSet<int>{0, 1, 2};
  QTest::newRow("Shift extends from the last one") << QList<Click>{ctrl(7), shift(5)} << QSet<int>{5, 6, 7};
  QTest::newRow("Ctrl wins over Shift") << QList<Click>{ctrl(1),
                                                        {photoName(3), Qt::ControlModifier | Qt::ShiftModifier}}
                                        << QSet<int>{1, 3};
  QTest::newRow("Clear unchecks all") << QList<Click>{shift(5), clear} << QSet<int>{};
  QTest::newRow("after Esc, Shift extends from the current photo again")
      << QList<Click>{ctrl(7), escape, shift(1)} << QSet<int>{0, 1};
  QTest::newRow("Esc does nothing more") << QList<Click>{ctrl(1), escape, escape} << QSet<int>{};
}

void GridUiTest::tilesAreSelected() {
  QFETCH(QList<Click>, clicks);
  QFETCH(QSet<int>, checked);
  UiApp app;
  UiWindow window(app, m_folder.url());
  for (const auto& [name, modifiers] : clicks) {
    if (name == QStringLiteral("Esc")) {
      window.press(Qt::Key_Escape);
    } else {
      QTRY_VERIFY(window.shows(name));
      window.click(name, modifiers);
    }
  }
  QTRY_COMPARE(checkedTiles(window), checked);
  QVERIFY(window.shows(photoName(0)));  // no photo was opened
  QTRY_COMPARE(window.shows(QStringLiteral("%1 selected").arg(checked.size())), !checked.isEmpty());
}

void GridUiTest::theBarsSwap() {
  UiApp app;
  UiWindow window(app, m_folder.url());
  const QRect chooseFolder = window.rectOf("Choose Folder");
  app.platform.chooser.asked.clear();
  window.click(photoName(3), Qt::ControlModifier);
  QTest::mouseClick(&window.window, Qt::LeftButton, {}, chooseFolder.center());
  QVERIFY(app.platform.chooser.asked.isEmpty());  // what leaves no longer acts
  QTRY_VERIFY(window.shows("Delete") && !window.shows("Choose Folder") && !window.shows("Sort order"));
  window.click("Clear");
  QTRY_VERIFY(window.shows("Choose Folder") && window.shows("Sort order"));
  QTRY_VERIFY(!window.shows("Clear") && !window.shows("Delete"));
  QCOMPARE(window.rectOf("Choose Folder"), chooseFolder);
}

void GridUiTest::theSelectionIsMovedAfterAQuestion_data() {
  QTest::addColumn<int>("last");  // from the second photo on
  QTest::addColumn<int>("answer");
  QTest::addColumn<QSet<QString>>("stuck");
  QTest::addColumn<QString>("count");
  QTest::addColumn<QStringList>("moved");
  QTest::addColumn<QString>("status");
  const QString three = QStringLiteral("3 %1photos");
  QTest::newRow("three, cancelled") << 3 << 1 << QSet<QString>{} << three << QStringList{} << "";
  QTest::newRow("three, of which one sticks")
      << 3 << 0 << QSet<QString>{photoName(2)} << three << QStringList{photoName(3), photoName(1)}
      << "Moved 2 photos to Trash. 1 failed.";
  QTest::newRow("one") << 1 << 0 << QSet<QString>{} << "1 %1photo" << QStringList{photoName(1)}
                       << "Moved 1 photo to Trash.";
}

void GridUiTest::theSelectionIsMovedAfterAQuestion() {
  QFETCH(int, last);
  QFETCH(int, answer);
  QFETCH(QSet<QString>, stuck);
  QFETCH(QString, count);
  QFETCH(QStringList, moved);
  QFETCH(QString, status);
  UiApp app;
  UiWindow window(app, m_folder.url());
  app.platform.alert.answer = answer;
  app.platform.trash.stuck = stuck;
  window.click(photoName(1), Qt::ControlModifier);
  window.click(photoName(last), Qt::ShiftModifier);
  QTRY_VERIFY(window.shows("Delete") && checkedTiles(window).size() == last);
  window.click("Delete");
  if (answer == 0) QTRY_VERIFY(window.find(status, QAccessible::AlertMessage));  // it leaves after four seconds
  QCOMPARE(app.platform.alert.asked,
           QList<QStringList>{(
               QStringList{QStringLiteral("Move %1 to Trash?").arg(count.arg(QString())),
                           QStringLiteral("%1 will be moved to the Trash.").arg(count.arg(QStringLiteral("selected "))),
                           QStringLiteral("Move to Trash"), QStringLiteral("Cancel")})});
  QCOMPARE(app.platform.trash.moved, moved);
  QTRY_COMPARE(checkedTiles(window).size(), answer == 0 ? 0 : last);
  for (int number = 0; number < kPhotos; ++number) {
    QCOMPARE(window.shows(photoName(number)), !moved.contains(photoName(number)));
  }
}

void GridUiTest::theColumnsChange_data() {
  QTest::addColumn<QStringList>("clicks");
  QTest::addColumn<QList<double>>("pinch");
  QTest::addColumn<int>("notches");
  QTest::addColumn<int>("columns");
  const auto row = [](const char* name, int columns, const QStringList& clicks, const QList<double>& pinch = {},
                      int notches = 0) { QTest::newRow(name) << clicks << pinch << notches << columns; };
  const QString fewer = QStringLiteral("Zoom in to show fewer thumbnails");
  const QString more = QStringLiteral("Zoom out to show more thumbnails");
  row("four at first", 4, {});
  row("one fewer", 3, {fewer});
  row("no fewer than two", 2, {fewer, fewer, fewer});
  row("no more than six", 6, {more, more, more});
  for (int preset = 2; preset <= 6; ++preset) {
    row(qPrintable(QStringLiteral("a preset for %1").arg(preset)), preset, {QString::number(preset * preset)});
  }
  row("apart, two steps", 2, {}, {1.09, 1.17, 1.2});
  row("apart, no step within eight percent of the last", 3, {}, {1.09, 1.17});
  row("together, one step", 5, {}, {0.95, 0.91});
  row("the wheel with Ctrl, one notch", 3, {}, {}, 1);
  row("the wheel with Ctrl, three notches back", 6, {}, {}, -3);
}

void GridUiTest::theColumnsChange() {
  QFETCH(QStringList, clicks);
  QFETCH(QList<double>, pinch);
  QFETCH(int, notches);
  QFETCH(int, columns);
  UiApp app;
  UiWindow window(app, m_folder.url());
  for (const QString& name : clicks) window.click(name);
  if (!pinch.isEmpty()) window.pinch(pinch);
  for (int notch = 0; notch < std::abs(notches); ++notch) {
    window.turnWheel(notches > 0 ? 120 : -120, Qt::ControlModifier);
  }
  for (int preset = 2; preset <= 6; ++preset) {
    QTRY_COMPARE(window.isChecked(QString::number(preset * preset)), preset == columns);
  }
  QCOMPARE(window.isEnabled("Zoom in to show fewer thumbnails"), columns > 2);
  QCOMPARE(window.isEnabled("Zoom out to show more thumbnails"), columns < 6);
  const auto columnsOnScreen = [&window] {
    QSet<int> lefts;
    for (int number = 0; number < kPhotos; ++number) {
      if (const QRect rect = window.rectOf(photoName(number)); !rect.isEmpty()) lefts.insert(rect.left());
    }
    return int(lefts.size());
  };
  QTRY_COMPARE(columnsOnScreen(), columns);
  // The next pinch starts from its own factor.
  QTRY_COMPARE(window.view.lastMagnification(), 1.0);
  window.pinch({1.09});
  QCOMPARE(window.view.gridDimension(), std::max(2, columns - 1));
}

void GridUiTest::theSortMenuMarksTheActiveOrder() {
  UiApp app;
  UiWindow window(app, m_folder.url());
  const std::vector<MenuEntry>& entries = app.platform.popupMenu.entries;
  const auto marked = [&entries] {
    QStringList titles;
    for (const MenuEntry& entry : entries) {
      if (entry.mark == MenuEntry::Mark::check) titles.append(entry.title);
    }
    return titles;
  };
  window.click("Sort order");
  QCOMPARE(marked(), QStringList{QStringLiteral("Name A–Z")});
  const QRect face = window.rectOf("Sort order");
  QCOMPARE(app.platform.popupMenu.position, window.window.mapToGlobal(face.topLeft()) + QPoint(0, 32));
  entries[1].action();
  QTRY_VERIFY(window.rectOf("11.jpg").top() < window.rectOf("0.jpg").top());
  window.click("Sort order");
  QCOMPARE(marked(), QStringList{QStringLiteral("Name Z–A")});

  // The active one sorts again, which ends the selection too.
  window.click(photoName(3), Qt::ControlModifier);
  QTRY_COMPARE(checkedTiles(window), QSet<int>{3});
  entries[1].action();
  QTRY_VERIFY(checkedTiles(window).isEmpty() && window.isEnabled("Choose Folder"));
}

void GridUiTest::foldersAreDropped_data() {
  QTest::addColumn<QStringList>("names");
  QTest::addColumn<bool>("opens");
  const QString folder = QStringLiteral("folder");
  const QString picture = QStringLiteral("x.jpg");
  QTest::newRow("the first of several counts") << QStringList{folder, QStringLiteral("more")} << true;
  QTest::newRow("a picture before a folder has no effect") << QStringList{picture, folder} << false;
  QTest::newRow("nor has what is gone") << QStringList{QStringLiteral("gone")} << false;
}

void GridUiTest::foldersAreDropped() {
  QFETCH(QStringList, names);
  QFETCH(bool, opens);
  const Photos root({QStringLiteral("x.jpg")});
  (void)root.addFolder(QStringLiteral("folder"));
  (void)root.addFolder(QStringLiteral("more"));
  (void)root.add(QStringLiteral("folder/first.jpg"), samplePhoto({20, 20}));
  QList<QUrl> urls;
  for (const QString& name : names) urls.append(toUrl(root.url(name)));
  UiApp app;
  UiWindow window(app, m_folder.url());
  window.openPhoto("5.jpg");
  QVERIFY(window.drop(urls));
  QCoreApplication::processEvents();  // the drop has ended
  QCOMPARE(window.view.showsGrid(), opens);
  QTRY_COMPARE(window.shows("first.jpg"), opens);
  QCOMPARE(window.shows("Next photo"), !opens);  // otherwise all is as it was
  QCOMPARE(window.shows("Showing \"5.jpg\"."), !opens);
}

void GridUiTest::aPlaceholderStandsForPhotos() {
  const PhotoFolder empty;
  UiApp app;
  UiWindow window(app);
  const char* const placeholder = "Choose a folder to start browsing.";
  QVERIFY(window.shows(placeholder) && window.shows("Sort order") && window.shows("Choose Folder"));
  window.open(m_folder.url());
  QVERIFY(!window.shows(placeholder));
  app.platform.chooser.answer = empty.url();
  window.click("Choose Folder");
  QTRY_VERIFY(window.shows(placeholder));
  QVERIFY(window.find("No supported image files were found in this folder.", QAccessible::AlertMessage));
  const QRect title = window.rectOf(placeholder);
  QVERIFY(std::abs(title.left() + title.right() + 1 - window.window.width()) <= 1);
}

void GridUiTest::aStatusShowsUntilItWasSeen() {
  const Photos other({QStringLiteral("only.jpg")});
  const QString failed = QStringLiteral("Moved 0 photos to Trash. 1 failed.");
  UiApp app;
  app.platform.chooser.answer = other.url();
  app.platform.trash.stuck = {QStringLiteral("only.jpg")};
  UiWindow window(app);
  window.click("Choose Folder");
  QTRY_VERIFY(window.find(QStringLiteral("Loaded 1 photo from \"%1\".").arg(other.url().displayName()),
                          QAccessible::AlertMessage));
  // The photo's own info bar shows its status.
  QTRY_VERIFY(window.shows("only.jpg"));
  window.openPhoto("only.jpg");
  window.press(Qt::Key_Escape);
  QTRY_VERIFY(window.shows("Sort order") && window.shows("only.jpg"));
  QVERIFY(!window.shows("Showing \"only.jpg\"."));
  // An error stays.
  window.click("only.jpg", Qt::ControlModifier);
  QTRY_VERIFY(window.shows("Delete"));
  window.click("Delete");
  QTRY_VERIFY(window.find(failed, QAccessible::AlertMessage) && window.shows("Sort order"));
  window.turnWheel(-120);
  window.press(Qt::Key_Escape);
  QVERIFY(window.find(failed, QAccessible::AlertMessage));
}

void GridUiTest::thePhotoThatWasShownComesToTheCentre() {
  const Photos many(200);
  UiApp app;
  UiWindow window(app, many.url());
  window.openPhoto("15.jpg");
  while (window.library.currentIndex() < 100) window.press(Qt::Key_Right);
  window.press(Qt::Key_Escape);
  const auto distance = [&window] {  // from the middle of the stage
    return std::abs(window.rectOf("100.jpg").center().y() - (window.window.height() + window.menuBarHeight()) / 2);
  };
  QTRY_VERIFY(window.shows("100.jpg") && distance() <= 1);
  const int side = window.rectOf("100.jpg").width();
  window.click("36");
  QTRY_VERIFY(window.shows("100.jpg") && window.rectOf("100.jpg").width() < side && distance() < side);
  // The wheel alone scrolls.
  const int top = window.rectOf("100.jpg").top();
  window.turnWheel(120);
  QTRY_COMPARE(window.rectOf("100.jpg").top(), top + 120);
}

LUMAGRID_UI_TEST_MAIN(GridUiTest)
#include "GridUiTest.moc"
