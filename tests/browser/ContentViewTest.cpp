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

  void someActionsScrollToTheCurrentPhoto() {
    ContentView* view = nullptr;
    const std::initializer_list<std::tuple<const char*, bool, std::function<void()>>> actions{
        {"a folder is chosen", true,
         [&] {
           m_window->platform.chooser.answer = m_other.url();
           view->chooseFolderAndShowGrid();
         }},
        {"the chooser is cancelled", true, [&] { view->chooseFolderAndShowGrid(); }},
        {"the photo is left", true, [&] { view->exitDetailMode(); }},
        {"other columns", true, [&] { view->setGridDimension(5); }},
        {"the same columns", true, [&] { view->setGridDimension(4); }},
        {"a recent folder", false, [&] { m_window->center.post(openRecentFolder, m_other.url()); }},
        {"a dropped folder", false,
         [&] {
           QVERIFY(view->handleDrop({QUrl::fromLocalFile(QFile::decodeName(m_other.url().path()))}));
           QCoreApplication::processEvents();
         }},
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
    QCOMPARE(pinch(4, {std::nan("")}), 4);
  }

  void theColumnsHaveLimits() {
    using State = std::tuple<qint64, bool, bool>;  // columns; whether fewer and more can be had
    for (const auto& [wanted, state] : {std::pair(1, State(2, false, true)),
                                        {2, State(2, false, true)},
                                        {3, State(3, true, true)},
                                        {5, State(5, true, true)},
                                        {6, State(6, true, false)},
                                        {99, State(6, true, false)}}) {
      ContentView& view = m_window->view;
      view.setGridDimension(wanted);
      QVERIFY(State(view.gridDimension(), view.canShowFewerTiles(), view.canShowMoreTiles()) == state);
    }
  }

  void theCountOfASelectionOutlivesIt() {
    using Counts = std::pair<qint64, qint64>;  // now, and in a bar that leaves
    const ShownLibrary& shown = *m_window->view.shown();
    const auto counts = [&shown](const std::function<void()>& change) {
      change();
      QCoreApplication::processEvents();
      return Counts(shown.selectedCount(), shown.lastSelectedCount());
    };
    QCOMPARE(counts([this] { m_window->library.toggleSelection(1); }), Counts(1, 1));
    QCOMPARE(counts([this] { m_window->library.extendSelection(3); }), Counts(3, 3));
    QCOMPARE(counts([this] { m_window->library.clearSelection(); }), Counts(0, 3));
    QCOMPARE(counts([this] { m_window->library.toggleSelection(1); }), Counts(1, 1));
  }

  void gesturesOnThePhoto() {
    ContentView& view = m_window->view;
    QSignalSpy animations(&view, &ContentView::zoomWillChange);
    const auto is = [&](double scale, QPointF offset, QPointF drag, Curve lastCurve) {
      return view.zoom() == ZoomState{scale, offset} && view.dragOffset() == drag &&
             animations.last().first().value<Curve>() == lastCurve;
    };
    const QPointF moved(5, 6);
    const QPointF drag(7, 8);
    view.handleDetailMagnification(3);
    view.endDrag(moved);
    view.handleDrag(drag);
    QCOMPARE(view.displacement(), QPointF(12, 14));
    view.handleDetailMagnification(1.05);
    view.endDetailMagnification();
    QVERIFY(is(1.05, moved, drag, Curve::None));
    view.handleDetailMagnification(0.5);
    view.handleDetailMagnification(std::nan(""));
    view.endDrag({9, 9});  // does nothing to a fitted photo
    QVERIFY(is(1, moved, drag, Curve::None));
    view.endDetailMagnification();  // the pan is lost, the drag goes on
    QVERIFY(is(1, {0, 0}, drag, Curve::Spring));
    view.handleDetailMagnification(3);
    view.endDrag(moved);
    view.handleDrag(drag);
    view.exitDetailMode();
    QVERIFY(is(1, {0, 0}, {0, 0}, Curve::None));
  }

 private:
  const PhotoFolder m_folder{numberedNames(5)};
  const PhotoFolder m_other{QStringList{QStringLiteral("x.jpg"), QStringLiteral("y.jpg")}};
  const PhotoFolder m_empty;
  std::unique_ptr<TestWindow> m_window;
};

QTEST_GUILESS_MAIN(ContentViewTest)
#include "ContentViewTest.moc"
