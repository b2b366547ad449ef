#include "UiWindow.h"

using namespace lumagrid;

namespace {

constexpr int kPhotos = 12;

struct Step {
  QString name;
  Qt::KeyboardModifiers modifiers = {};
};

}  // namespace

Q_DECLARE_METATYPE(QList<Step>)

// The grid of a window, with pointer and keys.
class GridUiTest : public QObject {
  Q_OBJECT

 private Q_SLOTS:
  void init();
  void cleanup();
  void onlyOneStageExists();
  void tilesAreSelected_data();
  void tilesAreSelected();
  void theBarsSwap();
  void theSelectionIsMovedAfterAQuestion_data();
  void theSelectionIsMovedAfterAQuestion();
  void theBarSetsTheColumns_data();
  void theBarSetsTheColumns();
  void aPinchStepsTheColumns_data();
  void aPinchStepsTheColumns();
  void theSortMenuMarksTheActiveOrder();
  void foldersAreDropped_data();
  void foldersAreDropped();
  void withoutPhotosAPlaceholderShows();
  void theStatusShowsOnTheGrid();
  void thePhotoThatWasShownComesToTheCentre();

 private:
  [[nodiscard]] QSet<int> checkedTiles() const;
  void waitForControlBar() { QTRY_VERIFY(m_window->shows("Choose Folder") && !m_window->shows("Clear")); }

  const Photos m_folder{kPhotos};
  std::unique_ptr<UiApp> m_app;
  std::unique_ptr<UiWindow> m_window;
};

void GridUiTest::init() {
  m_app = std::make_unique<UiApp>();
  m_window = std::make_unique<UiWindow>(m_app->app);
  choose(*m_app, *m_window, m_folder.url());
  QTRY_VERIFY(m_window->shows(photoName(kPhotos - 1)));
}

void GridUiTest::cleanup() {
  QTRY_COMPARE(m_app->app.thumbnailQueue().pendingCount(), 0);
  m_window.reset();
  m_app.reset();
}

QSet<int> GridUiTest::checkedTiles() const {
  QSet<int> checked;
  for (int number = 0; number < kPhotos; ++number) {
    if (m_window->isChecked(photoName(number))) checked.insert(number);
  }
  return checked;
}

void GridUiTest::onlyOneStageExists() {
  m_window->click(photoName(5));
  QTRY_VERIFY(m_window->shows("Next photo"));
  for (const char* name : {"Grid", "Choose Folder", "6 / 12", "Showing \"5.jpg\"."})
    QVERIFY2(m_window->shows(name), name);
  for (const char* name : {"4.jpg", "Sort order", "16"}) QVERIFY2(!m_window->shows(name), name);
  for (const char* way : {"Grid", "Esc", "Choose Folder"}) {
    if (qstrcmp(way, "Esc") == 0) {
      m_window->press(Qt::Key_Escape);
    } else {
      m_app->platform.chooser.answer = std::nullopt;  // cancelled
      m_window->click(way);
    }
    QTRY_VERIFY(m_window->shows("4.jpg"));
    QVERIFY(m_window->shows("Sort order") && !m_window->shows("Next photo"));
    m_window->click(photoName(5));
    QTRY_VERIFY(m_window->shows("Next photo"));
  }
}

void GridUiTest::tilesAreSelected_data() {
  const auto ctrl = [](int number) { return Step{photoName(number), Qt::ControlModifier}; };
  const auto shift = [](int number) { return Step{photoName(number), Qt::ShiftModifier}; };
  const Step clear{QStringLiteral("Clear")};
  const Step escape{QStringLiteral("Esc")};
  QTest::addColumn<QList<Step>>("steps");
  QTest::addColumn<QSet<int>>("checked");
  QTest::newRow("Ctrl checks") << QList<Step>{ctrl(2), ctrl(7)} << QSet<int>{2, 7};
  QTest::newRow("Ctrl unchecks") << QList<Step>{ctrl(2), ctrl(7), ctrl(2)} << QSet<int>{7};
  QTest::newRow("Shift extends from the current photo") << QList<Step>{shift(2)} << QSet<int>{0, 1, 2};
  QTest::newRow("Shift extends from the last one") << QList<Step>{ctrl(7), shift(5)} << QSet<int>{5, 6, 7};
  QTest::newRow("Ctrl wins over Shift") << QList<Step>{ctrl(1), {photoName(3), Qt::ControlModifier | Qt::ShiftModifier}}
                                        << QSet<int>{1, 3};
  QTest::newRow("Clear unchecks all") << QList<Step>{shift(5), clear} << QSet<int>{};
  QTest::newRow("Esc unchecks all") << QList<Step>{shift(5), escape} << QSet<int>{};
  QTest::newRow("after which Shift extends from the current photo again")
      << QList<Step>{ctrl(7), escape, shift(1)} << QSet<int>{0, 1};
  QTest::newRow("Esc does nothing more") << QList<Step>{ctrl(1), escape, escape} << QSet<int>{};
}

