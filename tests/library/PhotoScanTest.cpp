#include "PhotoScan.h"

#include <QTest>
#include <atomic>
#include <thread>

#include "PhotoFolder.h"

using namespace lumagrid;

class PhotoScanTest : public QObject {
  Q_OBJECT

 private Q_SLOTS:
  void findsSupportedFilesAlone() {
    const auto names = [](const char* list) { return QString::fromLatin1(list).split(u' '); };
    const QStringList wanted =
        names("PHOTO.JPG Photo.Jpeg x.HEIC a.png a.gif a.webp a.bmp a.avif a.heif a.tif b.b.tiff a,%1.jpg");
    const PhotoFolder folder(wanted +
                             names("photo.jpeg.txt README photo. .hidden.jpg jpg a.jp a.jpgs a.svg a.jpg_ .jpg"));
    (void)folder.addFolder(QStringLiteral("album.jpg"));
    QStringList expected = folder.listed();
    expected.removeIf([&wanted](const QString& name) { return !wanted.contains(name); });
    QCOMPARE(expected.size(), wanted.size());
    QCOMPARE(namesOf(std::get<std::vector<PhotoItem>>(photoItems(folder.url()))), expected);  // not sorted
  }

  void sorts_data() {
    QTest::addColumn<SortOrder>("order");
    QTest::addColumn<QString>("sorted");
    QTest::newRow("Name A\u2013Z") << SortOrder::nameAscending << "a_2 a_9 A_9 a_10 gone_8 old_1";
    QTest::newRow("Name Z\u2013A") << SortOrder::nameDescending << "old_1 gone_8 a_10 A_9 a_9 a_2";
    // Equal dates keep their order either way; what has none is older than all.
    QTest::newRow("Newest First") << SortOrder::dateNewest << "a_2 a_10 A_9 a_9 old_1 gone_8";
    QTest::newRow("Oldest First") << SortOrder::dateOldest << "gone_8 old_1 a_10 A_9 a_9 a_2";
  }

  void sorts() {
    QFETCH(SortOrder, order);
    QCOMPARE(rawValue(order), QString::fromUtf8(QTest::currentDataTag()));
    QCOMPARE(sortOrderFromRawValue(rawValue(order)), order);
    const QHash<QString, time_t> dates = {{QStringLiteral("a_10"), 5},
                                          {QStringLiteral("A_9"), 5},
                                          {QStringLiteral("a_9"), 5},
                                          {QStringLiteral("a_2"), 9},
                                          {QStringLiteral("old_1"), -99999}};
    const PhotoFolder folder(dates.keys());
    std::vector<PhotoItem> photos;
    for (const char* name : {"old_1", "a_10", "A_9", "gone_8", "a_9", "a_2"})
      photos.push_back({folder.url(QLatin1String(name))});
    for (const auto& [name, date] : dates.asKeyValueRange()) folder.setDate(name, date);
    QStringList result;
    for (const std::uint32_t position : sortedPositions(photos, order))
      result.append(photos.at(position).displayName());
    QTEST(result.join(u' '), "sorted");
  }

  // Each date is read once: an order that contradicts itself would let the sort run out of its bounds.
  void bearsDatesThatChangeWhileItSorts() {
    constexpr int kPhotos = 400;
    const PhotoFolder folder(numberedNames(kPhotos));
    std::vector<PhotoItem> photos;
    for (const QString& name : numberedNames(kPhotos)) photos.push_back({folder.url(name)});
    std::atomic_bool isOver = false;
    std::jthread touching([&] {
      for (int turn = 0; !isOver; ++turn) folder.setDate(QStringLiteral("0.jpg"), turn % 2 ? 1 : 2'000'000'000);
    });
    bool allThere = true;
    for (int round = 0; round < 50; ++round) {
      folder.setDate(QStringLiteral("%1.jpg").arg(round + 1), round);
      auto positions = sortedPositions(photos, round % 2 ? SortOrder::dateNewest : SortOrder::dateOldest);
      std::sort(positions.begin(), positions.end());
      for (std::uint32_t i = 0; i < kPhotos; ++i) allThere = allThere && positions.at(i) == i;
    }
    isOver = true;
    QVERIFY(allThere);
  }
};

QTEST_GUILESS_MAIN(PhotoScanTest)
#include "PhotoScanTest.moc"
