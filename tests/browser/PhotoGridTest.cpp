#include "PhotoGrid.h"

#include <QtQml/qqmlextensionplugin.h>
#include <QQmlEngine>
#include <QQuickWindow>
#include <QTest>

#include "FileImageDecoder.h"
#include "PhotoFolder.h"
#include "TestWindow.h"
#include "ThumbnailStore.h"

Q_IMPORT_QML_PLUGIN(Lumagrid_StylePlugin)
Q_IMPORT_QML_PLUGIN(Lumagrid_ThumbnailsPlugin)
Q_IMPORT_QML_PLUGIN(Lumagrid_BrowserPlugin)

using namespace lumagrid;

// A grid of four columns in a window of 600 x 600 points: tiles of 127, rows of 141 from 24 on. grabWindow() lays out
// and draws one frame, without a turn of the event loop.
class PhotoGridTest : public QObject {
  Q_OBJECT

 private Q_SLOTS:
  void initTestCase() { ThumbnailStore::setDecoder(m_decoder); }

  void tilesKeepTheirThumbnails() {
    open(9);
    settle();
    const auto thumbnails = [this] {
      QMap<int, qint64> keys;
      for (const auto [number, tile] : tiles().asKeyValueRange()) keys[number] = tile->thumbnail().cacheKey();
      return keys;
    };
    auto before = thumbnails();
    QVERIFY(before.size() == 9 && before[0] != 0);
    m_window->library.setSortOrder(SortOrder::nameDescending);
    QCOMPARE(thumbnails(), before);
    QCOMPARE(tiles()[8]->position(), QPointF(25, 24));
    m_window->library.openPhoto(0);
    m_window->library.deleteCurrentPhoto();
    before.remove(8);
    QCOMPARE(thumbnails(), before);
    QCOMPARE(tiles()[7]->position(), QPointF(25, 24));
    tiles()[6]->click(Qt::ControlModifier);  // goes to where the photo is now
    QVERIFY(m_window->library.selectedIndices().contains(1));
  }

  void scrollsThroughManyPhotos() {
    open(400, 200);
    const double centered = 24 + 50 * 141 + 63.5 - 300;
    QCOMPARE(m_grid->contentY(), centered);  // it appears there
    const GridLayout layout{m_window->view.gridMetrics({600, 600}), 4, 400, {600, 600}};
    for (int contentY = 0; contentY < int(layout.contentHeight()); contentY += 333) {
      m_grid->setContentY(contentY);
      const auto [first, last] = layout.visibleIndices(contentY);
      QCOMPARE(tiles().size(), last - first);
      QCOMPARE(tiles().last()->position(), layout.tileRect(last - 1).topLeft());
    }
    QVERIFY(madeTiles().size() <= 24);         // six rows, used again and again
    for (const int index : {399, 399, 200}) {  // the same target is none
      m_window->library.openPhoto(index);
      m_window->view.exitDetailMode();
      settle();
    }
    QCOMPARE(m_animated, (QList<double>{m_grid->contentHeight() - 600, centered}));
    for (const auto* tile : madeTiles()) QCOMPARE(tile->name().isEmpty(), !tile->isVisible());  // none loads unseen
    // The next screen is made before it is looked at.
    const auto unseen = static_cast<std::size_t>(layout.visibleIndices(centered).second + 3);
    const double bound = PhotoThumbnailTile::maxPixelSize(layout.metrics.cellSide);
    QTRY_VERIFY(!ThumbnailStore::cachedThumbnail(m_window->library.photos()[unseen].url, bound).isNull());
    m_window->library.extendSelection(399);
    settle();

    const PhotoFolder other(numberedNames(800).mid(400));
    m_window->library.openFolder(other.url());  // starts afresh at the top
    for (const PhotoThumbnailTile* tile : tiles()) QVERIFY(tile->thumbnail().isNull() && !tile->isChecked());
    QCOMPARE(tiles().firstKey(), 400);
    m_grid->setContentY(m_grid->contentHeight() - 600);
    m_window->library.openPhoto(0);
    m_window->library.extendSelection(99);
    m_window->library.deleteSelectedPhotos();  // no emptiness below the end
    QVERIFY(tiles().contains(799));
    QCOMPARE(m_grid->contentY(), m_grid->contentHeight() - 600);
  }

