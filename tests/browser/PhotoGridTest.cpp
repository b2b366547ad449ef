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

// A grid of four columns in a window of 600 x 600 points: tiles of 127, rows of 141 from 24 on. grabWindow() lays out
// and draws one frame, without a turn of the event loop.
class PhotoGridTest : public QObject {
  Q_OBJECT

 private Q_SLOTS:
  void init();
  void onlyVisibleRowsHaveTiles();
  void tilesKeepTheirThumbnails();
  void tilesThatServeAnotherPhotoStartAfresh();
  void marksFollowTheSelection();
  void marksAreAnimatedInPlaceAlone();
  void clicksGoToThePhotoUnderThem();
  void scrollsToTheTarget();
  void appearsAtTheTarget();
  void anotherFolderStartsAtTheTop();

 private:
  void open(int count);
  void makeGrid();
  QImage drawFrame() { return m_quickWindow->grabWindow(); }
  // Tiles that show, by the photos' numbers.
  [[nodiscard]] QMap<int, PhotoThumbnailTile*> tiles() const;
  [[nodiscard]] QList<double> immediate() const { return positions(Scrolling::Immediate); }
  [[nodiscard]] QList<double> animated() const { return positions(Scrolling::Animated); }
  [[nodiscard]] QList<double> positions(Scrolling scrolling) const;
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
  QList<std::pair<double, Scrolling>> m_requests;
};

void PhotoGridTest::init() {
  m_quickWindow.reset();
  m_window = std::make_unique<TestWindow>();
  m_quickWindow = std::make_unique<QQuickWindow>();
  m_quickWindow->resize(600, 600);
}

void PhotoGridTest::open(int count) {
  m_folder = std::make_unique<PhotoFolder>();
  const QByteArray photo = samplePhoto({20, 20}, Qt::white);
  for (const QString& name : numberedNames(count)) (void)m_folder->add(name, photo);
  m_window->library.openFolder(m_folder->url());
  m_window->library.openPhoto(0);
  QCoreApplication::processEvents();
}

void PhotoGridTest::makeGrid() {
  QQmlComponent component(&m_engine);
  component.setData(
      "import Lumagrid.Browser\nimport Lumagrid.Thumbnails\n"
      "PhotoGrid { delegate: PhotoThumbnailTile {} }",
      {});
  QObject* object =
      component.createWithInitialProperties({{QStringLiteral("view"), QVariant::fromValue(&m_window->view)}});
  m_grid = qobject_cast<PhotoGrid*>(object);
  QVERIFY2(m_grid, qPrintable(component.errorString()));
  m_requests.clear();
  connect(m_grid, &PhotoGrid::scrollRequested, this, [this](double contentY, Scrolling scrolling) {
    m_requests.append({contentY, scrolling});
    if (scrolling == Scrolling::Immediate) m_grid->setContentY(contentY);
  });
  m_grid->setParent(m_quickWindow.get());
  m_grid->setParentItem(m_quickWindow->contentItem());
  m_grid->setViewport({600, 600});
  m_quickWindow->show();
  QVERIFY(QTest::qWaitForWindowExposed(m_quickWindow.get()));
  drawFrame();
}

QMap<int, PhotoThumbnailTile*> PhotoGridTest::tiles() const {
  QMap<int, PhotoThumbnailTile*> tiles;
  for (QQuickItem* item : m_grid->childItems()) {
    auto* tile = qobject_cast<PhotoThumbnailTile*>(item);
    if (tile && tile->isVisible()) tiles[tile->name().section(u'.', 0, 0).toInt()] = tile;
  }
  return tiles;
}

QList<double> PhotoGridTest::positions(Scrolling scrolling) const {
  QList<double> positions;
  for (const auto& [contentY, how] : m_requests) {
    if (how == scrolling) positions.append(contentY);
  }
  return positions;
}

void PhotoGridTest::onlyVisibleRowsHaveTiles() {
  open(400);
  makeGrid();
  const auto numbers = [](int first, int last) {
    QList<int> numbers;
    for (int number = first; number < last; ++number) numbers.append(number);
    return numbers;
  };
  QCOMPARE(m_grid->contentHeight(), 24 + 100 * 141 - 14 + 24.0);
  QCOMPARE(tiles().keys(), numbers(0, 20));
  QCOMPARE(tiles()[5]->position(), QPointF(25 + 141, 24 + 141));
  QCOMPARE(tiles()[5]->size(), QSizeF(127, 127));
  m_grid->setContentY(5000);
  drawFrame();
  const int first = (5000 - 24) / 141 * 4;
  QCOMPARE(tiles().keys(), numbers(first, first + 20));
  for (double contentY = 0; contentY < m_grid->contentHeight(); contentY += 333) {
    m_grid->setContentY(contentY);
    drawFrame();
  }
  QVERIFY(m_grid->childItems().size() <= 24);  // six rows, used again and again
  settle();
}

void PhotoGridTest::tilesKeepTheirThumbnails() {
  open(9);
  makeGrid();
  settle();
  QMap<int, PhotoThumbnailTile*> before = tiles();
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
  QVERIFY(!tiles().contains(8));
}

