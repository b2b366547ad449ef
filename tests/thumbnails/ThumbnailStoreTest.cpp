#include "ThumbnailStore.h"

#include <QTest>
#include <thread>

#include "PhotoFolder.h"
#include "SamplePhoto.h"

using namespace lumagrid;

class ThumbnailStoreTest : public QObject {
  Q_OBJECT

 private Q_SLOTS:
  void isBoundedInWholePixels() {
    const FileUrl file = m_folder.add(QStringLiteral("portrait.png"), samplePhoto({1000, 1500}));
    QVERIFY(ThumbnailStore::cachedThumbnail(file, 480).isNull());
    const QImage thumbnail = ThumbnailStore::thumbnail(file, 480.0);
    QCOMPARE(thumbnail.size(), QSize(320, 480));
    QCOMPARE(ThumbnailStore::cachedThumbnail(file, 480.9).cacheKey(), thumbnail.cacheKey());
    QVERIFY(ThumbnailStore::cachedThumbnail(file, 481).isNull());
    QCOMPARE(ThumbnailStore::thumbnail(file, 481.99).height(), 481);
    QCOMPARE(ThumbnailStore::thumbnail(file, 480).cacheKey(), thumbnail.cacheKey());
    QCOMPARE(ThumbnailStore::thumbnail(file, 2000).size(), QSize(1000, 1500));  // never scaled up
  }

  void whatFailsIsTriedAgain() {
    const QString name = QStringLiteral("late.png");
    QVERIFY(ThumbnailStore::thumbnail(m_folder.url(name), 240).isNull());
    const FileUrl file = m_folder.add(name, QByteArrayLiteral("no picture at all"));
    QVERIFY(ThumbnailStore::thumbnail(file, 240).isNull());
    const QByteArray photo = samplePhoto({300, 300});
    (void)m_folder.add(name, photo.first(photo.size() / 4));
    QVERIFY(ThumbnailStore::thumbnail(file, 240).isNull());
    QVERIFY(ThumbnailStore::cachedThumbnail(file, 240).isNull());
    (void)m_folder.add(name, photo);
    QCOMPARE(ThumbnailStore::thumbnail(file, 240).width(), 240);
  }

  void aFileThatIsReplacedKeepsItsThumbnail() {
    const QString name = QStringLiteral("replaced.png");
    const FileUrl file = m_folder.add(name, samplePhoto({300, 300}, Qt::red));
    const QImage red = ThumbnailStore::thumbnail(file, 240);
    (void)m_folder.add(name, samplePhoto({300, 300}, Qt::blue));
    QCOMPARE(ThumbnailStore::thumbnail(file, 240).cacheKey(), red.cacheKey());
    QCOMPARE(ThumbnailStore::thumbnail(file, 250).pixelColor(9, 9), QColor(Qt::blue));  // another bound, another look
  }

  // Two of three pictures of 40 MB fit into the cache.
  void theLeastRecentlyUsedGoesFirst() {
    const QByteArray photo = samplePhoto({3200, 3200}, Qt::gray, "BMP");
    QList<FileUrl> files;
    for (const char* name : {"a.bmp", "b.bmp", "c.bmp"}) files.append(m_folder.add(QString::fromLatin1(name), photo));
    QVERIFY(!ThumbnailStore::thumbnail(files[0], 4000).isNull());
    QVERIFY(!ThumbnailStore::thumbnail(files[1], 4000).isNull());
    QVERIFY(!ThumbnailStore::cachedThumbnail(files[0], 4000).isNull());
    QVERIFY(!ThumbnailStore::thumbnail(files[2], 4000).isNull());
    QVERIFY(ThumbnailStore::cachedThumbnail(files[1], 4000).isNull());
    QVERIFY(!ThumbnailStore::cachedThumbnail(files[0], 4000).isNull());
  }

  void servesManyThreads() {
    const FileUrl file = m_folder.add(QStringLiteral("many.png"), samplePhoto({800, 400}));
    std::vector<QSize> sizes(16);
    std::vector<std::thread> threads;
    for (std::size_t i = 0; i < sizes.size(); ++i) {
      threads.emplace_back([&, i] { sizes[i] = ThumbnailStore::thumbnail(file, 240 + double(i % 2) * 160).size(); });
    }
    for (std::thread& thread : threads) thread.join();
    for (std::size_t i = 0; i < sizes.size(); ++i) QCOMPARE(sizes[i], i % 2 ? QSize(400, 200) : QSize(240, 120));
  }

 private:
  PhotoFolder m_folder;
};

QTEST_GUILESS_MAIN(ThumbnailStoreTest)
#include "ThumbnailStoreTest.moc"
