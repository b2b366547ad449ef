#include "PhotoLibrary.h"

#include <QSignalSpy>
#include <QTest>

#include "FakePlatform.h"
#include "PhotoFolder.h"

using namespace lumagrid;

class PhotoLibraryTest : public QObject {
  Q_OBJECT

 private Q_SLOTS:
  void init();
  void aNewLibraryIsEmpty();
  void theFirstListedPhotoIsCurrent_data();
  void theFirstListedPhotoIsCurrent();
  void tellsHowOpeningWent_data();
  void tellsHowOpeningWent();
  void replacesTheFolder();
  void holdsAccessToOneFolder();
  void opensWhatTheChooserAnswers();
  void opensAndSteps();
  void sortingKeepsTheCurrentPhoto();
  void equalDatesKeepTheOrderOfTheList();
  void opensTheFolderOfAPicture();
  void tellsBeforeEachAssignment();

 private:
  FakePlatform m_platform;
  std::unique_ptr<PhotoLibrary> m_library;
};

void PhotoLibraryTest::init() {
  m_platform = {};
  m_library = std::make_unique<PhotoLibrary>(m_platform.services());
}

void PhotoLibraryTest::aNewLibraryIsEmpty() {
  QCOMPARE(m_library->counterText(), QStringLiteral("0 / 0"));
  QVERIFY(!m_library->canGoNext());
  QVERIFY(!m_library->currentPhoto());
  QVERIFY(!m_library->folderURL());
  QCOMPARE(m_library->currentIndex(), -1);
  QCOMPARE(m_library->sortOrder(), SortOrder::nameAscending);
  QCOMPARE(m_library->statusMessage(), QStringLiteral("Choose a folder to start browsing photos."));
  QVERIFY(!m_library->statusIsError());
  m_library->setSortOrder(SortOrder::dateNewest);
  m_library->openPhoto(0);
  m_library->showNext();
  m_library->showPrevious();
  QCOMPARE(m_library->currentIndex(), -1);
}

void PhotoLibraryTest::theFirstListedPhotoIsCurrent_data() {
  QTest::addColumn<SortOrder>("order");
  for (const SortOrder order : kAllSortOrders) QTest::newRow(qPrintable(rawValue(order))) << order;
}

// No order of listing is first in all the orders of sorting.
void PhotoLibraryTest::theFirstListedPhotoIsCurrent() {
  QFETCH(SortOrder, order);
  const PhotoFolder folder(numberedNames(20));
  for (int number = 0; number < 20; ++number) folder.setDate(numberedNames(20).at(number), number);
  m_library->setSortOrder(order);
  m_library->openFolder(folder.url());

  QStringList sorted = numberedNames(20);
  if (order == SortOrder::nameDescending || order == SortOrder::dateNewest) std::reverse(sorted.begin(), sorted.end());
  const QString first = folder.listed().first();
  QCOMPARE(namesOf(m_library->photos()), sorted);
  QCOMPARE(m_library->currentPhoto()->displayName(), first);
  QCOMPARE(m_library->currentIndex(), sorted.indexOf(first));
  QCOMPARE(m_library->counterText(), QStringLiteral("%1 / 20").arg(sorted.indexOf(first) + 1));
  QCOMPARE(m_platform.decoder.decoded, QStringList{first});
  QCOMPARE(m_library->sortOrder(), order);
}

void PhotoLibraryTest::tellsHowOpeningWent_data() {
  QTest::addColumn<QString>("name");
  QTest::addColumn<QStringList>("files");
  QTest::addColumn<QString>("status");
  QTest::addColumn<bool>("isError");
  const QStringList one{QStringLiteral("a.jpg")};
  QTest::newRow("one photo") << "one" << one << "Loaded 1 photo from \"one\"." << false;
  QTest::newRow("two photos") << "two" << QStringList{QStringLiteral("a.jpg"), QStringLiteral("b.jpg")}
                              << "Loaded 2 photos from \"two\"." << false;
  QTest::newRow("a name that looks like a place to fill in")
      << "%1 %2 %3" << one << "Loaded 1 photo from \"%1 %2 %3\"." << false;
  QTest::newRow("a damaged photo") << "x" << QStringList{QStringLiteral("%1 bad.jpg")}
                                   << "Could not open \"%1 bad.jpg\"." << true;
  QTest::newRow("no photo") << "x" << QStringList{QStringLiteral("README")}
                            << "No supported image files were found in this folder." << true;
}

