#include "ContentView.h"

#include <QSignalSpy>
#include <QTest>

#include "PhotoFolder.h"
#include "TestWindow.h"

using namespace lumagrid;

// Observers run on the next turn of the event loop: processEvents() is that turn.
class ContentViewTest : public QObject {
  Q_OBJECT

 private Q_SLOTS:
  void init();
  void escapeFirstClearsTheSelection();
  void leavingThePhotoScrollsToIt();
  void clicksOnTiles_data();
  void clicksOnTiles();
  void anEmptyFolderReturnsToTheGrid_data();
  void anEmptyFolderReturnsToTheGrid();
  void recordsFoldersThatBecomeOpen();
  void whatChangesBackIsNoChange();
  void openRecentIsHeardByEveryWindow();
  void choosingShowsTheGrid_data();
  void choosingShowsTheGrid();
  void drops_data();
  void drops();
  void openingWaitsForADialog_data();
  void openingWaitsForADialog();
  void asksOnceForTheSelection_data();
  void asksOnceForTheSelection();
  void theSortMenuMarksTheActiveOrder();
  void opensAPath();
  void aHugeSelectionIsToldOnce();

 private:
  PhotoFolder m_folder{numberedNames(5)};
  PhotoFolder m_other{QStringList{QStringLiteral("x.jpg"), QStringLiteral("y.jpg")}};
  PhotoFolder m_empty;
  std::unique_ptr<TestWindow> m_window;
};

void ContentViewTest::init() {
  m_window = std::make_unique<TestWindow>();
  m_window->library.openFolder(m_folder.url());
  QCoreApplication::processEvents();
}

void ContentViewTest::escapeFirstClearsTheSelection() {
  ContentView& view = m_window->view;
  QSignalSpy modes(&view, &ContentView::browserModeChanged);
  view.handleExitCommand();
  view.handleTileClick(1, Qt::ControlModifier);
  view.handleExitCommand();
  QVERIFY(m_window->library.selectedIndices().empty());
  QCOMPARE(modes.count(), 0);
  QCOMPARE(view.gridScrollTarget(), std::nullopt);

  view.handleTileClick(2, Qt::NoModifier);
  m_window->library.toggleSelection(1);
  view.handleExitCommand();
  QVERIFY(!view.showsGrid());
  QVERIFY(m_window->library.selectedIndices().empty());
  view.handleExitCommand();
  QVERIFY(view.showsGrid());
}

void ContentViewTest::leavingThePhotoScrollsToIt() {
  ContentView& view = m_window->view;
  view.handleTileClick(2, Qt::NoModifier);
  QCoreApplication::processEvents();
  m_window->library.showNext();
  QCoreApplication::processEvents();
  view.handleDetailMagnification(3);
  view.handleDrag({5, 5});
  QSignalSpy animations(&view, &ContentView::zoomWillChange);
  view.exitDetailMode();
  QCOMPARE(view.gridScrollTarget(), m_folder.url(QStringLiteral("3.jpg")).path());
  QCOMPARE(view.zoom(), ZoomState{});
  QCOMPARE(view.displacement(), QPointF(0, 0));
  QCOMPARE(animations.count(), 1);
  QCOMPARE(animations.first().first().value<ContentView::ZoomAnimation>(), ContentView::ZoomAnimation::None);
}

void ContentViewTest::clicksOnTiles_data() {
  QTest::addColumn<Qt::KeyboardModifiers>("modifiers");
  QTest::addColumn<QList<std::int64_t>>("selected");
  QTest::addColumn<bool>("opens");
  const auto row = [](const char* name, Qt::KeyboardModifiers modifiers, const QList<std::int64_t>& selected,
                      bool opens) { QTest::newRow(name) << modifiers << selected << opens; };
  row("plain: opens, and clears the selection", Qt::NoModifier, {}, true);
  row("with Ctrl: one more", Qt::ControlModifier, {1, 3}, false);
  row("with Shift: as far as here", Qt::ShiftModifier, {1, 2, 3}, false);
  row("Ctrl wins over Shift", Qt::ControlModifier | Qt::ShiftModifier, {1, 3}, false);
  row("Alt and Meta are not looked at", Qt::AltModifier | Qt::MetaModifier, {}, true);
}