void GridUiTest::tilesAreSelected() {
  QFETCH(QList<Step>, steps);
  QFETCH(QSet<int>, checked);
  for (const Step& step : steps) {
    if (step.name == QStringLiteral("Esc")) {
      m_window->press(Qt::Key_Escape);
    } else {
      QTRY_VERIFY(m_window->shows(step.name));
      m_window->click(step.name, step.modifiers);
    }
  }
  QTRY_COMPARE(checkedTiles(), checked);
  QVERIFY(m_window->shows(photoName(0)));  // no photo was opened
  const QString count = QString::number(checked.size()) + QStringLiteral(" selected");
  QTRY_COMPARE(m_window->shows(count), !checked.isEmpty());
}

void GridUiTest::theBarsSwap() {
  const QRect chooseFolder = m_window->rectOf("Choose Folder");
  m_window->click(photoName(3), Qt::ControlModifier);
  QTRY_VERIFY(m_window->shows("1 selected") && m_window->shows("Clear") && m_window->shows("Delete"));
  // What leaves no longer acts.
  m_app->platform.chooser.asked.clear();
  QTest::mouseClick(&m_window->window, Qt::LeftButton, {}, chooseFolder.center());
  QVERIFY(m_app->platform.chooser.asked.isEmpty());
  QTRY_VERIFY(!m_window->shows("Choose Folder") && !m_window->shows("Sort order"));
  m_window->click("Clear");
  QTRY_VERIFY(m_window->shows("Choose Folder") && m_window->shows("Sort order"));
  QTRY_VERIFY(!m_window->shows("Clear") && !m_window->shows("Delete"));
  QCOMPARE(m_window->rectOf("Choose Folder"), chooseFolder);
}

void GridUiTest::theSelectionIsMovedAfterAQuestion_data() {
  QTest::addColumn<int>("last");  // from the second photo on
  QTest::addColumn<int>("answer");
  QTest::addColumn<QSet<QString>>("stuck");
  QTest::addColumn<QStringList>("question");
  QTest::addColumn<QStringList>("moved");
  QTest::addColumn<QString>("status");
  const QString toTrash = QStringLiteral("Move to Trash");
  const QString cancel = QStringLiteral("Cancel");
  const QStringList three{QStringLiteral("Move 3 photos to Trash?"),
                          QStringLiteral("3 selected photos will be moved to the Trash."), toTrash, cancel};
  const QStringList one{QStringLiteral("Move 1 photo to Trash?"),
                        QStringLiteral("1 selected photo will be moved to the Trash."), toTrash, cancel};
  const QStringList fromTheEnd{photoName(3), photoName(2), photoName(1)};
  QTest::newRow("three, confirmed") << 3 << 0 << QSet<QString>{} << three << fromTheEnd << "Moved 3 photos to Trash.";
  QTest::newRow("three, cancelled") << 3 << 1 << QSet<QString>{} << three << QStringList{} << "";
  QTest::newRow("three, of which one sticks")
      << 3 << 0 << QSet<QString>{photoName(2)} << three << QStringList{photoName(3), photoName(1)}
      << "Moved 2 photos to Trash. 1 failed.";
  QTest::newRow("one, confirmed") << 1 << 0 << QSet<QString>{} << one << QStringList{photoName(1)}
                                  << "Moved 1 photo to Trash.";
  QTest::newRow("one, which sticks") << 1 << 0 << QSet<QString>{photoName(1)} << one << QStringList{}
                                     << "Moved 0 photos to Trash. 1 failed.";
}

