#include "ContentView.h"

#include <QSignalSpy>
#include <QTest>
#include <cmath>

#include "PhotoFolder.h"
#include "TestWindow.h"

using namespace lumagrid;

using Curve = ZoomState::Curve;

// Observers run on the next turn of the event loop: processEvents() is that turn.
class ContentViewTest : public QObject {
  Q_OBJECT

 private Q_SLOTS:
  void init() {
    m_window = std::make_unique<TestWindow>();
    m_window->library.openFolder(m_folder.url());
    QCoreApplication::processEvents();
  }

  void whatChangesBackIsNoChange() {
    m_window->view.handleTileClick(2, Qt::NoModifier);
    QCoreApplication::processEvents();
    m_window->view.handleDetailMagnification(2);
    m_window->library.showNext();
    m_window->library.openFolder(m_empty.url());
    m_window->library.openFolder(m_folder.url());
    m_window->library.openPhoto(2);
    QCoreApplication::processEvents();
    QCOMPARE(m_window->view.zoom().scale, 2.0);
    QVERIFY(!m_window->view.showsGrid());
    QCOMPARE(m_window->recents.urls(), std::vector<FileUrl>{m_folder.url()});

    QSignalSpy animations(&m_window->view, &ContentView::zoomWillChange);
    m_window->library.showNext();
    QCOMPARE(m_window->view.zoom().scale, 2.0);  // until the next turn
    QCoreApplication::processEvents();
    QCOMPARE(m_window->view.zoom(), ZoomState{});
    QCOMPARE(animations, QList<QVariantList>{{QVariant::fromValue(Curve::EaseOut)}});
  }

  void anEmptyFolderReturnsToTheGrid() {
    m_window->library.toggleSelection(1);
    m_window->view.handleTileClick(0, Qt::AltModifier | Qt::MetaModifier);  // as good as none
    QVERIFY(m_window->library.selectedIndices().empty());
    for (const FileUrl& url : {m_empty.url(), m_empty.url(QStringLiteral("missing"))}) {
      m_window->library.openFolder(url);
      QCOMPARE(m_window->view.showsGrid(), url != m_empty.url());
      QCoreApplication::processEvents();
      QVERIFY(m_window->view.showsGrid());
    }
    QCOMPARE(m_window->recents.urls(), (std::vector<FileUrl>{m_empty.url(), m_folder.url()}));
  }

  void openingWaitsForADialog() {
    std::unique_ptr<ContentView> second;  // another window: a dialog blocks them all
    const auto whileOpen = [&] {
      m_window->center.post(openRecentFolder, m_empty.url());
      m_window->center.post(openRecentFolder, m_other.url());
      QCOMPARE(m_window->library.folderURL(), m_folder.url());
      QVERIFY(!second->library()->folderURL());
    };
    for (const auto& [dialog, moved] : {std::pair(&ContentView::chooseFolderAndShowGrid, 0),
                                        {&ContentView::deleteCurrentPhoto, 1},
                                        {&ContentView::deleteSelectedWithConfirmation, 2}}) {
      second.reset();
      init();
      second = std::make_unique<ContentView>(m_window->platform.services(), m_window->shared());
      m_window->platform.chooser.whileOpen = whileOpen;
      m_window->platform.alert.whileOpen = whileOpen;
      m_window->library.openPhoto(0);
      m_window->library.extendSelection(1);
      (m_window->view.*dialog)();
      QCOMPARE(m_window->platform.trash.moved.size(), moved);
      for (ContentView* view : {&m_window->view, second.get()}) {
        QCOMPARE(view->library()->folderURL(), m_other.url());  // what was asked for last
      }
      QVERIFY(m_window->view.showsGrid());
    }
  }

  void aQuestionIsAboutTheFilesOfItsTime() {
    const PhotoFolder folder(numberedNames(2));
    m_window->library.openFolder(folder.url());
    for (const int index : {0, 1}) m_window->library.toggleSelection(index);
    m_window->platform.alert.whileOpen = [&folder] { (void)folder.add(QStringLiteral("0.jpg"), "another"); };
    m_window->view.deleteSelectedWithConfirmation();
    QCOMPARE(m_window->library.statusMessage(), QStringLiteral("Moved 1 photo to Trash. 1 failed."));
    QCOMPARE(namesOf(m_window->library.photos()), numberedNames(1));
  }

  void opensWhatIsDroppedOrNamed() {
    const QUrl other = QUrl::fromLocalFile(QFile::decodeName(m_other.url().path()) + u'/');
    // Neither names a file, and what follows the first does not count.
    const QList<QUrl> noFiles = {QUrl(QStringLiteral("https://example.org/")),
                                 QUrl(other.toString() + QStringLiteral("%00x"))};
    for (const QList<QUrl>& none : {QList<QUrl>(), {noFiles[0], other}, {noFiles[1], other}}) {
      QVERIFY(!m_window->view.acceptsDrop(none) && !m_window->view.handleDrop(none));
    }
    QCoreApplication::processEvents();
    QVERIFY(m_window->view.handleDrop({other}));
    QCOMPARE(m_window->library.folderURL(), m_folder.url());  // until the drop has ended
    QCoreApplication::processEvents();
    QCOMPARE(m_window->library.folderURL(), m_other.url());
    m_window->view.openPath(m_folder.url());
    QVERIFY(m_window->view.showsGrid());
    QCOMPARE(m_window->library.photoCount(), 5);
    m_window->view.openPath(m_other.url(QStringLiteral("y.jpg")));
    QCOMPARE(m_window->library.currentPhoto()->displayName(), QStringLiteral("y.jpg"));
    QVERIFY(!m_window->view.showsGrid());
    m_window->view.openPath(m_folder.url(QStringLiteral("nothing.jpg")));
    QVERIFY(m_window->library.statusIsError());
  }