void ContentViewTest::clicksOnTiles() {
  QFETCH(Qt::KeyboardModifiers, modifiers);
  QFETCH(bool, opens);
  m_window->library.openPhoto(0);
  m_window->library.toggleSelection(1);
  m_window->view.handleTileClick(3, modifiers);
  QList<std::int64_t> selected(m_window->library.selectedIndices().begin(), m_window->library.selectedIndices().end());
  std::sort(selected.begin(), selected.end());
  QTEST(selected, "selected");
  QCOMPARE(!m_window->view.showsGrid(), opens);
  QCOMPARE(m_window->library.currentIndex(), opens ? 3 : 0);
}

void ContentViewTest::anEmptyFolderReturnsToTheGrid_data() {
  QTest::addColumn<std::function<void(TestWindow&)>>("emptying");
  const auto row = [](const char* name, std::function<void(TestWindow&)> emptying) { QTest::newRow(name) << emptying; };
  row("a folder without photos", [this](TestWindow& window) { window.library.openFolder(m_empty.url()); });
  row("a folder that is not there",
      [this](TestWindow& window) { window.library.openFolder(m_empty.url(QStringLiteral("z"))); });
  row("the last photo is deleted", [](TestWindow& window) {
    while (window.library.photoCount() > 0) window.view.deleteCurrentPhoto();
  });
}

void ContentViewTest::anEmptyFolderReturnsToTheGrid() {
  QFETCH(std::function<void(TestWindow&)>, emptying);
  m_window->view.handleTileClick(0, Qt::NoModifier);
  QSignalSpy counts(&m_window->view, &ContentView::photoCountChanged);
  emptying(*m_window);
  QVERIFY(!m_window->view.showsGrid());
  QCoreApplication::processEvents();
  QVERIFY(m_window->view.showsGrid());
  QCOMPARE(counts.count(), 1);
}

void ContentViewTest::recordsFoldersThatBecomeOpen() {
  const auto& urls = m_window->recents.urls();
  const auto open = [this](const FileUrl& url) {
    m_window->library.openFolder(url);
    QCoreApplication::processEvents();
  };
  QCOMPARE(urls, std::vector<FileUrl>{m_folder.url()});
  open(m_other.url());
  QCOMPARE(urls, (std::vector<FileUrl>{m_other.url(), m_folder.url()}));
  m_window->recents.add(m_folder.url());
  open(m_other.url());  // it is open already
  QCOMPARE(urls, (std::vector<FileUrl>{m_folder.url(), m_other.url()}));
  open(m_empty.url(QStringLiteral("missing")));
  QCOMPARE(urls.size(), std::size_t{2});
  open(m_other.url());
  open(m_empty.url());  // without photos, and yet open
  QCOMPARE(urls, (std::vector<FileUrl>{m_empty.url(), m_other.url(), m_folder.url()}));
}

void ContentViewTest::whatChangesBackIsNoChange() {
  m_window->view.handleTileClick(2, Qt::NoModifier);
  QCoreApplication::processEvents();
  m_window->view.handleDetailMagnification(2);
  m_window->library.showNext();
  m_window->library.showPrevious();
  m_window->library.openFolder(m_empty.url());
  m_window->library.openFolder(m_folder.url());
  m_window->library.openPhoto(2);
  QCoreApplication::processEvents();
  QCOMPARE(m_window->view.zoom().scale, 2.0);
  QVERIFY(!m_window->view.showsGrid());
  QCOMPARE(m_window->recents.urls(), std::vector<FileUrl>{m_folder.url()});
}

void ContentViewTest::openRecentIsHeardByEveryWindow() {
  ContentView second(m_window->platform.services(), m_window->shared());
  m_window->view.handleTileClick(1, Qt::NoModifier);
  m_window->view.setGridDimension(3);
  const auto target = m_window->view.gridScrollTarget();
  QVERIFY(target);
  m_window->center.post(QStringLiteral("another"), m_other.url());
  m_window->center.post(openRecentFolder, std::nullopt);
  QVERIFY(!m_window->view.showsGrid());
  m_window->center.post(openRecentFolder, m_other.url());
  QVERIFY(m_window->view.showsGrid());
  QCOMPARE(m_window->view.gridScrollTarget(), target);
  QCOMPARE(m_window->library.folderURL(), m_other.url());
  QCOMPARE(second.library()->folderURL(), m_other.url());
  QCOMPARE(m_window->view.gridDimension(), 3);

  m_window->center.post(openRecentFolder, m_empty.url(QStringLiteral("gone")));
  QVERIFY(m_window->library.statusIsError());
}

void ContentViewTest::choosingShowsTheGrid_data() {
  QTest::addColumn<bool>("confirmed");
  QTest::newRow("confirmed") << true;
  QTest::newRow("cancelled") << false;
}

