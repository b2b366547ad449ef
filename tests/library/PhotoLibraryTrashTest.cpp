#include <QTest>

#include "FakePlatform.h"
#include "PhotoFolder.h"

using namespace lumagrid;

class PhotoLibraryTrashTest : public QObject {
  Q_OBJECT

 private:
  // Opens photos "0.jpg", "1.jpg", … with one of them current.
  void open(int count, qint64 current) {
    m_folder = std::make_unique<PhotoFolder>(numberedNames(count));
    m_library->openFolder(m_folder->url());
    m_library->openPhoto(current);
  }
  [[nodiscard]] QString remaining() const {
    return namesOf(m_library->photos()).join(u' ').remove(QStringLiteral(".jpg"));
  }

  std::unique_ptr<PhotoFolder> m_folder;
  std::unique_ptr<FakePlatform> m_platform;
  std::unique_ptr<PhotoLibrary> m_library;

 private Q_SLOTS:
  void init() {
    m_platform = std::make_unique<FakePlatform>();
    m_library = std::make_unique<PhotoLibrary>(m_platform->services());
  }

  void moves_data() {
    QTest::addColumn<int>("count");
    QTest::addColumn<qint64>("current");
    QTest::addColumn<QString>("selected");  // empty: the current photo is moved
    QTest::addColumn<QString>("stuck");
    QTest::addColumn<QString>("remaining");
    QTest::addColumn<qint64>("newCurrent");
    QTest::addColumn<QString>("image");
    QTest::addColumn<QString>("status");
    const auto row = [](const char* name, int count, int current, const char* selected, const char* stuck,
                        const char* remaining, int newCurrent, const char* image, const char* status) {
      QTest::newRow(name) << count << qint64{current} << QString::fromLatin1(selected) << QString::fromLatin1(stuck)
                          << QString::fromLatin1(remaining) << qint64{newCurrent} << QString::fromLatin1(image)
                          << QString::fromLatin1(status);
    };
    row("the next photo takes its place", 5, 2, "", "", "0 1 3 4", 2, "3.jpg", "Moved \"2.jpg\" to the Trash.");
    row("after the last photo, the new last", 5, 4, "", "", "0 1 2 3", 3, "3.jpg", "Moved \"4.jpg\" to the Trash.");
    row("the only photo", 1, 0, "", "", "", -1, "", "Moved \"0.jpg\" to the Trash.");
    row("the move fails", 3, 1, "", "1", "0 1 2", 1, "1.jpg", "Delete failed: It sticks");
    row("three of ten", 10, 0, "1 4 7", "", "0 2 3 5 6 8 9", 0, "0.jpg", "Moved 3 photos to Trash.");
    row("one", 3, 0, "2", "", "0 1", 0, "0.jpg", "Moved 1 photo to Trash.");
    row("each move fails", 3, 0, "1 2", "1 2", "0 1 2", 0, "0.jpg", "Moved 0 photos to Trash. 2 failed.");
    row("some fail, and stay in place", 5, 0, "1 2 3", "2", "0 2 4", 0, "0.jpg", "Moved 2 photos to Trash. 1 failed.");
    row("before the current photo: the number stays, and the picture", 5, 3, "0", "", "1 2 3 4", 3, "3.jpg",
        "Moved 1 photo to Trash.");
    row("the current photo, which ends the list", 5, 4, "3 4", "", "0 1 2", 2, "2.jpg", "Moved 2 photos to Trash.");
    row("all", 2, 1, "0 1", "", "", -1, "", "Moved 2 photos to Trash.");
  }

  void moves() {
    QFETCH(int, count);
    QFETCH(qint64, current);
    QFETCH(QString, selected);
    QFETCH(QString, stuck);
    open(count, current);
    for (const QString& name : stuck.split(u' ')) m_platform->trash.stuck.insert(name + QStringLiteral(".jpg"));
    if (selected.isEmpty()) {
      m_library->deleteCurrentPhoto();
    } else {
      for (const QString& index : selected.split(u' ')) m_library->toggleSelection(index.toLongLong());
      m_library->deleteSelectedPhotos();
      QVERIFY(m_platform->alert.asked.isEmpty());
    }
    QTEST(remaining(), "remaining");
    QTEST(m_library->currentIndex(), "newCurrent");
    QTEST(FakeImageDecoder::nameOf(m_library->currentImage()), "image");
    QTEST(m_library->statusMessage(), "status");
    QCOMPARE(m_library->statusIsError(), !stuck.isEmpty());
    QCOMPARE(m_platform->trash.moved.size(), count - m_library->photoCount());
    QVERIFY(m_library->selectedIndices().empty());
    QCOMPARE(m_library->folderURL(), m_folder->url());
    QCOMPARE(m_library->currentImage().isNull(), m_library->photoCount() == 0);
  }

  void asksBeforeTheMove() {
    m_library->deleteCurrentPhoto();
    QVERIFY(m_platform->alert.asked.isEmpty());
    open(3, 1);
    m_library->deleteSelectedPhotos();  // nothing is selected
    m_platform->alert.answer = 1;
    m_library->deleteCurrentPhoto();
    QCOMPARE(m_platform->alert.asked.takeFirst(),
             (QStringList{QStringLiteral("Move this photo to Trash?"),
                          QStringLiteral("\"1.jpg\" will be moved to the Trash."), QStringLiteral("Move to Trash"),
                          QStringLiteral("Cancel")}));
    // The alert's event loop still runs timers and results.
    m_platform->alert.answer = 0;
    m_platform->alert.whileOpen = [this] { m_library->showNext(); };
    m_library->deleteCurrentPhoto();
    QCOMPARE(m_platform->alert.asked.size(), 1);
    QVERIFY(m_platform->trash.moved.isEmpty());
    QCOMPARE(remaining(), QStringLiteral("0 1 2"));
    QCOMPARE(m_library->statusMessage(), QStringLiteral("Showing \"2.jpg\"."));
  }
};

QTEST_GUILESS_MAIN(PhotoLibraryTrashTest)
#include "PhotoLibraryTrashTest.moc"
