#include "ContentView.h"

#include <QSignalSpy>
#include <QTest>
#include <cmath>

#include "PhotoFolder.h"
#include "TestWindow.h"

using namespace lumagrid;

using Animation = ContentView::ZoomAnimation;

// Observers run on the next turn of the event loop: processEvents() is that turn.
class ContentViewTest : public QObject {
  Q_OBJECT

 private Q_SLOTS:
  void init() {
    m_window = std::make_unique<TestWindow>();
    m_window->library.openFolder(m_folder.url());
    QCoreApplication::processEvents();
  }
  void observersRunOncePerTurn() {
    int value = 0;
    QList<int> told;
    ChangeObserver<int> observer([&value] { return value; }, [&told](int now) { told.append(now); });
    while (value < 100'000) ++value, observer.notice();
    QVERIFY(told.isEmpty());
    QCoreApplication::processEvents();
    QCOMPARE(told, QList<int>{100'000});
  }

  void whatChangesBackIsNoChange() {
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

  void anEmptyFolderReturnsToTheGrid() {
    m_window->library.toggleSelection(1);
    m_window->view.handleTileClick(0, Qt::AltModifier | Qt::MetaModifier);  // as good as none
    QVERIFY(m_window->library.selectedIndices().empty());
    m_window->library.openFolder(m_empty.url());
    QVERIFY(!m_window->view.showsGrid());
    QCoreApplication::processEvents();
    QVERIFY(m_window->view.showsGrid());
  }

  void recordsFoldersThatBecomeOpen() {
    const auto& urls = m_window->recents.urls();
    const auto open = [this](const FileUrl& url) {
      m_window->library.openFolder(url);
      QCoreApplication::processEvents();
    };
    open(m_other.url());
    QCOMPARE(urls, (std::vector<FileUrl>{m_other.url(), m_folder.url()}));
    m_window->recents.add(m_folder.url());
    open(m_other.url());  // it is open already
    open(m_empty.url(QStringLiteral("missing")));
    QCOMPARE(urls, (std::vector<FileUrl>{m_folder.url(), m_other.url()}));
    open(m_empty.url());  // without photos, and yet open
    QCOMPARE(urls, (std::vector<FileUrl>{m_empty.url(), m_folder.url(), m_other.url()}));
  }

  void aDropOpensAFolderOnceItHasEnded() {
    const QUrl other = QUrl::fromLocalFile(QFile::decodeName(m_other.url().path()) + u'/');
    QVERIFY(!m_window->view.handleDrop({}));
    QVERIFY(m_window->view.handleDrop({QUrl(QStringLiteral("https://example.org/")), other}));
    QCoreApplication::processEvents();
    QVERIFY(m_window->view.handleDrop({other}));
    QCOMPARE(m_window->library.folderURL(), m_folder.url());
    QCoreApplication::processEvents();
    QCOMPARE(m_window->library.folderURL(), m_other.url());
  }

  void openingWaitsForADialog() {
    const auto whileOpen = [&] {
      QVERIFY(m_window->view.handleDrop({QUrl::fromLocalFile(QFile::decodeName(m_empty.url().path()))}));
      QCoreApplication::processEvents();
      m_window->center.post(openRecentFolder, m_other.url());
      QCOMPARE(m_window->library.folderURL(), m_folder.url());
    };
    for (const auto& [dialog, moved] : {std::pair(&ContentView::chooseFolderAndShowGrid, 0),
                                        {&ContentView::deleteCurrentPhoto, 1},
                                        {&ContentView::deleteSelectedWithConfirmation, 2}}) {
      init();
      m_window->platform.chooser.whileOpen = whileOpen;
      m_window->platform.alert.whileOpen = whileOpen;
      m_window->library.openPhoto(0);
      m_window->library.extendSelection(1);
      (m_window->view.*dialog)();
      QCOMPARE(m_window->platform.trash.moved.size(), moved);
      QCOMPARE(m_window->library.folderURL(), m_other.url());  // what was asked for last
      QVERIFY(m_window->view.showsGrid());
    }
  }

  void opensAPath() {
    m_window->view.openPath(m_other.url(QStringLiteral("y.jpg")));
    QCOMPARE(m_window->library.currentPhoto()->displayName(), QStringLiteral("y.jpg"));
    QVERIFY(!m_window->view.showsGrid());
    TestWindow fresh;
    fresh.view.openPath(m_folder.url());
    QVERIFY(fresh.view.showsGrid());
    QCOMPARE(fresh.library.photoCount(), 5);
    fresh.view.openPath(m_folder.url(QStringLiteral("nothing.jpg")));
    QVERIFY(fresh.library.statusIsError());
  }

  void pinchOnTheGrid_data() {
    QTest::addColumn<qint64>("from");
    QTest::addColumn<QList<double>>("magnifications");
    QTest::addColumn<qint64>("dimension");
    const auto row = [](const char* name, qint64 from, const QList<double>& magnifications, qint64 dimension) {
      QTest::newRow(name) << from << magnifications << dimension;
    };
    row("in small steps: two columns fewer", 4, {1.03, 1.05, 1.08, 1.09, 1.11, 1.13, 1.15, 1.17, 1.18, 1.2}, 2);
    row("exactly 1.08, and back", 4, {1.08, 1.0, 0.92}, 4);
    row("just below 0.92", 4, {0.9199}, 5);
    row("just above 1.08 of the last step", 4, {1.1, 1.15, 1.1881}, 2);
    row("two columns stay, but are counted", 2, {1.1, 1.2, 1.11, 1.1}, 3);
    row("six columns stay, but are counted", 6, {0.9, 0.8, 0.87}, 5);
    row("no number", 4, {std::nan("")}, 4);
  }
  void pinchOnTheGrid() {
    QFETCH(qint64, from);
    QFETCH(QList<double>, magnifications);
    for (int time = 0; time < 2; ++time) {  // each pinch from its own start
      m_window->view.setGridDimension(from);
      for (const double magnification : magnifications) m_window->view.handleGridMagnification(magnification);
      QTEST(m_window->view.gridDimension(), "dimension");
      m_window->view.endGridMagnification();
    }
  }

  void gesturesOnThePhoto_data() {
    using Steps = std::function<void(ContentView&)>;
    QTest::addColumn<double>("scale");
    QTest::addColumn<QSizeF>("offset");
    QTest::addColumn<QSizeF>("drag");
    QTest::addColumn<Animation>("animation");  // of the last change
    QTest::addColumn<Steps>("steps");          // from the photo at the scale 3, moved by (5, 6)
    const auto row = [](const char* name, double scale, QSizeF offset, QSizeF drag, Animation animation, Steps steps) {
      QTest::newRow(name) << scale << offset << drag << animation << steps;
    };
    const QSizeF none(0, 0);
    const QSizeF moved(5, 6);
    const auto pinch = [](ContentView& view, double magnification) {
      view.handleDetailMagnification(magnification);
      view.endDetailMagnification();
    };
    row("no number is fitted", 1, moved, none, Animation::None,
        [](ContentView& view) { view.handleDetailMagnification(std::nan("")); });
    row("never smaller than fitted, and the pan is lost too", 1, none, none, Animation::Spring,
        [=](ContentView& view) { pinch(view, 0.6); });
    row("released at 1.05, it stays and keeps the pan", 1.05, moved, none, Animation::None,
        [=](ContentView& view) { pinch(view, 1.05); });
    row("a drag that ends fitted does nothing, and leaves its way", 1, moved, {7, 8}, Animation::None,
        [](ContentView& view) {
          view.handleDrag({7, 8});
          view.handleDetailMagnification(0.5);
          view.endDrag({9, 9});
        });
    row("a pinch that ends fitted leaves the drag alone", 1, none, {7, 8}, Animation::Spring, [=](ContentView& view) {
      view.handleDrag({7, 8});
      pinch(view, 1.01);
    });
    row("a double click puts all back", 1, none, none, Animation::Spring, [](ContentView& view) {
      view.handleDrag({7, 8});
      view.handleDoubleClick();
    });
    row("so does the way to the grid, at once", 1, none, none, Animation::None, [](ContentView& view) {
      view.handleDrag({7, 8});
      view.exitDetailMode();
    });
  }

  void gesturesOnThePhoto() {
    QFETCH(QSizeF, offset);
    QFETCH(QSizeF, drag);
    QFETCH(std::function<void(ContentView&)>, steps);
    ContentView& view = m_window->view;
    QSignalSpy animations(&view, &ContentView::zoomWillChange);
    view.handleDetailMagnification(3);
    view.endDrag({5, 6});
    steps(view);
    QTEST(view.zoom().scale, "scale");
    QCOMPARE(view.zoom().offset, offset);
    QCOMPARE(view.displacement(), QPointF((offset + drag).width(), (offset + drag).height()));
    QTEST(animations.last().first().value<Animation>(), "animation");
  }

  void anotherIndexResetsTheZoomOnTheNextTurn() {
    ContentView& view = m_window->view;
    m_window->library.openPhoto(3);
    QCoreApplication::processEvents();
    view.handleDetailMagnification(3);
    view.handleDrag({7, 8});
    m_window->library.deleteCurrentPhoto();  // the next takes its place
    QCoreApplication::processEvents();
    QCOMPARE(view.zoom().scale, 3.0);
    QSignalSpy animations(&view, &ContentView::zoomWillChange);
    m_window->library.deleteCurrentPhoto();  // it was the last
    QCOMPARE(view.zoom().scale, 3.0);
    QCoreApplication::processEvents();
    QCOMPARE(view.zoom(), ZoomState{});
    QCOMPARE(view.displacement(), QPointF(0, 0));
    QCOMPARE(animations.count(), 1);
    QCOMPARE(animations.first().first().value<Animation>(), Animation::EaseOut);
  }

 private:
  const PhotoFolder m_folder{numberedNames(5)};
  const PhotoFolder m_other{QStringList{QStringLiteral("x.jpg"), QStringLiteral("y.jpg")}};
  const PhotoFolder m_empty;
  std::unique_ptr<TestWindow> m_window;
};

QTEST_GUILESS_MAIN(ContentViewTest)
#include "ContentViewTest.moc"
