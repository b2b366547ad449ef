#include "PhotoThumbnailTile.h"

#include <QTest>
#include <semaphore>
#include <thread>

#include "FakePlatform.h"
#include "FileImageDecoder.h"
#include "PhotoFolder.h"
#include "PictureStore.h"
#include "ThumbnailStore.h"

using namespace lumagrid;

// Tiles, the store of their thumbnails, and that of whole pictures. The width of a tile's thumbnail tells the bound
// that it was made with: the photos are larger.
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

  void anotherSizeStandsIn() {
    m_tile->setSide(150);
    settle();
    PhotoThumbnailTile other;
    other.setQueue(&m_queue);
    other.setPhoto(m_photo);
    other.setSide(200);
    QCOMPARE(other.thumbnail().width(), 300);  // at once
    settle();
    QCOMPARE(other.thumbnail().width(), 400);
    other.setPhoto({m_folder.add(QStringLiteral("unseen.png"), samplePhoto({900, 900}))});
    QVERIFY(other.thumbnail().isNull());
    settle();
  }

  void picturesAreDecodedOnceForEachContentOfAFile() {
    FakeImageDecoder decoder;
    PictureStore store(decoder);
    const QString name = m_photo.displayName();
    const auto timesDecoded = [&] {
      const bool isWhole = !store.decode(m_photo.url).pixels.isNull();
      return isWhole ? decoder.decoded.size() : -1;
    };
    QCOMPARE(timesDecoded(), 1);
    QCOMPARE(timesDecoded(), 1);
    m_folder.setDate(name, 1);  // another file of the same length
    QCOMPARE(timesDecoded(), 2);
    (void)m_folder.add(name, "shorter");
    m_folder.setDate(name, 1);
    QCOMPARE(timesDecoded(), 3);
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