void PhotoLibraryTest::tellsHowOpeningWent() {
  QFETCH(QString, name);
  QFETCH(QStringList, files);
  const PhotoFolder parent;
  const FileUrl folder = parent.addFolder(name);
  for (const QString& file : files) (void)parent.add(name + u'/' + file);
  m_platform.decoder.damaged = {QStringLiteral("%1 bad.jpg")};
  m_library->openFolder(folder);
  QTEST(m_library->statusMessage(), "status");
  QTEST(m_library->statusIsError(), "isError");
  QCOMPARE(m_library->folderURL(), folder);
  QCOMPARE(m_library->currentImage().isNull(), m_library->statusIsError());
}

void PhotoLibraryTest::replacesTheFolder() {
  const PhotoFolder folder(numberedNames(3));
  const PhotoFolder empty;
  m_library->openFolder(folder.url());
  m_library->openFolder(empty.url());
  QCOMPARE(m_library->folderURL(), empty.url());
  QCOMPARE(m_library->currentIndex(), -1);
  QCOMPARE(m_library->photoCount(), 0);
  QVERIFY(m_library->currentImage().isNull());

  m_library->openFolder(folder.url());
  (void)folder.add(QStringLiteral("9.jpg"));
  m_library->setSortOrder(SortOrder::nameDescending);
  m_library->openFolder(folder.url());
  QCOMPARE(namesOf(m_library->photos()).join(u' '), QStringLiteral("9.jpg 2.jpg 1.jpg 0.jpg"));

  m_library->openFolder(folder.url(QStringLiteral("missing")));
  QVERIFY(!m_library->folderURL());
  QCOMPARE(m_library->photoCount(), 0);
  QCOMPARE(m_library->currentIndex(), -1);
  QVERIFY(m_library->currentImage().isNull());
  QCOMPARE(m_library->statusMessage(), QStringLiteral("Could not open folder: No such file or directory"));
  QVERIFY(m_library->statusIsError());
}

void PhotoLibraryTest::holdsAccessToOneFolder() {
  const PhotoFolder parent;
  const FileUrl a = parent.addFolder(QStringLiteral("a"));
  const FileUrl b = parent.addFolder(QStringLiteral("b"));
  (void)parent.add(QStringLiteral("a/photo.jpg"));
  QStringList& log = m_platform.access.log;
  const auto took = [&log] { return std::exchange(log, {}).join(QStringLiteral(", ")); };
  m_library->openFolder(a);
  QCOMPARE(took(), QStringLiteral("start a"));
  m_library->openFolder(a);
  QCOMPARE(took(), QStringLiteral("stop a, start a"));
  m_library->openFolder(b);  // no photos, and yet open
  QCOMPARE(took(), QStringLiteral("stop a, start b"));
  m_library->openFolder(parent.url(QStringLiteral("missing")));
  QCOMPARE(took(), QStringLiteral("stop b, start missing, stop missing"));
  m_platform.access.grants = false;
  m_library->openFolder(a);
  QCOMPARE(m_library->photoCount(), 1);
  m_library->openFolder(parent.url(QStringLiteral("missing")));
  QCOMPARE(took(), QStringLiteral("start a, start missing"));
  m_platform.access.grants = true;
  m_library->openFolder(a);
  m_library.reset();
  QCOMPARE(took(), QStringLiteral("start a"));
}

void PhotoLibraryTest::opensWhatTheChooserAnswers() {
  const PhotoFolder folder(numberedNames(2));
  QSignalSpy changes(m_library.get(), &PhotoLibrary::objectWillChange);
  m_library->chooseFolder();
  QCOMPARE(changes.count(), 0);
  QCOMPARE(m_platform.chooser.asked,
           (QStringList{QStringLiteral("Choose a Photo Folder"), QStringLiteral("Choose Folder")}));
  m_platform.chooser.answer = folder.url();
  m_library->chooseFolder();
  QCOMPARE(m_library->folderURL(), folder.url());
}

