#include "PhotoScan.h"

#include <QTest>
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

  // Equal dates keep their order either way; what has none is older than all.
  void sorts() {
    const PhotoFolder folder;
    std::vector<PhotoItem> photos;
    for (const auto& [name, date] :
         {std::pair{"old_1", -99999}, {"a_10", 5}, {"A_9", 5}, {"gone", 0}, {"a_9", 5}, {"a_2", 9}}) {
      const QString file = QString::fromLatin1(name);
      photos.push_back({date ? folder.add(file) : folder.url(file)});
      if (date) folder.setDate(file, date);
    }
    const auto sorted = [&photos](SortOrder order) {
      QStringList names;
      for (const auto position : sortedPositions(photos, order)) names.append(photos.at(position).displayName());
      return names.join(u' ');
    };
    QCOMPARE(sorted(SortOrder::nameAscending), QStringLiteral("a_2 a_9 A_9 a_10 gone old_1"));
    QCOMPARE(sorted(SortOrder::nameDescending), QStringLiteral("old_1 gone a_10 A_9 a_9 a_2"));
    QCOMPARE(sorted(SortOrder::dateNewest), QStringLiteral("a_2 a_10 A_9 a_9 old_1 gone"));
    QCOMPARE(sorted(SortOrder::dateOldest), QStringLiteral("gone old_1 a_10 A_9 a_9 a_2"));
  }

  void sortsALargeFolderInShares() {
    constexpr int kPhotos = 9999;
    std::vector<PhotoItem> photos;
    for (int number = kPhotos; number > 0; --number) photos.push_back({FileUrl::fromPath(QString::number(number))});
    std::vector<std::uint32_t> positions = sortedPositions(photos, SortOrder::nameAscending);
    std::reverse(positions.begin(), positions.end());
    for (std::uint32_t i = 0; i < kPhotos; ++i) QCOMPARE(positions.at(i), i);
  }

  // Each date is read once: an order that contradicts itself would let the sort run out of its bounds.
  void bearsDatesThatChangeWhileItSorts() {
    const PhotoFolder folder(numberedNames(1));
    const std::vector<PhotoItem> photos(8, {folder.url(QStringLiteral("0.jpg"))});
    const std::jthread touching([&folder](const std::stop_token& isOver) {
      for (int turn = 0; !isOver.stop_requested(); ++turn) folder.setDate(QStringLiteral("0.jpg"), turn % 2);
    });
    for (int round = 0; round < 5000; ++round) {
      auto positions = sortedPositions(photos, round % 2 ? SortOrder::dateNewest : SortOrder::dateOldest);
      std::sort(positions.begin(), positions.end());
      for (std::uint32_t i = 0; i < photos.size(); ++i) QCOMPARE(positions.at(i), i);
    }
  }
};

QTEST_GUILESS_MAIN(PhotoScanTest)
#include "PhotoScanTest.moc"
