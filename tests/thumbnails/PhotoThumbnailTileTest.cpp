#include "PhotoThumbnailTile.h"

#include <QDeadlineTimer>
#include <QQuickWindow>
#include <QTest>
#include <thread>

#include "PhotoFolder.h"
#include "SamplePhoto.h"
#include "ThumbnailStore.h"

using namespace lumagrid;

// The width of a tile's thumbnail tells the bound that it was made with: the photos are larger.
class PhotoThumbnailTileTest : public QObject {
  Q_OBJECT

 private Q_SLOTS:
  void init() {
    m_photo = {
        m_folder.add(QLatin1String(QTest::currentTestFunction()) + QStringLiteral(".png"), samplePhoto({900, 900}))};
    m_tile = std::make_unique<PhotoThumbnailTile>();
    m_tile->setQueue(&m_queue);
  }

  void asksForTwiceItsSideAndAtLeast240() {
    m_tile->setPhoto(m_photo);
    for (const auto& [side, bound] : {std::pair(88.0, 240), {120.5, 241}, {180.0, 360}}) {
      m_tile->setSide(side);
      settle();
      QCOMPARE(m_tile->thumbnail().width(), bound);
      QCOMPARE(m_tile->size(), QSizeF(side, side));
    }
  }

  void wholePointsOfTheSideLoadAgain() {
    m_tile->setPhoto(m_photo);
    m_tile->setSide(180.2);
    settle();
    QCOMPARE(m_tile->thumbnail().width(), 360);
    m_tile->setSide(180.9);
    settle();
    QCOMPARE(m_tile->thumbnail().width(), 360);
    m_tile->setSide(181.0);
    QCOMPARE(m_tile->thumbnail().width(), 360);  // until the new one is there
    settle();
    QCOMPARE(m_tile->thumbnail().width(), 362);
    for (double side = 181; side < 200; ++side) m_tile->setSide(side);
    settle();
    QCOMPARE(m_tile->thumbnail().width(), 398);
    QVERIFY(ThumbnailStore::cachedThumbnail(m_photo.url, 380).isNull());  // one load for a turn of the event loop
  }

  void anotherPhotoStartsAfresh() {
    const PhotoItem unreadable{m_folder.add(QStringLiteral("unreadable.png"), QByteArrayLiteral("x"))};
    m_tile->setSide(150);
    m_tile->setPhoto(m_photo);
    makeWithoutDelivering(m_photo.url, 300);
    m_tile->setPhoto(unreadable);
    settle();
    QVERIFY(m_tile->thumbnail().isNull());  // the late result is of another photo
    m_tile->setPhoto(m_photo);
    QCoreApplication::sendPostedEvents(m_tile.get());
    QCOMPARE(m_tile->thumbnail().width(), 300);  // cached: no trip to a thread
    m_tile->setPhoto(unreadable);
    QVERIFY(m_tile->thumbnail().isNull());
  }

  void whatFinishesLastIsShown() {
    m_tile->setSide(150);
    m_tile->setPhoto(m_photo);
    makeWithoutDelivering(m_photo.url, 300);
    m_tile->setSide(200);
    (void)m_folder.add(m_photo.displayName(), QByteArrayLiteral("x"));
    QTRY_VERIFY(!m_tile->thumbnail().isNull());
    QCOMPARE(m_tile->thumbnail().width(), 300);  // late, but of the same photo
    settle();
    QVERIFY(m_tile->thumbnail().isNull());  // the later load found no picture
  }

  void aTileThatIsGoneGetsNothing() {
    m_tile->setSide(150);
    m_tile->setPhoto(m_photo);
    makeWithoutDelivering(m_photo.url, 300);
    m_tile.reset();
    settle();
    QCOMPARE(ThumbnailStore::cachedThumbnail(m_photo.url, 300).width(), 300);  // the work is not lost
  }

  void clicksWithTheModifiersOfTheEvent() {
    QQuickWindow window;
    window.resize(300, 300);
    m_tile->setParentItem(window.contentItem());
    m_tile->setSide(100);
    window.show();
    QVERIFY(QTest::qWaitForWindowExposed(&window));
    QList<Qt::KeyboardModifiers> clicks;
    connect(m_tile.get(), &PhotoThumbnailTile::clicked, this,
            [&](Qt::KeyboardModifiers modifiers) { clicks << modifiers; });
    QTest::mouseClick(&window, Qt::LeftButton, Qt::NoModifier, {2, 2});  // in the corner, too
    QTest::mouseClick(&window, Qt::LeftButton, Qt::ShiftModifier | Qt::ControlModifier, {50, 50});
    QTest::mouseClick(&window, Qt::RightButton, Qt::NoModifier, {50, 50});
    QTest::mousePress(&window, Qt::LeftButton, Qt::NoModifier, {50, 50});
    QTest::mouseRelease(&window, Qt::LeftButton, Qt::NoModifier, {150, 50});
    QCOMPARE(clicks, (QList<Qt::KeyboardModifiers>{Qt::NoModifier, Qt::ShiftModifier | Qt::ControlModifier}));
    m_tile->setParentItem(nullptr);
  }

 private:
  // Until nothing loads any more.
  void settle() {
    QCoreApplication::processEvents();
    QTRY_COMPARE(m_queue.pendingCount(), 0);
    QCoreApplication::processEvents();
  }
  // Until the load that the tile asks for has come to its end, but not back to the main thread.
  void makeWithoutDelivering(const FileUrl& file, double bound) {
    QCoreApplication::sendPostedEvents(m_tile.get());
    QDeadlineTimer deadline(10'000);
    while (ThumbnailStore::cachedThumbnail(file, bound).isNull() && !deadline.hasExpired()) std::this_thread::yield();
    QVERIFY(!deadline.hasExpired());
  }

  PhotoFolder m_folder;
  BackgroundQueue m_queue{1};
  std::unique_ptr<PhotoThumbnailTile> m_tile;
  PhotoItem m_photo;
};

QTEST_MAIN(PhotoThumbnailTileTest)
#include "PhotoThumbnailTileTest.moc"