void PhotoLibraryTest::opensAndSteps() {
  const PhotoFolder folder(numberedNames(3));
  m_platform.decoder.damaged = {QStringLiteral("1.jpg")};
  m_library->openFolder(folder.url());
  const auto isAt = [this](qint64 index, const QString& status, const QString& counter) {
    return m_library->currentIndex() == index && m_library->statusMessage() == status &&
           m_library->counterText() == counter && m_library->statusIsError() == m_library->currentImage().isNull();
  };
  m_library->openPhoto(2);
  QVERIFY(isAt(2, QStringLiteral("Showing \"2.jpg\"."), QStringLiteral("3 / 3")));
  QVERIFY(!m_library->canGoNext());
  const qsizetype decoded = m_platform.decoder.decoded.size();
  m_library->showNext();
  m_library->openPhoto(-1);
  m_library->openPhoto(3);
  QVERIFY(isAt(2, QStringLiteral("Showing \"2.jpg\"."), QStringLiteral("3 / 3")));
  QCOMPARE(m_platform.decoder.decoded.size(), decoded);
  m_library->showPrevious();
  QVERIFY(isAt(1, QStringLiteral("Could not open \"1.jpg\"."), QStringLiteral("2 / 3")));
  QVERIFY(m_library->statusIsError());
  m_library->showPrevious();
  QVERIFY(isAt(0, QStringLiteral("Showing \"0.jpg\"."), QStringLiteral("1 / 3")));
  m_library->showPrevious();
  QVERIFY(isAt(0, QStringLiteral("Showing \"0.jpg\"."), QStringLiteral("1 / 3")));
  QCOMPARE(FakeImageDecoder::nameOf(m_library->currentImage()), QStringLiteral("0.jpg"));
  m_library->openPhoto(0);  // again: read again
  QCOMPARE(m_platform.decoder.decoded.size(), decoded + 3);
}