void GridUiTest::theSelectionIsMovedAfterAQuestion() {
  QFETCH(int, last);
  QFETCH(int, answer);
  QFETCH(QStringList, moved);
  QFETCH(QString, status);
  QFETCH(QSet<QString>, stuck);
  m_app->platform.alert.answer = answer;
  m_app->platform.trash.stuck = stuck;
  m_window->click(photoName(1), Qt::ControlModifier);
  m_window->click(photoName(last), Qt::ShiftModifier);
  QTRY_COMPARE(checkedTiles().size(), last);
  QTRY_VERIFY(m_window->shows("Delete"));
  m_window->click("Delete");

  QFETCH(QStringList, question);
  QCOMPARE(m_app->platform.alert.asked, QList<QStringList>{question});
  QCOMPARE(m_app->platform.trash.moved, moved);
  const bool isConfirmed = answer == 0;
  QTRY_COMPARE(checkedTiles().isEmpty(), isConfirmed);
  for (int number = 0; number < kPhotos; ++number) {
    QCOMPARE(m_window->shows(photoName(number)), !moved.contains(photoName(number)));
  }
  if (isConfirmed) {
    const QAccessibleInterface* message = m_window->find(status, QAccessible::AlertMessage);
    QVERIFY(message);
    waitForControlBar();
  } else {
    QVERIFY(m_window->shows("3 selected"));
  }
}

void GridUiTest::theBarSetsTheColumns_data() {
  QTest::addColumn<QStringList>("clicks");
  QTest::addColumn<int>("columns");
  const QString fewer = QStringLiteral("Zoom in to show fewer thumbnails");
  const QString more = QStringLiteral("Zoom out to show more thumbnails");
  QTest::newRow("four at first") << QStringList{} << 4;
  QTest::newRow("fewer") << QStringList{fewer} << 3;
  QTest::newRow("more") << QStringList{more} << 5;
  QTest::newRow("no fewer than two") << QStringList{fewer, fewer, fewer} << 2;
  QTest::newRow("no more than six") << QStringList{more, more, more} << 6;
  QTest::newRow("back from the end") << QStringList{more, more, fewer} << 5;
  for (int columns = 2; columns <= 6; ++columns) {
    QTest::addRow("a preset for %d", columns) << QStringList{QString::number(columns * columns)} << columns;
  }
  QTest::newRow("the active preset again") << QStringList(2, QStringLiteral("16")) << 4;
}

void GridUiTest::theBarSetsTheColumns() {
  QFETCH(QStringList, clicks);
  QFETCH(int, columns);
  for (const QString& name : clicks) m_window->click(name);
  for (int preset = 2; preset <= 6; ++preset) {
    QTRY_COMPARE(m_window->isChecked(QString::number(preset * preset)), preset == columns);
  }
  QCOMPARE(m_window->isEnabled("Zoom in to show fewer thumbnails"), columns > 2);
  QCOMPARE(m_window->isEnabled("Zoom out to show more thumbnails"), columns < 6);
  const auto columnsOnScreen = [this] {
    QSet<int> lefts;
    for (int number = 0; number < kPhotos; ++number) {
      if (const QRect rect = m_window->rectOf(photoName(number)); !rect.isEmpty()) lefts.insert(rect.left());
    }
    return int(lefts.size());
  };
  QTRY_COMPARE(columnsOnScreen(), columns);
}

void GridUiTest::aPinchStepsTheColumns_data() {
  QTest::addColumn<QList<double>>("pinch");
  QTest::addColumn<int>("notches");
  QTest::addColumn<int>("columns");
  const auto pinch = [](const char* name, const QList<double>& magnifications, int columns) {
    QTest::newRow(name) << magnifications << 0 << columns;
  };
  const auto wheel = [](const char* name, int notches, int columns) {
    QTest::newRow(name) << QList<double>{} << notches << columns;
  };
  pinch("apart, one step", {1.05, 1.09}, 3);
  pinch("apart, two steps", {1.09, 1.17, 1.2}, 2);
  pinch("apart, no step within eight percent of the last", {1.09, 1.17}, 3);
  pinch("together, one step", {0.95, 0.91}, 5);
  pinch("together, no further than six", {0.91, 0.8, 0.7, 0.6, 0.5}, 6);
  pinch("neither, below the step", {1.07, 0.93, 1.0}, 4);
  wheel("the wheel with Ctrl, one notch", 1, 3);
  wheel("the wheel with Ctrl, three notches back", -3, 6);
}