void ContentViewTest::choosingShowsTheGrid() {
  QFETCH(bool, confirmed);
  m_window->view.handleTileClick(4, Qt::NoModifier);
  if (confirmed) m_window->platform.chooser.answer = m_other.url();
  m_window->view.chooseFolderAndShowGrid();
  QVERIFY(m_window->view.showsGrid());
  QCOMPARE(m_window->library.folderURL(), confirmed ? m_other.url() : m_folder.url());
  QCOMPARE(m_window->view.gridScrollTarget(), m_window->library.currentPhoto()->id());

  m_window->platform.chooser.answer = m_empty.url();
  m_window->view.chooseFolderAndShowGrid();
  QCOMPARE(m_window->view.gridScrollTarget(), std::nullopt);
}

void ContentViewTest::drops_data() {
  QTest::addColumn<QList<QUrl>>("urls");
  QTest::addColumn<bool>("accepted");
  QTest::addColumn<bool>("opens");
  const auto urlOf = [](const FileUrl& url) { return QUrl::fromLocalFile(QFile::decodeName(url.path())); };
  const QUrl other = urlOf(m_other.url());
  QTest::newRow("nothing") << QList<QUrl>{} << false << false;
  QTest::newRow("a folder") << QList<QUrl>{other} << true << true;
  QTest::newRow("a folder, with a slash at its end") << QList<QUrl>{QUrl(other.toString() + u'/')} << true << true;
  QTest::newRow("of several folders the first") << QList<QUrl>{other, urlOf(m_empty.url())} << true << true;
  QTest::newRow("a file") << QList<QUrl>{urlOf(m_other.url(QStringLiteral("x.jpg")))} << true << false;
  QTest::newRow("a file before a folder")
      << QList<QUrl>{urlOf(m_other.url(QStringLiteral("x.jpg"))), other} << true << false;
  QTest::newRow("nothing there") << QList<QUrl>{urlOf(m_other.url(QStringLiteral("z")))} << true << false;
  QTest::newRow("no file at all") << QList<QUrl>{QUrl(QStringLiteral("https://example.org/"))} << true << false;
}

void ContentViewTest::drops() {
  QFETCH(QList<QUrl>, urls);
  QFETCH(bool, opens);
  m_window->view.handleTileClick(0, Qt::NoModifier);
  const QString status = m_window->library.statusMessage();
  QTEST(m_window->view.handleDrop(urls), "accepted");
  QCOMPARE(m_window->library.folderURL(), m_folder.url());  // until the drop has ended
  QCoreApplication::processEvents();
  QCOMPARE(m_window->library.folderURL(), opens ? m_other.url() : m_folder.url());
  QCOMPARE(m_window->view.showsGrid(), opens);
  if (!opens) QCOMPARE(m_window->library.statusMessage(), status);
}

void ContentViewTest::openingWaitsForADialog_data() {
  QTest::addColumn<std::function<void(TestWindow&)>>("dialog");
  QTest::addColumn<qsizetype>("moved");
  const auto row = [](const char* name, qsizetype moved, std::function<void(TestWindow&)> dialog) {
    QTest::newRow(name) << dialog << moved;
  };
  row("the chooser", 0, [](TestWindow& window) { window.view.chooseFolderAndShowGrid(); });
  row("the question about one photo", 1, [](TestWindow& window) { window.view.deleteCurrentPhoto(); });
  row("the question about the selection", 2, [](TestWindow& window) {
    window.library.extendSelection(window.library.currentIndex() == 0 ? 1 : window.library.currentIndex() - 1);
    window.view.deleteSelectedWithConfirmation();
  });
}

void ContentViewTest::openingWaitsForADialog() {
  QFETCH(std::function<void(TestWindow&)>, dialog);
  QFETCH(qsizetype, moved);
  bool wasOpen = false;
  const auto whileOpen = [&] {
    wasOpen = true;
    QVERIFY(m_window->view.handleDrop({QUrl::fromLocalFile(QFile::decodeName(m_empty.url().path()))}));
    QCoreApplication::processEvents();
    m_window->center.post(openRecentFolder, m_other.url());
    QCOMPARE(m_window->library.folderURL(), m_folder.url());
  };
  m_window->platform.chooser.whileOpen = whileOpen;
  m_window->platform.alert.whileOpen = whileOpen;
  dialog(*m_window);
  QVERIFY(wasOpen);
  QCOMPARE(m_window->platform.trash.moved.size(), moved);
  QCOMPARE(m_window->library.folderURL(), m_other.url());  // what was asked for last
  QVERIFY(m_window->view.showsGrid());
}

