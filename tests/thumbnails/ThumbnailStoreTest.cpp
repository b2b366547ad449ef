#include "ThumbnailStore.h"

#include <QTest>
#include <thread>

#include "PhotoFolder.h"
#include "SamplePhoto.h"

using namespace lumagrid;

class ThumbnailStoreTest : public QObject {
  Q_OBJECT

 private Q_SLOTS:
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
    const FileUrl file = m_folder.add(QStringLiteral("late.png"), photo.first(photo.size() / 4));
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
  PhotoFolder m_folder;
};

QTEST_GUILESS_MAIN(ThumbnailStoreTest)
#include "ThumbnailStoreTest.moc"
