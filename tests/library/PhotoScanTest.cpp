#include "PhotoScan.h"

#include <QTest>
#include <atomic>
#include <thread>

#include "PhotoFolder.h"

using namespace lumagrid;

class PhotoScanTest : public QObject {
  Q_OBJECT

 private Q_SLOTS:
  void findsSupportedFilesAlone();
  void aListingThatFailsHasNoPhotos();
  void sorts_data();
  void sorts();
  void bearsDatesThatChangeWhileItSorts();
  void titlesNameTheOrders();
};

void PhotoScanTest::findsSupportedFilesAlone() {
  const QStringList wanted = {QStringLiteral("PHOTO.JPG"), QStringLiteral("Photo.Jpeg"), QStringLiteral("x.HEIC"),
                              QStringLiteral("a.png"),     QStringLiteral("a.gif"),      QStringLiteral("a.webp"),
                              QStringLiteral("a.bmp"),     QStringLiteral("a.avif"),     QStringLiteral("a.heif"),
                              QStringLiteral("a.tif"),     QStringLiteral("b.b.tiff"),   QStringLiteral("a,%1.jpg")};
  const PhotoFolder folder(wanted + QStringList{QStringLiteral("photo.jpeg.txt"), QStringLiteral("README"),
                                                QStringLiteral("photo."), QStringLiteral(".hidden.jpg"),
                                                QStringLiteral("jpg"), QStringLiteral("a.jp"), QStringLiteral("a.jpgs"),
                                                QStringLiteral("a.svg"), QStringLiteral("a.jpg ")});
  (void)folder.addFolder(QStringLiteral("album.jpg"));
  (void)folder.add(QStringLiteral("album.jpg/inside.jpg"));
  QVERIFY(QFile::link(folder.url(QStringLiteral("a.png")).displayName(),
                      QFile::decodeName(folder.url(QStringLiteral("link.png")).path())));

  const auto scan = photoItems(folder.url());
  QVERIFY(std::holds_alternative<std::vector<PhotoItem>>(scan));
  QStringList expected = folder.listed();
  expected.removeIf([&wanted](const QString& name) { return !wanted.contains(name); });
  QCOMPARE(expected.size(), wanted.size());
  QCOMPARE(namesOf(std::get<std::vector<PhotoItem>>(scan)), expected);  // not sorted
  QVERIFY(std::get<std::vector<PhotoItem>>(photoItems(PhotoFolder({QStringLiteral("README")}).url())).empty());
}

void PhotoScanTest::aListingThatFailsHasNoPhotos() {
  const PhotoFolder folder({QStringLiteral("a.jpg")});
  QVERIFY(std::holds_alternative<ListingError>(photoItems(folder.url(QStringLiteral("missing")))));
  QVERIFY(std::holds_alternative<ListingError>(photoItems(folder.url(QStringLiteral("a.jpg")))));
}