  void theSameFolderKeepsItsPlace() {
    open(400, 200);
    const auto placeOf = [this](int number) {
      const PhotoThumbnailTile* tile = tiles().value(number);
      return tile ? std::optional(tile->y() - m_grid->contentY()) : std::nullopt;
    };
    const auto place = placeOf(201);
    const auto reopenWithout = [this](const QList<int>& numbers) {
      for (const int number : numbers) {
        QVERIFY(QFile::remove(QFile::decodeName(m_folder.url(numberedNames(number + 1).last()).path())));
      }
      m_window->library.openFolder(m_folder.url());
    };
    reopenWithout({});
    QCOMPARE(placeOf(200), place);
    reopenWithout({0, 1, 2, 3, 4, 5, 6, 7, 8, 200});
    QCOMPARE(placeOf(201), place);
    const double contentY = m_grid->contentY();
    reopenWithout(tiles().keys());  // all that showed
    QVERIFY(!tiles().isEmpty());
    QCOMPARE(m_grid->contentY(), contentY);
  }

 private:
  // A folder of so many photos, as it appears after one of them was shown.
  void open(int count, int shown = 0) {
    m_quickWindow = std::make_unique<QQuickWindow>();
    m_window = std::make_unique<TestWindow>();
    const QByteArray photo = samplePhoto({20, 20}, Qt::white);
    for (const QString& name : numberedNames(count)) (void)m_folder.add(name, photo);
    m_window->library.openFolder(m_folder.url());
    m_window->library.openPhoto(shown);
    m_window->view.exitDetailMode();
    QQmlComponent component(&m_engine);
    component.setData(
        "import Lumagrid.Browser\nimport Lumagrid.Thumbnails\nPhotoGrid { delegate: PhotoThumbnailTile {} }", {});
    m_grid = qobject_cast<PhotoGrid*>(
        component.createWithInitialProperties({{QStringLiteral("view"), QVariant::fromValue(&m_window->view)}}));
    connect(m_grid, &PhotoGrid::scrollRequested, this, [this](double contentY, PhotoGrid::Scrolling scrolling) {
      if (scrolling == PhotoGrid::Scrolling::Animated) m_animated.append(contentY);
      if (scrolling == PhotoGrid::Scrolling::Immediate) m_grid->setContentY(contentY);
    });
    m_grid->setParent(m_quickWindow.get());
    m_grid->setParentItem(m_quickWindow->contentItem());
    m_grid->setViewport({600, 600});
    m_quickWindow->resize(600, 600);
    settle();
  }

  [[nodiscard]] QList<PhotoThumbnailTile*> madeTiles() const { return m_grid->findChildren<PhotoThumbnailTile*>(); }
  // Tiles that show in the next frame, by the photos' numbers.
  QMap<int, PhotoThumbnailTile*> tiles() {
    m_quickWindow->grabWindow();
    QMap<int, PhotoThumbnailTile*> tiles;
    for (auto* tile : madeTiles()) {
      if (tile->isVisible()) tiles[tile->name().section(u'.', 0, 0).toInt()] = tile;
    }
    return tiles;
  }

  void settle() {
    QVERIFY(!tiles().isEmpty());
    QCoreApplication::processEvents();
    QTRY_COMPARE(m_window->queue.pendingCount(), 0);
    QCoreApplication::processEvents();
  }

  QQmlEngine m_engine;
  FileImageDecoder m_decoder;
  PhotoFolder m_folder;
  std::unique_ptr<TestWindow> m_window;
  std::unique_ptr<QQuickWindow> m_quickWindow;
  PhotoGrid* m_grid = nullptr;
  QList<double> m_animated;  // where to
};

QTEST_MAIN(PhotoGridTest)
#include "PhotoGridTest.moc"