void GridUiTest::aPinchStepsTheColumns() {
  QFETCH(QList<double>, pinch);
  QFETCH(int, notches);
  QFETCH(int, columns);
  if (!pinch.isEmpty()) m_window->pinch(pinch);
  for (int notch = 0; notch < std::abs(notches); ++notch) {
    m_window->turnWheel(notches > 0 ? 120 : -120, Qt::ControlModifier);
  }
  QTRY_VERIFY(m_window->isChecked(QString::number(columns * columns)));
  // The next pinch starts from its own factor.
  QTRY_COMPARE(m_window->view.lastMagnification(), 1.0);
  m_window->pinch({1.09});
  QTRY_VERIFY(m_window->isChecked(QString::number(std::max(2, columns - 1) * std::max(2, columns - 1))));
}

void GridUiTest::theSortMenuMarksTheActiveOrder() {
  const auto choose = [this](const QString& title) {
    m_window->click("Sort order");
    QString marked;
    std::function<void()> action;
    for (const MenuEntry& entry : m_app->platform.popupMenu.entries) {
      if (entry.mark == MenuEntry::Mark::check) marked += entry.title;
      if (entry.title == title) action = entry.action;
    }
    action();
    return marked;
  };
  const QString up = QStringLiteral("Name A–Z");
  const QString down = QStringLiteral("Name Z–A");
  QCOMPARE(choose(down), up);
  const QRect face = m_window->rectOf("Sort order");
  QCOMPARE(m_app->platform.popupMenu.position, m_window->window.mapToGlobal(face.topLeft()) + QPoint(0, 32));
  QTRY_VERIFY(m_window->rectOf("11.jpg").top() < m_window->rectOf("0.jpg").top());
  QCOMPARE(choose(up), down);
  QTRY_VERIFY(m_window->rectOf("11.jpg").top() > m_window->rectOf("0.jpg").top());

  // The active one sorts again, which ends the selection too.
  m_window->click("Sort order");
  const auto entries = m_app->platform.popupMenu.entries;
  m_window->click(photoName(3), Qt::ControlModifier);
  QTRY_COMPARE(checkedTiles(), QSet<int>{3});
  entries.front().action();
  QTRY_VERIFY(checkedTiles().isEmpty());
  waitForControlBar();
}

void GridUiTest::foldersAreDropped_data() {
  QTest::addColumn<QStringList>("names");
  QTest::addColumn<bool>("opens");
  QTest::newRow("a folder") << QStringList{QStringLiteral("other")} << true;
  QTest::newRow("the first of several") << QStringList{QStringLiteral("other"), QStringLiteral("more")} << true;
  QTest::newRow("a picture has no effect") << QStringList{QStringLiteral("x.jpg")} << false;
  QTest::newRow("nor has one before a folder")
      << QStringList{QStringLiteral("x.jpg"), QStringLiteral("other")} << false;
  QTest::newRow("nor has what is gone") << QStringList{QStringLiteral("gone")} << false;
}

void GridUiTest::foldersAreDropped() {
  QFETCH(QStringList, names);
  QFETCH(bool, opens);
  const Photos root({QStringLiteral("x.jpg")});
  (void)root.addFolder(QStringLiteral("other"));
  (void)root.addFolder(QStringLiteral("more"));
  (void)root.add(QStringLiteral("other/first.jpg"), samplePhoto({20, 20}));
  QList<QUrl> urls;
  for (const QString& name : names) urls.append(QUrl::fromLocalFile(QFile::decodeName(root.url(name).path())));
  m_window->click(photoName(5));
  QTRY_VERIFY(m_window->shows("Next photo"));
  QVERIFY(m_window->drop(urls));
  QTRY_COMPARE(m_window->shows("first.jpg"), opens);
  QCOMPARE(m_window->shows("Next photo"), !opens);  // otherwise all is as it was
  QCOMPARE(m_window->shows("Showing \"5.jpg\"."), !opens);
}