void PhotoGridTest::tilesThatServeAnotherPhotoStartAfresh() {
  open(20);
  makeGrid();
  settle();
  m_window->library.extendSelection(3);
  drawFrame();
  const PhotoFolder other;
  for (const char* name : {"50.jpg", "51.jpg"}) (void)other.add(QString::fromLatin1(name));
  m_window->library.openFolder(other.url());
  drawFrame();
  QCOMPARE(tiles().keys(), (QList<int>{50, 51}));
  for (const PhotoThumbnailTile* tile : tiles()) {
    QVERIFY(tile->thumbnail().isNull());
    QVERIFY(!tile->isChecked());
  }
  settle();
}

void PhotoGridTest::marksFollowTheSelection() {
  open(6);
  makeGrid();
  m_window->library.openPhoto(2);
  const auto marks = [this] {
    drawFrame();
    QString marks;
    for (const PhotoThumbnailTile* tile : tiles()) {
      marks += tile->isChecked() ? u'x' : tile->isCurrentlyViewing() ? u'o' : u'.';
    }
    return marks;
  };
  QCOMPARE(marks(), QStringLiteral("..o..."));
  m_window->library.toggleSelection(4);
  QCOMPARE(marks(), QStringLiteral("....x."));
  m_window->library.extendSelection(1);
  QCOMPARE(marks(), QStringLiteral(".xxxx."));
  m_window->library.clearSelection();
  QCOMPARE(marks(), QStringLiteral("..o..."));
  settle();
}

// A checked tile is dimmed; an animation begins with the first turn of the event loop.
void PhotoGridTest::marksAreAnimatedInPlaceAlone() {
  open(6);
  makeGrid();
  settle();
  const auto dimmed = [this] {
    const QImage image = drawFrame();
    QList<int> dimmed;
    for (const auto [number, tile] : tiles().asKeyValueRange()) {
      const QPoint middle = (tile->position() + QPointF(63, 90)).toPoint();
      const int brightness = image.pixelColor(middle).red();
      if (brightness < 250) dimmed.append(brightness == 199 ? number : -number);
    }
    return dimmed;
  };
  m_window->library.toggleSelection(2);
  QCOMPARE(dimmed(), QList<int>{});
  QTRY_COMPARE(dimmed(), QList<int>{2});
  m_window->library.deleteCurrentPhoto();  // the selection stays at its index: another photo moves under it
  QCOMPARE(dimmed(), QList<int>{3});
}

void PhotoGridTest::clicksGoToThePhotoUnderThem() {
  open(9);
  makeGrid();
  m_window->library.setSortOrder(SortOrder::nameDescending);
  drawFrame();
  const QPoint secondTile(25 + 141 + 60, 24 + 60);
  QTest::mouseClick(m_quickWindow.get(), Qt::LeftButton, Qt::ControlModifier, secondTile);
  QVERIFY(m_window->library.selectedIndices().contains(1));
  QTest::mouseClick(m_quickWindow.get(), Qt::LeftButton, Qt::NoModifier, {25 + 127 + 7, 24 + 60});  // between tiles
  QVERIFY(m_window->view.showsGrid());
  QTest::mouseClick(m_quickWindow.get(), Qt::LeftButton, Qt::NoModifier, secondTile);
  QCOMPARE(m_window->library.currentPhoto()->displayName(), QStringLiteral("7.jpg"));
  QVERIFY(!m_window->view.showsGrid());
  settle();
}

void PhotoGridTest::scrollsToTheTarget() {
  open(400);
  makeGrid();
  QCOMPARE(m_requests.size(), 0);  // no target yet
  m_window->library.openPhoto(200);
  drawFrame();
  QCOMPARE(m_requests.size(), 0);
  m_window->view.exitDetailMode();
  drawFrame();
  const double centred = 24 + 50 * 141 + 63.5 - 300;
  QCOMPARE(animated(), QList<double>{centred});
  m_window->view.exitDetailMode();  // the same target
  drawFrame();
  QCOMPARE(m_requests.size(), 1);
  m_window->library.openPhoto(0);
  m_window->view.exitDetailMode();
  drawFrame();
  QCOMPARE(animated(), (QList<double>{centred, 0}));
  m_window->library.openPhoto(399);
  m_window->view.exitDetailMode();
  drawFrame();
  QCOMPARE(animated().last(), m_grid->contentHeight() - 600);
  QCOMPARE(immediate(), QList<double>{});
  settle();
}

void PhotoGridTest::appearsAtTheTarget() {
  open(400);
  m_window->library.openPhoto(200);
  m_window->view.exitDetailMode();
  makeGrid();
  QCOMPARE(immediate(), QList<double>{24 + 50 * 141 + 63.5 - 300});
  QCOMPARE(animated(), QList<double>{});
  QVERIFY(tiles().contains(200));
  QVERIFY(!tiles().contains(0));
  settle();
}

void PhotoGridTest::anotherFolderStartsAtTheTop() {
  open(400);
  makeGrid();
  m_grid->setContentY(5000);
  drawFrame();
  m_window->library.openFolder(m_folder->url());
  drawFrame();
  QCOMPARE(m_grid->contentY(), 0);
  m_grid->setContentY(m_grid->contentHeight() - 600);
  drawFrame();
  m_window->library.openPhoto(0);
  m_window->library.extendSelection(99);
  m_window->library.deleteSelectedPhotos();  // a shorter list: no emptiness below its end
  drawFrame();
  QCOMPARE(m_grid->contentY(), m_grid->contentHeight() - 600);
  settle();
}

QTEST_MAIN(PhotoGridTest)
#include "PhotoGridTest.moc"
