#include "PhotoGrid.h"

#include <QtQml/qqmlextensionplugin.h>
#include <QQmlEngine>
#include <QQuickWindow>
#include <QTest>

#include "PhotoFolder.h"
#include "SamplePhoto.h"
#include "TestWindow.h"

Q_IMPORT_QML_PLUGIN(Lumagrid_StylePlugin)
Q_IMPORT_QML_PLUGIN(Lumagrid_ThumbnailsPlugin)
Q_IMPORT_QML_PLUGIN(Lumagrid_BrowserPlugin)

using namespace lumagrid;

using Scrolling = PhotoGrid::Scrolling;
using Scrolls = QList<std::pair<double, Scrolling>>;

// A grid of four columns in a window of 600 x 600 points: tiles of 127, rows of 141 from 24 on. grabWindow() lays out
// and draws one frame, without a turn of the event loop.
class PhotoGridTest : public QObject {
  Q_OBJECT

 private Q_SLOTS:
  void init() {
    m_quickWindow.reset();
    m_window = std::make_unique<TestWindow>();
    m_quickWindow = std::make_unique<QQuickWindow>();
    m_quickWindow->resize(600, 600);
  }
  void cleanup() { settle(); }
  void onlyVisibleRowsHaveTiles() {
    open(400);
    makeGrid();
    const GridLayout layout{m_window->view.gridMetrics({600, 600}), 4, 400, {600, 600}};
    QCOMPARE(m_grid->contentHeight(), layout.contentHeight());
    for (double contentY = 0; contentY < layout.contentHeight(); contentY += 333) {
      m_grid->setContentY(contentY);
      drawFrame();
      const auto [first, last] = layout.visibleIndices(contentY);
      QCOMPARE(tiles().size(), last - first);
      QCOMPARE(tiles().firstKey(), first);
      QCOMPARE(tiles().last()->position(), layout.tileRect(last - 1).topLeft());
    }
    QVERIFY(m_grid->childItems().size() <= 24);  // six rows, used again and again
  }

  void tilesKeepTheirThumbnails() {
    open(9);
    makeGrid();
    settle();
    const QMap<int, PhotoThumbnailTile*> before = tiles();
    QMap<int, qint64> thumbnails;
    for (const auto [number, tile] : before.asKeyValueRange()) {
      QVERIFY(!tile->thumbnail().isNull());
      thumbnails[number] = tile->thumbnail().cacheKey();
    }
    const auto keepsThumbnails = [&] {
      drawFrame();
      const auto now = tiles();
      for (const int number : now.keys()) {
        if (now[number] != before[number] || now[number]->thumbnail().cacheKey() != thumbnails[number]) return false;
      }
      return now.size() == m_window->library.photoCount();
    };
    m_window->library.setSortOrder(SortOrder::nameDescending);
    QVERIFY(keepsThumbnails());
    QCOMPARE(tiles()[8]->position(), QPointF(25, 24));
    m_window->library.openPhoto(0);
    m_window->library.deleteCurrentPhoto();
    QVERIFY(keepsThumbnails());
    QCOMPARE(tiles()[7]->position(), QPointF(25, 24));
    tiles()[6]->click(Qt::ControlModifier);  // goes to where the photo is now
    QVERIFY(m_window->library.selectedIndices().contains(1));
  }

  void scrollsToTheTarget() {
    open(400);
    const double centred = 24 + 50 * 141 + 63.5 - 300;
    m_window->library.openPhoto(200);
    m_window->view.exitDetailMode();
    makeGrid();  // appears there
    QCOMPARE(m_scrolls, (Scrolls{{centred, Scrolling::Immediate}}));
    QVERIFY(tiles().contains(200) && !tiles().contains(0));
    m_window->library.openPhoto(399);
    drawFrame();
    m_window->view.setGridDimension(4);
    drawFrame();
    m_window->view.exitDetailMode();  // the same target
    drawFrame();
    m_window->library.openPhoto(200);
    m_window->view.exitDetailMode();
    drawFrame();
    const double bottom = m_grid->contentHeight() - 600;
    QCOMPARE(m_scrolls.mid(1), (Scrolls{{bottom, Scrolling::Animated}, {centred, Scrolling::Animated}}));
  }

