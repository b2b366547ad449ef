#include "PhotoLibrary.h"

#include <QSignalSpy>
#include <QTest>

#include "FakePlatform.h"
#include "PhotoFolder.h"

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

  void aNewLibraryIsEmpty() {
    m_library->setSortOrder(SortOrder::dateNewest);
    m_library->openPhoto(0);
    m_library->showNext();
    m_library->showPrevious();
    QCOMPARE(m_library->currentIndex(), -1);
    QCOMPARE(m_library->counterText(), QStringLiteral("0 / 0"));
    QCOMPARE(m_library->statusMessage(), QStringLiteral("Choose a folder to start browsing photos."));
    QVERIFY(!m_library->statusIsError());
  }

  // No order of listing is first in all the orders of sorting.
  void theFirstListedPhotoIsCurrentInEachOrder() {
    const PhotoFolder folder(numberedNames(20));
    for (int number = 0; number < 20; ++number) folder.setDate(numberedNames(20).at(number), number);
    const QString first = folder.listed().first();
    for (const SortOrder order : kAllSortOrders) {
      m_library->setSortOrder(order);
      m_platform.decoder.decoded.clear();
      m_library->openFolder(folder.url());
      QStringList sorted = numberedNames(20);
      if (order == SortOrder::nameDescending || order == SortOrder::dateNewest)
        std::reverse(sorted.begin(), sorted.end());
      QCOMPARE(namesOf(m_library->photos()), sorted);
      QCOMPARE(m_library->currentIndex(), sorted.indexOf(first));
      QCOMPARE(m_library->counterText(), QStringLiteral("%1 / 20").arg(sorted.indexOf(first) + 1));
      QCOMPARE(m_platform.decoder.decoded, QStringList{first});
    }
  }

  void tellsHowOpeningWent_data() {
    QTest::addColumn<QString>("name");
    QTest::addColumn<QString>("files");
    QTest::addColumn<QString>("status");
    QTest::addColumn<bool>("isError");
    const auto row = [](const char* sentence, const char* name, const char* files, const char* status, bool isError) {
      QTest::newRow(sentence) << QString::fromLatin1(name) << QString::fromLatin1(files) << QString::fromLatin1(status)
                              << isError;
    };
    row("two photos", "two", "a.jpg b.jpg", "Loaded 2 photos from \"two\".", false);
    row("a name that looks like a place to fill in", "%1 %2 %3", "a.jpg", "Loaded 1 photo from \"%1 %2 %3\".", false);
    row("a damaged photo", "x", "%1bad.jpg", "Could not open \"%1bad.jpg\".", true);
    row("no photo", "x", "README", "No supported image files were found in this folder.", true);
    row("no folder", "x/missing", "", "Could not open folder: No such file or directory", true);
  }

  // After a folder with photos, nothing of which stays.
  void tellsHowOpeningWent() {
    QFETCH(QString, name);
    QFETCH(QString, files);
    const PhotoFolder before(numberedNames(3));
    m_library->openFolder(before.url());
    const PhotoFolder parent;
    if (!files.isEmpty()) (void)parent.addFolder(name);
    for (const QString& file : files.split(u' ', Qt::SkipEmptyParts)) (void)parent.add(name + u'/' + file);
    m_platform.decoder.damaged = {QStringLiteral("%1bad.jpg")};
    m_library->openFolder(parent.url(name));
    QTEST(m_library->statusMessage(), "status");
    QTEST(m_library->statusIsError(), "isError");
    QCOMPARE(m_library->folderURL(), files.isEmpty() ? std::nullopt : std::optional(parent.url(name)));
    QCOMPARE(m_library->photoCount(), files.count(QStringLiteral(".jpg")));
    QCOMPARE(m_library->currentIndex() >= 0, m_library->photoCount() > 0);
    QCOMPARE(m_library->currentImage().isNull(), m_library->statusIsError());
  }

  void holdsAccessToOneFolder() {
    const PhotoFolder parent;
    const FileUrl a = parent.addFolder(QStringLiteral("a"));
    const FileUrl b = parent.addFolder(QStringLiteral("b"));
    const FileUrl missing = parent.url(QStringLiteral("missing"));
    const auto log = [this] { return std::exchange(m_platform.access.log, {}).join(QStringLiteral(", ")); };
    (void)parent.add(QStringLiteral("a/photo.jpg"));
    m_library->openFolder(a);
    m_library->openFolder(a);
    m_library->openFolder(b);  // no photos, and yet open
    QCOMPARE(log(), QStringLiteral("start a, stop a, start a, stop a, start b"));
    m_library->openFolder(missing);
    QCOMPARE(log(), QStringLiteral("stop b, start missing, stop missing"));
    m_platform.access.grants = false;
    m_library->openFolder(a);
    QCOMPARE(m_library->photoCount(), 1);
    m_library->openFolder(missing);
    QCOMPARE(log(), QStringLiteral("start a, start missing"));
  }

  void opensWhatTheChooserAnswers() {
    const PhotoFolder folder(numberedNames(2));
    const QSignalSpy changes(m_library.get(), &PhotoLibrary::objectWillChange);
    m_library->chooseFolder();
    QCOMPARE(changes.count(), 0);
    QCOMPARE(m_platform.chooser.asked,
             (QStringList{QStringLiteral("Choose a Photo Folder"), QStringLiteral("Choose Folder")}));
    m_platform.chooser.answer = folder.url();
    m_library->chooseFolder();
    QCOMPARE(m_library->folderURL(), folder.url());
  }

  void opensAndSteps() {
    const PhotoFolder folder(numberedNames(3));
    m_platform.decoder.damaged = {QStringLiteral("1.jpg")};
    m_library->openFolder(folder.url());
    m_platform.decoder.decoded.clear();
    const auto isAt = [this](qint64 index, const char* status, int decoded) {
      return m_library->currentIndex() == index && m_library->statusMessage() == QLatin1String(status) &&
             m_library->counterText() == QStringLiteral("%1 / 3").arg(index + 1) &&
             m_library->canGoNext() == (index < 2) && m_library->statusIsError() == (index == 1) &&
             m_library->statusIsError() == m_library->currentImage().isNull() &&
             m_platform.decoder.decoded.size() == decoded;
    };
    m_library->openPhoto(2);
    QVERIFY(isAt(2, "Showing \"2.jpg\".", 1));
    m_library->showNext();
    m_library->openPhoto(-1);
    m_library->openPhoto(3);
    QVERIFY(isAt(2, "Showing \"2.jpg\".", 1));
    m_library->showPrevious();
    QVERIFY(isAt(1, "Could not open \"1.jpg\".", 2));
    m_library->showPrevious();
    m_library->showPrevious();
    QVERIFY(isAt(0, "Showing \"0.jpg\".", 3));
    QCOMPARE(FakeImageDecoder::nameOf(m_library->currentImage()), QStringLiteral("0.jpg"));
    m_library->openPhoto(0);  // again: read again
    QVERIFY(isAt(0, "Showing \"0.jpg\".", 4));
    m_library->showNext();
    QVERIFY(isAt(1, "Could not open \"1.jpg\".", 5));
  }

  void sortingKeepsTheCurrentPhoto() {
    const PhotoFolder folder(numberedNames(5));
    m_library->openFolder(folder.url());
    m_library->openPhoto(1);
    m_platform.decoder.decoded.clear();
    m_library->setSortOrder(SortOrder::nameDescending);
    QCOMPARE(m_library->currentIndex(), 3);
    // The active order sorts again: dates that have changed since count.
    m_library->setSortOrder(SortOrder::dateNewest);
    folder.setDate(QStringLiteral("4.jpg"), 4'000'000'000);
    m_library->setSortOrder(SortOrder::dateNewest);
    QCOMPARE(namesOf(m_library->photos()).first(), QStringLiteral("4.jpg"));
    QCOMPARE(m_library->currentPhoto()->displayName(), QStringLiteral("1.jpg"));
    QCOMPARE(m_library->statusMessage(), QStringLiteral("Showing \"1.jpg\"."));
    QVERIFY(m_platform.decoder.decoded.isEmpty());
  }

  void opensTheFolderOfAPicture() {
    const PhotoFolder folder(numberedNames(3) + QStringList{QStringLiteral("README")});
    const auto open = [&](const char* name) {
      return m_library->openFolderOf(folder.url(QLatin1String(name)), {photoItems(folder.url()), {}});
    };
    QCOMPARE(open("README"), std::nullopt);
    QCOMPARE(open("7.jpg"), std::nullopt);
    QVERIFY(!m_library->folderURL());
    QVERIFY(m_platform.access.log.isEmpty());
    QCOMPARE(open("2.jpg"), 2);
    QCOMPARE(m_library->folderURL(), folder.url());
    QCOMPARE(m_library->currentIndex(), 2);
    QVERIFY(m_platform.decoder.decoded.isEmpty());
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
    const auto publishes = [&](const char* expected, const std::function<void()>& action) {
      log.clear();
      action();
      return isWhole && log.join(' ') == expected;
    };

    for (int time = 0; time < 2; ++time) {
      QVERIFY(publishes("selection folder photos index order index selection image message error",
                        [&] { m_library->openFolder(folder.url()); }));
      QVERIFY(
          publishes("sortOrder order index selection", [&] { m_library->setSortOrder(SortOrder::nameDescending); }));
      QVERIFY(publishes("index image message error", [&] { m_library->openPhoto(3); }));
    }
    QVERIFY(publishes("removed index image message error", [&] { m_library->deleteCurrentPhoto(); }));
    m_library->toggleSelection(2);
    QVERIFY(publishes("removed selection index image message error message error",
                      [&] { m_library->deleteSelectedPhotos(); }));
    for (int time = 0; time < 2; ++time) {
      QVERIFY(publishes("selection folder photos index image message error",
                        [&] { m_library->openFolder(folder.url(QStringLiteral("missing"))); }));
    }
  }
};

QTEST_GUILESS_MAIN(PhotoLibraryTest)
#include "PhotoLibraryTest.moc"