void PhotoLibraryTest::sortingKeepsTheCurrentPhoto() {
  const PhotoFolder folder(numberedNames(5));
  m_library->openFolder(folder.url());
  m_library->openPhoto(1);
  const qsizetype decoded = m_platform.decoder.decoded.size();
  m_library->setSortOrder(SortOrder::nameDescending);
  QCOMPARE(m_library->currentIndex(), 3);
  QCOMPARE(m_library->currentPhoto()->displayName(), QStringLiteral("1.jpg"));
  QCOMPARE(m_library->statusMessage(), QStringLiteral("Showing \"1.jpg\"."));
  QCOMPARE(m_platform.decoder.decoded.size(), decoded);

  // The active order sorts again: dates that have changed since count.
  m_library->setSortOrder(SortOrder::dateNewest);
  folder.setDate(QStringLiteral("4.jpg"), 4'000'000'000);
  m_library->toggleSelection(2);
  m_library->setSortOrder(SortOrder::dateNewest);
  QCOMPARE(namesOf(m_library->photos()).first(), QStringLiteral("4.jpg"));
  QCOMPARE(m_library->currentPhoto()->displayName(), QStringLiteral("1.jpg"));
  QVERIFY(m_library->selectedIndices().empty());
}

void PhotoLibraryTest::equalDatesKeepTheOrderOfTheList() {
  const PhotoFolder folder(numberedNames(20));
  for (const QString& name : numberedNames(20)) folder.setDate(name, 1000);
  m_library->setSortOrder(SortOrder::dateNewest);
  m_library->openFolder(folder.url());
  QCOMPARE(namesOf(m_library->photos()), folder.listed());
  m_library->setSortOrder(SortOrder::nameDescending);
  const QStringList descending = namesOf(m_library->photos());
  m_library->setSortOrder(SortOrder::dateOldest);
  m_library->setSortOrder(SortOrder::dateNewest);
  QCOMPARE(namesOf(m_library->photos()), descending);
}

void PhotoLibraryTest::opensTheFolderOfAPicture() {
  const PhotoFolder folder(numberedNames(3) + QStringList{QStringLiteral("README")});
  QCOMPARE(m_library->openFolderOf(folder.url(QStringLiteral("README")), {photoItems(folder.url()), {}}), std::nullopt);
  QCOMPARE(m_library->openFolderOf(folder.url(QStringLiteral("7.jpg")), {photoItems(folder.url()), {}}), std::nullopt);
  QVERIFY(!m_library->folderURL());
  QVERIFY(m_platform.access.log.isEmpty());
  QCOMPARE(m_library->openFolderOf(folder.url(QStringLiteral("2.jpg")), {photoItems(folder.url()), {}}), 2);
  QCOMPARE(m_library->folderURL(), folder.url());
  QCOMPARE(m_library->currentIndex(), 2);
  QVERIFY(m_platform.decoder.decoded.isEmpty());
}

// Whatever is assigned, equal or not: one announcement, with all of the old state still there, then one change.
void PhotoLibraryTest::tellsBeforeEachAssignment() {
  const PhotoFolder folder(numberedNames(4));
  QStringList log;
  bool isWhole = true;
  const auto state = [this] {
    return std::tuple(m_library->folderURL(), m_library->photos(), m_library->currentIndex(), m_library->sortOrder(),
                      m_library->selectedIndices(), m_library->currentImage().cacheKey(), m_library->statusMessage(),
                      m_library->statusIsError());
  };
  auto last = state();
  connect(m_library.get(), &PhotoLibrary::objectWillChange, this, [&] {
    isWhole = isWhole && state() == last;
    log.append(QStringLiteral("will"));
  });
  const auto changed = [&](const char* name) {
    last = state();
    log.append(QString::fromLatin1(name));
  };
  connect(m_library.get(), &PhotoLibrary::folderURLChanged, this, [&] { changed("folder"); });
  connect(m_library.get(), &PhotoLibrary::photosReset, this, [&] { changed("photos"); });
  connect(m_library.get(), &PhotoLibrary::photosReordered, this, [&] { changed("order"); });
  connect(m_library.get(), &PhotoLibrary::photoRemoved, this, [&] { changed("removed"); });
  connect(m_library.get(), &PhotoLibrary::sortOrderChanged, this, [&] { changed("sortOrder"); });
  connect(m_library.get(), &PhotoLibrary::currentIndexChanged, this, [&] { changed("index"); });
  connect(m_library.get(), &PhotoLibrary::selectedIndicesChanged, this, [&] { changed("selection"); });
  connect(m_library.get(), &PhotoLibrary::currentImageChanged, this, [&] { changed("image"); });
  connect(m_library.get(), &PhotoLibrary::statusMessageChanged, this, [&] { changed("message"); });
  connect(m_library.get(), &PhotoLibrary::statusIsErrorChanged, this, [&] { changed("error"); });
  const auto publishes = [&](const char* expected) {
    QStringList pairs;
    for (const QString& name : QString::fromLatin1(expected).split(u' ')) pairs << QStringLiteral("will") << name;
    return isWhole && std::exchange(log, {}) == pairs;
  };

  for (int time = 0; time < 2; ++time) {
    m_library->openFolder(folder.url());
    QVERIFY(publishes("selection folder photos index order index selection image message error"));
  }
  for (int time = 0; time < 2; ++time) {
    m_library->openPhoto(2);
    QVERIFY(publishes("index image message error"));
  }
  for (int time = 0; time < 2; ++time) {
    m_library->setSortOrder(SortOrder::nameDescending);
    QVERIFY(publishes("sortOrder order index selection"));
  }
  m_library->openPhoto(3);
  log.clear();
  m_library->deleteCurrentPhoto();
  QVERIFY(publishes("removed index image message error"));
  m_library->toggleSelection(0);
  m_library->deleteSelectedPhotos();
  QVERIFY(publishes("selection removed selection index image message error message error"));
  for (int time = 0; time < 2; ++time) {
    m_library->openFolder(folder.url(QStringLiteral("missing")));
    QVERIFY(publishes("selection folder photos index image message error"));
  }
}

QTEST_GUILESS_MAIN(PhotoLibraryTest)
#include "PhotoLibraryTest.moc"