void PhotoScanTest::sorts_data() {
  QTest::addColumn<SortOrder>("order");
  QTest::addColumn<QString>("names");  // as listed; after a colon, a date
  QTest::addColumn<QString>("sorted");
  QTest::newRow("numbers by value, case aside") << SortOrder::nameAscending << "IMG_2.jpg img_10.jpg IMG_9.jpg"
                                                << "IMG_2.jpg IMG_9.jpg img_10.jpg";
  QTest::newRow("names from the end") << SortOrder::nameDescending << "IMG_2.jpg img_10.jpg IMG_9.jpg"
                                      << "img_10.jpg IMG_9.jpg IMG_2.jpg";
  QTest::newRow("the extension counts") << SortOrder::nameAscending << "a.png a.jpg"
                                        << "a.jpg a.png";
  QTest::newRow("names that differ by case alone have an order") << SortOrder::nameAscending << "B.jpg a.jpg A.jpg"
                                                                 << "a.jpg A.jpg B.jpg";
  QTest::newRow("… in both directions") << SortOrder::nameDescending << "a.jpg A.jpg B.jpg"
                                        << "B.jpg A.jpg a.jpg";
  QTest::newRow("newest first") << SortOrder::dateNewest << "a.jpg:5 b.jpg:9 c.jpg:-7"
                                << "b.jpg a.jpg c.jpg";
  QTest::newRow("oldest first") << SortOrder::dateOldest << "a.jpg:5 b.jpg:9 c.jpg:-7"
                                << "c.jpg a.jpg b.jpg";
  QTest::newRow("equal dates keep their order, newest first")
      << SortOrder::dateNewest << "c.jpg:5 a.jpg:5 n.jpg:9 b.jpg:5"
      << "n.jpg c.jpg a.jpg b.jpg";
  QTest::newRow("equal dates keep their order, oldest first")
      << SortOrder::dateOldest << "c.jpg:5 a.jpg:5 n.jpg:9 b.jpg:5"
      << "c.jpg a.jpg b.jpg n.jpg";
  QTest::newRow("without a date last among the newest") << SortOrder::dateNewest << "gone.jpg old.jpg:-99999 gone2.jpg"
                                                        << "old.jpg gone.jpg gone2.jpg";
  QTest::newRow("without a date first among the oldest") << SortOrder::dateOldest << "old.jpg:-99999 gone.jpg"
                                                         << "gone.jpg old.jpg";
}

void PhotoScanTest::sorts() {
  QFETCH(SortOrder, order);
  QFETCH(QString, names);
  QFETCH(QString, sorted);
  const PhotoFolder folder;
  std::vector<PhotoItem> photos;
  for (const QString& entry : names.split(u' ')) {
    const QString name = entry.section(u':', 0, 0);
    photos.push_back({folder.url(name)});
    if (!entry.contains(u':')) continue;
    (void)folder.add(name);
    folder.setDate(name, entry.section(u':', 1).toLongLong());
  }
  std::vector<PhotoItem> result;
  for (const std::uint32_t position : sortedPositions(photos, order)) result.push_back(photos.at(position));
  QCOMPARE(namesOf(result).join(u' '), sorted);
}

// Each date is read once: an order that contradicts itself would let the sort run out of its bounds.
void PhotoScanTest::bearsDatesThatChangeWhileItSorts() {
  constexpr int kPhotos = 400;
  const PhotoFolder folder(numberedNames(kPhotos));
  std::vector<PhotoItem> photos;
  for (const QString& name : numberedNames(kPhotos)) photos.push_back({folder.url(name)});
  std::atomic_bool isOver = false;
  std::thread touching([&] {
    for (int turn = 0; !isOver; ++turn) folder.setDate(numberedNames(1).first(), turn % 2 ? 1 : 2'000'000'000);
  });
  bool allThere = true;
  for (int round = 0; round < 50; ++round) {
    folder.setDate(QStringLiteral("%1.jpg").arg(round + 1), round);
    auto positions = sortedPositions(photos, round % 2 ? SortOrder::dateNewest : SortOrder::dateOldest);
    std::sort(positions.begin(), positions.end());
    for (std::uint32_t i = 0; i < kPhotos; ++i) allThere = allThere && positions.at(i) == i;
  }
  isOver = true;
  touching.join();
  QVERIFY(allThere);
}

void PhotoScanTest::titlesNameTheOrders() {
  QStringList titles;
  for (const SortOrder order : kAllSortOrders) {
    titles.append(rawValue(order));
    QCOMPARE(sortOrderFromRawValue(rawValue(order)), order);
  }
  QCOMPARE(titles, (QStringList{QStringLiteral("Name A\u2013Z"), QStringLiteral("Name Z\u2013A"),
                                QStringLiteral("Newest First"), QStringLiteral("Oldest First")}));
  for (const char* other : {"", "Name A-Z", "newest first", "Newest First "}) {
    QCOMPARE(sortOrderFromRawValue(QString::fromLatin1(other)), std::nullopt);
  }
}

QTEST_GUILESS_MAIN(PhotoScanTest)
#include "PhotoScanTest.moc"