void GridUiTest::withoutPhotosAPlaceholderShows() {
  const PhotoFolder empty;
  UiWindow fresh(m_app->app);
  const auto showsPlaceholder = [&] {
    return fresh.shows("Choose a folder to start browsing.") &&
           fresh.shows("Use the folder button, then pinch to zoom the grid or click any photo to open it.");
  };
  QVERIFY(showsPlaceholder());
  QVERIFY(fresh.shows("Sort order") && fresh.shows("Choose Folder"));
  choose(*m_app, fresh, m_folder.url());
  QTRY_VERIFY(fresh.shows("0.jpg") && !showsPlaceholder());
  m_app->platform.chooser.answer = empty.url();
  fresh.click("Choose Folder");
  QTRY_VERIFY(showsPlaceholder());
  QVERIFY(fresh.shows("No supported image files were found in this folder."));
  const QRect title = fresh.rectOf("Choose a folder to start browsing.");
  QVERIFY(std::abs(title.left() + title.right() + 1 - fresh.window.width()) <= 1);
}

void GridUiTest::theStatusShowsOnTheGrid() {
  const auto message = [this](const QString& text) { return m_window->find(text, QAccessible::AlertMessage); };
  const Photos other({QStringLiteral("only.jpg")});
  m_app->platform.chooser.answer = other.url();
  m_window->click("Choose Folder");
  QTRY_VERIFY(message(QStringLiteral("Loaded 1 photo from \"%1\".").arg(other.url().displayName())));

  // It has left when the photo has shown another, and an error stays.
  QTRY_VERIFY(m_window->shows("only.jpg"));
  m_window->click("only.jpg");
  QTRY_VERIFY(m_window->shows("Grid"));
  m_window->press(Qt::Key_Escape);
  QTRY_VERIFY(m_window->shows("only.jpg"));
  QVERIFY(!m_window->shows("Showing \"only.jpg\"."));
  m_app->platform.trash.stuck = {QStringLiteral("only.jpg")};
  m_window->click("only.jpg", Qt::ControlModifier);
  QTRY_VERIFY(m_window->shows("Delete"));
  m_window->click("Delete");
  QTRY_VERIFY(message(QStringLiteral("Moved 0 photos to Trash. 1 failed.")));
  waitForControlBar();
  m_window->turnWheel(-120);
  m_window->press(Qt::Key_Escape);
  QVERIFY(message(QStringLiteral("Moved 0 photos to Trash. 1 failed.")));
}

void GridUiTest::thePhotoThatWasShownComesToTheCentre() {
  const Photos many(200);
  choose(*m_app, *m_window, many.url());
  QTRY_VERIFY(m_window->shows("15.jpg"));
  m_window->click("15.jpg");
  QTRY_VERIFY(m_window->shows("Next photo"));
  while (m_window->library.currentIndex() < 100) m_window->press(Qt::Key_Right);
  m_window->press(Qt::Key_Escape);
  QTRY_VERIFY(m_window->shows("100.jpg"));
  const int stageMiddle = m_window->menuBarHeight() + (m_window->window.height() - m_window->menuBarHeight()) / 2;
  const auto distance = [&](const char* name) { return std::abs(m_window->rectOf(name).center().y() - stageMiddle); };
  QTRY_VERIFY(distance("100.jpg") <= 1);
  // With other columns, what is in the middle stays near it.
  const int side = m_window->rectOf("100.jpg").width();
  m_window->click("36");
  QTRY_VERIFY(m_window->shows("100.jpg") && m_window->rectOf("100.jpg").width() < side);
  QVERIFY(distance("100.jpg") < side);
  // The wheel alone scrolls.
  const int top = m_window->rectOf("100.jpg").top();
  m_window->turnWheel(120);
  QTRY_COMPARE(m_window->rectOf("100.jpg").top(), top + 120);
}

LUMAGRID_UI_TEST_MAIN(GridUiTest)
#include "GridUiTest.moc"