  void anotherFolderStartsAfreshAtTheTop() {
    open(400);
    makeGrid();
    m_window->library.extendSelection(300);
    m_grid->setContentY(5000);
    drawFrame();
    settle();
    const PhotoFolder other(numberedNames(800).mid(400));
    m_window->library.openFolder(other.url());
    drawFrame();
    QCOMPARE(m_grid->contentY(), 0);
    QCOMPARE(tiles().size(), 20);
    QCOMPARE(tiles().firstKey(), 400);
    for (const PhotoThumbnailTile* tile : tiles()) QVERIFY(tile->thumbnail().isNull() && !tile->isChecked());
    m_grid->setContentY(m_grid->contentHeight() - 600);
    drawFrame();
    m_window->library.openPhoto(0);
    m_window->library.extendSelection(99);
    m_window->library.deleteSelectedPhotos();  // a shorter list: no emptiness below its end
    drawFrame();
    QCOMPARE(m_grid->contentY(), m_grid->contentHeight() - 600);
  }

 private:
  void open(int count) {
    m_folder = std::make_unique<PhotoFolder>();
    const QByteArray photo = samplePhoto({20, 20}, Qt::white);
    for (const QString& name : numberedNames(count)) (void)m_folder->add(name, photo);
    m_window->library.openFolder(m_folder->url());
    m_window->library.openPhoto(0);
  }

  void makeGrid() {
    QQmlComponent component(&m_engine);
    component.setData(
        "import Lumagrid.Browser\nimport Lumagrid.Thumbnails\n"
        "PhotoGrid { delegate: PhotoThumbnailTile {} }",
        {});
    m_grid = qobject_cast<PhotoGrid*>(
        component.createWithInitialProperties({{QStringLiteral("view"), QVariant::fromValue(&m_window->view)}}));
    QVERIFY2(m_grid, qPrintable(component.errorString()));
    m_scrolls.clear();
    connect(m_grid, &PhotoGrid::scrollRequested, this, [this](double contentY, Scrolling scrolling) {
      m_scrolls.append({contentY, scrolling});
      if (scrolling == Scrolling::Immediate) m_grid->setContentY(contentY);
    });
    m_grid->setParent(m_quickWindow.get());
    m_grid->setParentItem(m_quickWindow->contentItem());
    m_grid->setViewport({600, 600});
    m_quickWindow->show();
    QVERIFY(QTest::qWaitForWindowExposed(m_quickWindow.get()));
    drawFrame();
  }

  QImage drawFrame() { return m_quickWindow->grabWindow(); }
  // Tiles that show, by the photos' numbers.
  [[nodiscard]] QMap<int, PhotoThumbnailTile*> tiles() const {
    QMap<int, PhotoThumbnailTile*> tiles;
    for (QQuickItem* item : m_grid->childItems()) {
      auto* tile = qobject_cast<PhotoThumbnailTile*>(item);
      if (tile && tile->isVisible()) tiles[tile->name().section(u'.', 0, 0).toInt()] = tile;
    }
    return tiles;
  }

  void settle() {
    QCoreApplication::processEvents();
    QTRY_COMPARE(m_window->queue.pendingCount(), 0);
    QCoreApplication::processEvents();
  }

  QQmlEngine m_engine;
  std::unique_ptr<PhotoFolder> m_folder;
  std::unique_ptr<TestWindow> m_window;
  std::unique_ptr<QQuickWindow> m_quickWindow;
  PhotoGrid* m_grid = nullptr;
  Scrolls m_scrolls;
};

QTEST_MAIN(PhotoGridTest)
#include "PhotoGridTest.moc"
