#include "PhotoLibrary.h"

#include <thread>

#include "FakePlatform.h"
#include "PhotoFolder.h"
#include "Table.h"

using namespace lumagrid;

class PhotoLibraryTest : public QObject {
  Q_OBJECT

 private:
  FakePlatform m_platform;
  std::unique_ptr<PhotoLibrary> m_library;

 private Q_SLOTS:
  void init() {
    m_platform = {};
    m_library = std::make_unique<PhotoLibrary>(m_platform.services());
  }

  // … by a scan of its own as by one made ahead. No order of listing is first in all the orders of sorting.
  void theFirstListedPhotoIsCurrentInEachOrder() {
    const PhotoFolder folder(numberedNames(20));
    for (int number = 0; number < 20; ++number) folder.setDate(numberedNames(20).at(number), number);
    FolderScan scan{photoItems(folder.url()), {}};
    scan.byName = sortedPositions(std::get<0>(scan.listing), SortOrder::nameAscending);
    const QString first = folder.listed().first();
    for (const SortOrder order : kAllSortOrders) {
      for (const bool isAhead : {false, true}) {
        m_library->setSortOrder(order);
        QVERIFY(!m_library->currentPhoto() || m_library->currentPhoto()->displayName() == first);
        m_platform.decoder.decoded.clear();
        isAhead ? m_library->openFolder(folder.url(), scan) : m_library->openFolder(folder.url());
        QStringList sorted = numberedNames(20);
        if (order == SortOrder::nameDescending || order == SortOrder::dateNewest) {
          std::reverse(sorted.begin(), sorted.end());
        }
        QCOMPARE(namesOf(m_library->photos()), sorted);
        QCOMPARE(m_library->counterText(), QStringLiteral("%1 / 20").arg(sorted.indexOf(first) + 1));
        QCOMPARE(m_platform.decoder.decoded, QStringList{first});
      }
      QCOMPARE(m_library->openFolderOf(folder.url(first), scan), m_library->currentIndex());
      QCOMPARE(m_library->openFolderOf(folder.url(QStringLiteral("20.jpg")), scan), std::nullopt);
    }
    // The active order sorts again: dates that have changed since count.
    folder.setDate(QStringLiteral("4.jpg"), 4'000'000'000);
    m_library->setSortOrder(SortOrder::dateOldest);
    QCOMPARE(m_library->photos().back().displayName(), QStringLiteral("4.jpg"));
    QCOMPARE(m_library->currentPhoto()->displayName(), first);
    QCOMPARE(m_platform.decoder.decoded, QStringList{first});  // neither loads
  }

  // The files of a folder, and what is said of it.
  void tellsHowOpeningWent_data() {
    addRows<std::pair<QByteArray, QByteArray>>({
        {"two photos", {"a.jpg b.jpg", "Loaded 2 photos from \"%1 %2 %3\"."}},
        {"one photo", {"a.jpg", "Loaded 1 photo from \"%1 %2 %3\"."}},
        {"a damaged photo", {"%1bad.jpg", "Could not open \"%1bad.jpg\"."}},
        {"no photo", {"README", "No supported image files were found in this folder."}},
        {"no folder", {"", "Could not open folder: No such file or directory"}},
    });
  }

  // After a folder with photos, nothing of which stays.
  void tellsHowOpeningWent() {
    const auto [names, status] = fetchedRow<std::pair<QByteArray, QByteArray>>();
    const QString files = QString::fromLatin1(names);
    const PhotoFolder before(numberedNames(3));
    m_library->openFolder(before.url());
    const PhotoFolder parent;
    const QString name = QStringLiteral("%1 %2 %3");  // looks like places to fill in
    if (!files.isEmpty()) (void)parent.addFolder(name);
    for (const QString& file : files.split(u' ', Qt::SkipEmptyParts)) (void)parent.add(name + u'/' + file);
    m_platform.decoder.damaged = {QStringLiteral("%1bad.jpg")};
    m_library->openFolder(parent.url(name));
    QCOMPARE(m_library->statusMessage(), QString::fromLatin1(status));
    QCOMPARE(m_library->statusIsError(), !m_library->statusMessage().startsWith(QStringLiteral("Loaded")));
    QCOMPARE(m_library->folderURL(), files.isEmpty() ? std::nullopt : std::optional(parent.url(name)));
    QCOMPARE(m_library->photoCount(), files.count(QStringLiteral(".jpg")));
    QCOMPARE(m_library->currentImage().isNull(), m_library->statusIsError());
    QCOMPARE(m_platform.access.starts - m_platform.access.stops, files.isEmpty() ? 0 : 1);  // as long as the folder
  }

  // Whatever is assigned, equal or not: one announcement, with all of the old state still there, then one change.
  void tellsBeforeEachAssignment() {
    const PhotoFolder folder(numberedNames(4));
    QByteArrayList log;
    bool isWhole = true;
    const auto state = [this] {
      return std::tuple(m_library->folderURL(), m_library->photos(), m_library->currentIndex(), m_library->sortOrder(),
                        m_library->selectedIndices(), m_library->currentImage().cacheKey(), m_library->statusMessage(),
                        m_library->statusIsError());
    };
    auto last = state();
    connect(m_library.get(), &PhotoLibrary::objectWillChange, this, [&] {
      isWhole = isWhole && state() == last && (log.isEmpty() || log.last() != "will");
      log.append("will");
    });
    const auto follow = [&](auto signal, const char* name) {
      connect(m_library.get(), signal, this, [&, name] {
        isWhole = isWhole && log.takeLast() == "will";
        log.append(name);
        last = state();
      });
    };
    follow(&PhotoLibrary::folderURLChanged, "folder");
    follow(&PhotoLibrary::photosReset, "photos");
    follow(&PhotoLibrary::photosReordered, "order");
    follow(&PhotoLibrary::photoRemoved, "removed");
    follow(&PhotoLibrary::sortOrderChanged, "sortOrder");
    follow(&PhotoLibrary::currentIndexChanged, "index");
    follow(&PhotoLibrary::selectedIndicesChanged, "selection");
    follow(&PhotoLibrary::currentImageChanged, "image");
    follow(&PhotoLibrary::statusMessageChanged, "message");
    follow(&PhotoLibrary::statusIsErrorChanged, "error");

    for (int time = 0; time < 2; ++time) {
      m_library->openFolder(folder.url());
      m_library->setSortOrder(SortOrder::nameDescending);
      m_library->openPhoto(3);
      QCOMPARE(std::exchange(log, {}).join(' '),
               QByteArray("selection folder photos index order index selection image message error "
                          "sortOrder order index selection index image message error"));
    }
    m_library->deleteCurrentPhoto();
    m_library->toggleSelection(2);
    m_library->deleteSelectedPhotos();
    m_library->openFolder(folder.url(QStringLiteral("missing")));
    QCOMPARE(log.join(' '), QByteArray("removed index image message error "
                                       "selection removed selection index image message error message error "
                                       "selection folder photos index image message error"));
    QVERIFY(isWhole);
  }

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
    // An unstable sort keeps the order of a few.
    photos.clear();
    for (int number = 0; number < 40; ++number) {
      photos.push_back({folder.add(QString::number(number * 7 % 40))});
      folder.setDate(photos.back().displayName(), number % 2);
    }
    std::stable_partition(photos.begin(), photos.end(), [](const PhotoItem& photo) { return modDate(photo.url) == 0; });
    QCOMPARE(sorted(SortOrder::dateOldest), namesOf(photos).join(u' '));
    std::rotate(photos.begin(), photos.begin() + 20, photos.end());
    QCOMPARE(sorted(SortOrder::dateNewest), namesOf(photos).join(u' '));
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

QTEST_GUILESS_MAIN(PhotoLibraryTest)
#include "PhotoLibraryTest.moc"