void ContentViewTest::asksOnceForTheSelection_data() {
  QTest::addColumn<int>("last");
  QTest::addColumn<int>("pressed");
  QTest::addColumn<QStringList>("texts");
  QTest::newRow("one photo") << 1 << 0
                             << QStringList{QStringLiteral("Move 1 photo to Trash?"),
                                            QStringLiteral("1 selected photo will be moved to the Trash.")};
  QTest::newRow("three photos") << 3 << 0
                                << QStringList{QStringLiteral("Move 3 photos to Trash?"),
                                               QStringLiteral("3 selected photos will be moved to the Trash.")};
  QTest::newRow("cancelled") << 2 << 1
                             << QStringList{QStringLiteral("Move 2 photos to Trash?"),
                                            QStringLiteral("2 selected photos will be moved to the Trash.")};
}

void ContentViewTest::asksOnceForTheSelection() {
  QFETCH(int, last);
  QFETCH(int, pressed);
  QFETCH(QStringList, texts);
  m_window->library.openPhoto(1);
  m_window->library.extendSelection(last);
  m_window->platform.alert.answer = pressed;
  m_window->view.deleteSelectedWithConfirmation();
  QCOMPARE(m_window->platform.alert.asked,
           QList<QStringList>{texts + QStringList({QStringLiteral("Move to Trash"), QStringLiteral("Cancel")})});
  QCOMPARE(m_window->platform.trash.moved.size(), pressed == 0 ? last : 0);
  QCOMPARE(m_window->library.selectedIndices().empty(), pressed == 0);
}

void ContentViewTest::theSortMenuMarksTheActiveOrder() {
  m_window->library.setSortOrder(SortOrder::dateNewest);
  m_window->view.openSortMenu(nullptr, {3, 4});
  const std::vector<MenuEntry>& entries = m_window->platform.popupMenu.entries;
  QCOMPARE(entries.size(), std::size_t{4});
  for (std::size_t i = 0; i < entries.size(); ++i) {
    QCOMPARE(entries[i].title, rawValue(kAllSortOrders[i]));
    QCOMPARE(entries[i].mark == MenuEntry::Mark::check, kAllSortOrders[i] == SortOrder::dateNewest);
  }
  entries[1].action();
  QCOMPARE(m_window->library.sortOrder(), SortOrder::nameDescending);
}

void ContentViewTest::opensAPath() {
  m_window->view.openPath(m_other.url(QStringLiteral("y.jpg")));
  QCOMPARE(m_window->library.currentPhoto()->displayName(), QStringLiteral("y.jpg"));
  QVERIFY(m_window->view.hasImage());
  QCoreApplication::processEvents();
  QVERIFY(!m_window->view.showsGrid());
  QCOMPARE(m_window->recents.urls().front(), m_other.url());
  TestWindow fresh;
  fresh.view.openPath(m_folder.url());
  QVERIFY(fresh.view.showsGrid());
  QCOMPARE(fresh.view.photoCount(), 5);
  fresh.view.openPath(m_folder.url(QStringLiteral("nothing.jpg")));
  QVERIFY(fresh.library.statusIsError());
}

void ContentViewTest::aHugeSelectionIsToldOnce() {
  constexpr int kPhotos = 100'000;
  const PhotoFolder folder;
  for (int number = 0; number < kPhotos; ++number) {
    const QByteArray path = folder.url().path() + '/' + QByteArray::number(number) + ".jpg";
    QCOMPARE(::mknod(path.constData(), S_IFREG | 0644, 0), 0);
  }
  PhotoLibrary& library = m_window->library;
  library.openFolder(folder.url());
  library.openPhoto(0);
  QCoreApplication::processEvents();
  int announced = 0;
  int published = 0;
  connect(&library, &PhotoLibrary::objectWillChange, this, [&] { ++announced; });
  connect(&library, &PhotoLibrary::selectedIndicesChanged, this, [&] { ++published; });
  QSignalSpy told(&m_window->view, &ContentView::selectedCountChanged);
  m_window->view.handleTileClick(kPhotos - 1, Qt::ShiftModifier);
  QCOMPARE(announced, kPhotos);
  QCOMPARE(published, kPhotos);
  QCOMPARE(m_window->view.selectedCount(), kPhotos);
  QCOMPARE(told.count(), 0);
  QCoreApplication::processEvents();
  QCOMPARE(told.count(), 1);
}

QTEST_GUILESS_MAIN(ContentViewTest)
#include "ContentViewTest.moc"
