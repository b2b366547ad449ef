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
  void init();
  void asksForTwiceItsSide_data();
  void asksForTwiceItsSide();
  void wholePointsOfTheSideLoadAgain();
  void anotherPhotoStartsAfresh();
  void aLateResultOfAnotherPhotoIsDropped();
  void whatFinishesLastIsShown();
  void aTileThatIsGoneGetsNothing();
  void clicksWithTheModifiersOfTheEvent();
  void looks_data();
  void looks();

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

void PhotoThumbnailTileTest::init() {
  m_photo = {
      m_folder.add(QLatin1String(QTest::currentTestFunction()) + QStringLiteral(".png"), samplePhoto({900, 900}))};
  m_tile = std::make_unique<PhotoThumbnailTile>();
  m_tile->setQueue(&m_queue);
}

void PhotoThumbnailTileTest::asksForTwiceItsSide_data() {
  QTest::addColumn<double>("side");
  QTest::addColumn<double>("bound");
  QTest::newRow("a small tile") << 88.0 << 240.0;
  QTest::newRow("the least bound") << 120.0 << 240.0;
  QTest::newRow("just above it") << 120.5 << 241.0;
  QTest::newRow("a large tile") << 180.0 << 360.0;
}

void PhotoThumbnailTileTest::asksForTwiceItsSide() {
  QFETCH(double, side);
  QFETCH(double, bound);
  QCOMPARE(PhotoThumbnailTile::maxPixelSize(side), bound);
  m_tile->setSide(side);
  m_tile->setPhoto(m_photo);
  settle();
  QCOMPARE(m_tile->thumbnail().width(), int(bound));
  QCOMPARE(m_tile->size(), QSizeF(side, side));
}

void PhotoThumbnailTileTest::wholePointsOfTheSideLoadAgain() {
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

void PhotoThumbnailTileTest::anotherPhotoStartsAfresh() {
  const PhotoItem unreadable{m_folder.add(QStringLiteral("unreadable.png"), QByteArrayLiteral("x"))};
  m_tile->setSide(150);
  m_tile->setPhoto(m_photo);
  settle();
  m_tile->setPhoto(m_photo);
  QCOMPARE(m_tile->thumbnail().width(), 300);
  m_tile->setPhoto(unreadable);
  QVERIFY(m_tile->thumbnail().isNull());
  settle();
  QVERIFY(m_tile->thumbnail().isNull());
  m_tile->setPhoto(m_photo);
  QVERIFY(m_tile->thumbnail().isNull());
  QCoreApplication::sendPostedEvents(m_tile.get());
  QCOMPARE(m_tile->thumbnail().width(), 300);  // cached: no trip to a thread
}

void PhotoThumbnailTileTest::aLateResultOfAnotherPhotoIsDropped() {
  const PhotoItem unreadable{m_folder.add(QStringLiteral("unreadable2.png"), QByteArrayLiteral("x"))};
  m_tile->setSide(150);
  m_tile->setPhoto(m_photo);
  makeWithoutDelivering(m_photo.url, 300);
  m_tile->setPhoto(unreadable);
  settle();
  QVERIFY(m_tile->thumbnail().isNull());
}

void PhotoThumbnailTileTest::whatFinishesLastIsShown() {
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

void PhotoThumbnailTileTest::aTileThatIsGoneGetsNothing() {
  m_tile->setSide(150);
  m_tile->setPhoto(m_photo);
  makeWithoutDelivering(m_photo.url, 300);
  m_tile.reset();
  settle();
  QCOMPARE(ThumbnailStore::cachedThumbnail(m_photo.url, 300).width(), 300);  // the work is not lost
}

void PhotoThumbnailTileTest::clicksWithTheModifiersOfTheEvent() {
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
  QTest::mouseClick(&window, Qt::LeftButton, Qt::NoModifier, {150, 50});
  QTest::mousePress(&window, Qt::LeftButton, Qt::NoModifier, {50, 50});
  QTest::mouseRelease(&window, Qt::LeftButton, Qt::NoModifier, {150, 50});
  QCOMPARE(clicks, (QList<Qt::KeyboardModifiers>{Qt::NoModifier, Qt::ShiftModifier | Qt::ControlModifier}));
  m_tile->setParentItem(nullptr);
}

void PhotoThumbnailTileTest::looks_data() {
  QTest::addColumn<bool>("isCurrent");
  QTest::addColumn<bool>("isChecked");
  QTest::addColumn<bool>("hasAccent");
  QTest::newRow("plain") << false << false << false;
  QTest::newRow("current") << true << false << true;
  QTest::newRow("checked") << false << true << true;
  QTest::newRow("checked and current") << true << true << true;
}

void PhotoThumbnailTileTest::looks() {
  QFETCH(bool, isCurrent);
  QFETCH(bool, isChecked);
  QFETCH(bool, hasAccent);
  const PhotoItem photo{m_folder.add(QStringLiteral("looks.png"), samplePhoto({300, 300}, Qt::white))};
  QQuickWindow window;
  window.resize(200, 200);
  m_tile->setParentItem(window.contentItem());
  m_tile->setPosition({20, 20});
  m_tile->setSide(150);
  m_tile->setPhoto(photo);
  settle();
  m_tile->setMarks(isCurrent, isChecked, PhotoThumbnailTile::Transition::immediate);
  const QImage image = window.grabWindow();
  const QColor accent(31, 111, 95);
  const QColor middle = isChecked ? QColor(199, 199, 199) : QColor(Qt::white);
  QCOMPARE(image.pixelColor(120, 120), middle);
  for (const QPoint edge : {QPoint(19, 95), QPoint(20, 95), QPoint(95, 20), QPoint(170, 95), QPoint(95, 169)}) {
    const QColor color = image.pixelColor(edge);
    const bool isAccent = std::abs(color.red() - accent.red()) < 60 && color.green() > color.red() + 30;
    QCOMPARE(isAccent, hasAccent);
  }
  // The badge is a disc of 26 points, 7 in from the corner; its mark is white on accent or accent on white.
  const auto whites = [&image](const QRect& rect) {
    int count = 0;
    for (int y = rect.top(); y <= rect.bottom(); ++y) {
      for (int x = rect.left(); x <= rect.right(); ++x) {
        count += image.pixelColor(x, y) == QColor(199, 199, 199) ? 0 : 1;
      }
    }
    return count;
  };
  if (isChecked) QVERIFY(whites({27, 27, 26, 26}) > 450);
  if (isChecked) QCOMPARE(whites({60, 60, 26, 26}), 0);
  m_tile->setParentItem(nullptr);
}

QTEST_MAIN(PhotoThumbnailTileTest)
#include "PhotoThumbnailTileTest.moc"