  // … in the order in which they are named: Shift then extends from the last. What is no photo of the folder is left
  // out, and when nothing is left, it is said.
  void severalPhotosAreSelectedInTheirFolder() {
    const auto url = [this](int index) { return m_window->library.photos()[std::size_t(index)].url; };
    const std::vector<FileUrl> named{url(3), m_folder.url(QStringLiteral("notes.txt")), url(1), url(3)};
    m_window->view.openPath(m_other.url());
    m_window->view.openPaths(named);
    QVERIFY(m_window->view.showsGrid());
    QCOMPARE(m_window->library.selectedIndices(), (PhotoLibrary::IndexSet{1, 3}));
    QCOMPARE(m_window->view.gridScrollTarget(), named.front().path());
    m_window->library.extendSelection(0);
    QCOMPARE(m_window->library.selectedIndices(), (PhotoLibrary::IndexSet{0, 1, 3}));
    m_window->view.openPaths({named[1], m_folder.url(QStringLiteral("nothing.jpg"))});
    QVERIFY(m_window->library.statusIsError() && !m_window->library.folderURL());
  }

  void someActionsScrollToTheCurrentPhoto() {
    ContentView* view = nullptr;
    const QUrl other = QUrl::fromLocalFile(QFile::decodeName(m_other.url().path()));
    const auto choose = [&] { view->chooseFolderAndShowGrid(); };
    const auto chooseOther = [&] { m_window->platform.chooser.answer = m_other.url(), choose(); };
    const auto drop = [&] { view->handleDrop({other}), QCoreApplication::processEvents(); };
    const std::initializer_list<std::tuple<const char*, bool, std::function<void()>>> actions{
        {"a folder is chosen", true, chooseOther},
        {"the chooser is canceled", true, choose},
        {"the photo is left", true, [&] { view->exitDetailMode(); }},
        {"other columns", true, [&] { view->setGridDimension(5); }},
        {"the same columns", true, [&] { view->setGridDimension(4); }},
        {"a recent folder", false, [&] { m_window->center.post(openRecentFolder, m_other.url()); }},
        {"a dropped folder", false, drop},
    };
    for (const auto& [name, scrolls, act] : actions) {
      init();
      view = &m_window->view;
      m_window->library.openPhoto(1);
      view->exitDetailMode();
      const auto before = view->gridScrollTarget();
      view->handleTileClick(3, Qt::NoModifier);
      QCOMPARE(view->gridScrollTarget(), before);
      act();
      const QByteArray current = m_window->library.currentPhoto()->id();
      QVERIFY2(current != before && view->gridScrollTarget() == (scrolls ? current : before), name);
    }
  }

  void pinchesStepThroughTheColumns() {
    const auto pinch = [&view = m_window->view](qint64 columns, const QList<double>& magnifications) {
      view.setGridDimension(columns);
      for (const double magnification : magnifications) view.handleGridMagnification(magnification);
      view.endGridMagnification();
      return view.gridDimension();
    };
    QCOMPARE(pinch(4, {1.08, 1.0, 0.92}), 4);  // not enough
    QCOMPARE(pinch(4, {0.9199}), 5);
    QCOMPARE(pinch(4, {1.1, 1.15, 1.1881}), 2);  // relative to the last step
    QCOMPARE(pinch(2, {1.1, 1.2, 1.1}), 3);      // steps that are at the end are counted
    QCOMPARE(pinch(6, {0.9}), 6);
    QCOMPARE(pinch(4, {std::nan("")}), 4);
  }

  // … in a bar that leaves.
  void theCountOfASelectionOutlivesIt() {
    const ShownLibrary& shown = *m_window->view.shown();
    for (const auto& [toggled, count, lastCount] : {std::tuple(1, 1, 1), {3, 2, 2}, {-1, 0, 2}, {1, 1, 1}}) {
      toggled < 0 ? m_window->library.clearSelection() : m_window->library.toggleSelection(toggled);
      QCoreApplication::processEvents();
      QVERIFY(shown.selectedCount() == count && shown.lastSelectedCount() == lastCount);
    }
  }

  void gesturesOnThePhoto() {
    ContentView& view = m_window->view;
    const QSignalSpy animations(&view, &ContentView::zoomWillChange);
    const QPointF drag(7, 8);
    const auto is = [&](double scale, QPointF offset, Curve lastCurve) {
      return view.zoom() == ZoomState{scale, offset} && view.dragOffset() == drag &&
             animations.last().first().value<Curve>() == lastCurve;
    };
    view.handleDetailMagnification(3);
    view.endDrag({5, 6});
    view.handleDrag(drag);
    QCOMPARE(view.displacement(), QPointF(12, 14));
    view.handleDetailMagnification(1.05);
    view.endDetailMagnification();
    QVERIFY(is(1.05, {5, 6}, Curve::None));
    for (const double magnification : {0.5, std::nan("")}) view.handleDetailMagnification(magnification);
    view.endDrag({9, 9});  // does nothing to a fitted photo
    QVERIFY(is(1, {5, 6}, Curve::None));
    view.endDetailMagnification();  // the pan is lost, the drag goes on
    QVERIFY(is(1, {}, Curve::Spring));
    view.handleDetailMagnification(3);
    view.exitDetailMode();
    QVERIFY(view.zoom() == ZoomState{} && view.displacement().isNull());
  }

 private:
  const PhotoFolder m_folder{numberedNames(5)};
  const PhotoFolder m_other{QStringList{QStringLiteral("x.jpg"), QStringLiteral("y.jpg")}};
  const PhotoFolder m_empty;
  std::unique_ptr<TestWindow> m_window;
};

QTEST_GUILESS_MAIN(ContentViewTest)
#include "ContentViewTest.moc"
