#include "PhotoThumbnailTile.h"

#include <QQuickWindow>
#include <QTest>
#include <semaphore>
#include <thread>

#include "FileImageDecoder.h"
#include "PhotoFolder.h"
#include "ThumbnailStore.h"

using namespace lumagrid;

// Tiles and the store of their thumbnails. The width of a tile's thumbnail tells the bound that it was made with: the
// photos are larger.
class ThumbnailsTest : public QObject {
  Q_OBJECT

 private Q_SLOTS:
  void initTestCase() { ThumbnailStore::setDecoder(m_decoder); }
  void init() {
    const QString name = QLatin1String(QTest::currentTestFunction()) + QStringLiteral(".png");
    m_photo = {m_folder.add(name, samplePhoto({900, 900}))};
    m_pool.setMaxThreadCount(1);
    m_tile = std::make_unique<PhotoThumbnailTile>();
    m_tile->setQueue(&m_queue);
    m_tile->setPhoto(m_photo);
  }

  void loadsTwiceWholePointsOfItsSide() {
    for (const auto& [side, bound] : {std::pair(88.0, 240), {120.5, 241}, {180.2, 360}, {180.9, 360}, {181.0, 362}}) {
      m_tile->setSide(side);
      settle();
      QCOMPARE(m_tile->thumbnail().width(), bound);
    }
    for (int side = 182; side < 200; ++side) m_tile->setSide(side);
    QCOMPARE(m_queue.pendingCount(), 0);         // one load for a turn of the event loop
    QCOMPARE(m_tile->thumbnail().width(), 362);  // until the new one is there
    settle();
    QCOMPARE(m_tile->thumbnail().width(), 398);
  }

  void anotherPhotoStartsAfresh() {
    makeWithoutDelivering(150);
    m_tile->setPhoto({});
    settle();
    QVERIFY(m_tile->thumbnail().isNull());  // the late result is of the photo before
    m_tile->setPhoto(m_photo);
    QCOMPARE(m_tile->thumbnail().width(), 300);  // cached: shows at once
    m_tile->setPhoto({});
    QVERIFY(m_tile->thumbnail().isNull());
    m_tile->setPhoto(m_photo);
    makeWithoutDelivering(160);
    m_tile.reset();  // what is gone gets nothing
    settle();
  }

  void whatFinishesLastIsShown() {
    makeWithoutDelivering(150);
    std::binary_semaphore gate(0);
    const auto blocker = m_queue.enqueue([&gate] { gate.acquire(); }, [] {});
    while (!blocker.isRunning()) std::this_thread::yield();
    m_tile->setSide(200);
    (void)m_folder.add(m_photo.displayName());
    QTRY_COMPARE(m_tile->thumbnail().width(), 300);  // late, but of the same photo
    gate.release();
    settle();
    QVERIFY(m_tile->thumbnail().isNull());  // the later load found no picture
  }

  void aClickEndsWithinTheTile() {
    QQuickWindow window;
    window.resize(300, 300);
    m_tile->setParentItem(window.contentItem());
    m_tile->setSide(100);
    window.show();
    int clicks = 0;
    connect(m_tile.get(), &PhotoThumbnailTile::clicked, this, [&clicks] { ++clicks; });
    QTest::mousePress(&window, Qt::LeftButton, {}, {50, 50});
    QTest::mouseRelease(&window, Qt::LeftButton, {}, {150, 50});
    QTest::mouseClick(&window, Qt::LeftButton, {}, {2, 2});  // in the corner
    QCOMPARE(clicks, 1);
  }

  void keepsOneForEachBoundInWholePixels() {
    const FileUrl file = m_folder.add(QStringLiteral("portrait.png"), samplePhoto({1000, 1500}));
    std::vector<QImage> made(16);
    std::vector<std::jthread> threads;
    threads.reserve(made.size());
    for (QImage& image : made) threads.emplace_back([&] { image = ThumbnailStore::thumbnail(file, 480); });
    threads.clear();
    QCOMPARE(made[0].size(), QSize(320, 480));
    for (const QImage& image : made) QCOMPARE(image.cacheKey(), made[0].cacheKey());  // made once
    QCOMPARE(ThumbnailStore::thumbnail(file, 481.99).height(), 481);
    QCOMPARE(ThumbnailStore::cachedThumbnail(file, 480.9).height(), 480);
  }

  void whatFailsIsTriedAgain() {
    const QByteArray photo = samplePhoto({300, 300});
    const FileUrl file = m_folder.add(QStringLiteral("late.png"), photo.first(20));  // less than its header
    QVERIFY(ThumbnailStore::thumbnail(file, 240).isNull());
    (void)m_folder.add(QStringLiteral("late.png"), photo);
    QCOMPARE(ThumbnailStore::thumbnail(file, 240).width(), 240);
  }

  void theCacheIsBoundedInBytes() {
    const QByteArray photo = samplePhoto({3200, 3200}, Qt::gray, "BMP");  // 40 MB: two fit
    const QStringList names = numberedNames(3);
    for (const QString& name : names) (void)ThumbnailStore::thumbnail(m_folder.add(name, photo), 4000);
    QVERIFY(ThumbnailStore::cachedThumbnail(m_folder.url(names[0]), 4000).isNull());
    QVERIFY(!ThumbnailStore::cachedThumbnail(m_folder.url(names[1]), 4000).isNull());
  }

 private:
  void settle() {
    QCoreApplication::processEvents();
    QTRY_COMPARE(m_queue.pendingCount(), 0);
    QCoreApplication::processEvents();
  }
  // Until the load that the tile asks for has come to its end, but not back to the main thread.
  void makeWithoutDelivering(double side) {
    m_tile->setSide(side);
    QCoreApplication::sendPostedEvents(m_tile.get());
    while (ThumbnailStore::cachedThumbnail(m_photo.url, 2 * side).isNull()) std::this_thread::yield();
  }

  FileImageDecoder m_decoder;
  PhotoFolder m_folder;
  QThreadPool m_pool;
  BackgroundQueue m_queue{BackgroundQueue::Urgency::ordinary, m_pool};
  std::unique_ptr<PhotoThumbnailTile> m_tile;
  PhotoItem m_photo;
};

QTEST_MAIN(ThumbnailsTest)
#include "ThumbnailsTest.moc"
