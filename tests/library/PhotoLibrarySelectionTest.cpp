#include <QTest>

#include "FakePlatform.h"
#include "PhotoFolder.h"

using namespace lumagrid;

// What the operations on photos leave of the selection and of the list. Each starts from ten photos, "0.jpg" to
// "9.jpg".
class PhotoLibrarySelectionTest : public QObject {
  Q_OBJECT

 private:
  // Each step is a letter and, for some, an index.
  void take(const QString& steps) {
    const QHash<QChar, std::function<void(int)>> actions = {
        {u'o', [this](int index) { m_library->openPhoto(index); }},
        {u't', [this](int index) { m_library->toggleSelection(index); }},
        {u'e', [this](int index) { m_library->extendSelection(index); }},
        {u's', [this](int) { m_library->setSortOrder(m_library->sortOrder()); }},
        {u'n', [this](int) { m_library->showNext(); }},
        {u'p', [this](int) { m_library->showPrevious(); }},
        {u'd', [this](int) { m_library->deleteCurrentPhoto(); }},
        {u'x', [this](int) { m_library->deleteSelectedPhotos(); }},
        {u'm', [this](int) { m_library->openFolder(m_folder.url(QStringLiteral("missing"))); }},
        {u'k', [this](int index) { m_platform->trash.stuck.insert(numberedNames(10).at(index)); }},
    };
    for (const QString& step : steps.split(u' ')) actions[step.front()](step.mid(1).toInt());
  }

  const PhotoFolder m_folder{numberedNames(10)};
  std::unique_ptr<FakePlatform> m_platform;
  std::unique_ptr<PhotoLibrary> m_library;

 private Q_SLOTS:
  void init() {
    m_platform = std::make_unique<FakePlatform>();
    m_library = std::make_unique<PhotoLibrary>(m_platform->services());
    m_library->openFolder(m_folder.url());
  }

  void selects_data() {
    QTest::addColumn<QString>("steps");
    QTest::addColumn<QString>("selected");
    QTest::addColumn<qint64>("current");
    const auto row = [](const char* name, const char* steps, const char* selected, int current) {
      QTest::newRow(name) << QString::fromLatin1(steps) << QString::fromLatin1(selected) << qint64{current};
    };
    row("toggled twice, it is not, and stays the anchor", "o5 t3 t3 e5", "3 4 5", 5);
    row("without an anchor from the current photo", "o6 e2", "2 3 4 5 6", 6);
    row("a second range starts where the first ended", "o0 t2 e5 t2 e8", "3 4 5 6 7 8", 0);
    row("a range only adds, downwards too", "o0 t0 t9 t5 e3", "0 3 4 5 9", 0);
    row("outside of the list nothing changes", "o5 t3 t-1 t10 e-1 e10 e4", "3 4", 5);
    row("opening a photo keeps the selection and the anchor", "t2 o6 n p e3", "2 3", 6);
    row("the active order again clears them", "o5 t2 s e6", "5 6", 5);
    row("deleting the current photo keeps them, by index", "o5 t8 t2 d e3", "2 3 8", 5);
    row("deleting the selected photos clears them", "o5 t2 t3 x e6", "5 6", 5);
    row("a folder that cannot be opened clears them", "o5 t2 m", "", -1);
  }

  void selects() {
    QFETCH(QString, steps);
    take(steps);
    QStringList selected;
    for (qint64 index = -1; index <= 10; ++index) {
      if (m_library->selectedIndices().contains(index)) selected.append(QString::number(index));
    }
    QTEST(selected.join(u' '), "selected");
    QTEST(m_library->currentIndex(), "current");
  }

  void moves_data() {
    QTest::addColumn<QString>("steps");
    QTest::addColumn<QString>("moved");  // in this order
    QTest::addColumn<qint64>("current");
    QTest::addColumn<QString>("image");
    QTest::addColumn<QString>("status");
    const auto row = [](const char* name, const char* steps, const char* moved, int current, const char* image,
                        const char* status) {
      QTest::newRow(name) << QString::fromLatin1(steps) << QString::fromLatin1(moved) << qint64{current}
                          << QString::fromLatin1(image) << QString::fromLatin1(status);
    };
    row("the next photo takes its place", "o2 d", "2", 2, "3.jpg", "Moved \"2.jpg\" to the Trash.");
    row("after the last photo, the new last", "o9 d", "9", 8, "8.jpg", "Moved \"9.jpg\" to the Trash.");
    row("the only photo", "t0 e8 x d", "8 7 6 5 4 3 2 1 0 9", -1, "", "Moved \"9.jpg\" to the Trash.");
    row("the move fails", "o1 k1 d", "", 1, "1.jpg", "Delete failed: It sticks");
    row("some fail, and stay in place", "o0 k2 t1 t2 t3 x", "3 1", 0, "0.jpg", "Moved 2 photos to Trash. 1 failed.");
    row("before the current photo: the number stays, and the picture", "o3 t0 x", "0", 3, "3.jpg",
        "Moved 1 photo to Trash.");
    row("the current photo, which ends the list", "o9 t8 t9 x", "9 8", 7, "7.jpg", "Moved 2 photos to Trash.");
    row("all", "t0 e9 x d x", "9 8 7 6 5 4 3 2 1 0", -1, "", "Moved 10 photos to Trash.");
  }

  void moves() {
    QFETCH(QString, steps);
    take(steps);
    QStringList remaining = numberedNames(10);
    for (const QString& name : m_platform->trash.moved) remaining.removeOne(name);
    QCOMPARE(namesOf(m_library->photos()), remaining);
    QTEST(m_platform->trash.moved.join(u' ').remove(QStringLiteral(".jpg")), "moved");
    QTEST(m_library->currentIndex(), "current");
    QTEST(FakeImageDecoder::nameOf(m_library->currentImage()), "image");
    QTEST(m_library->statusMessage(), "status");
    QCOMPARE(m_library->statusIsError(), steps.contains(u'k'));
    QVERIFY(m_library->selectedIndices().empty());
  }

  void asksBeforeTheMove() {
    take(QStringLiteral("o1 x"));  // nothing is selected
    m_platform->alert.answer = AlertRole::cancel;
    m_library->deleteCurrentPhoto();
    QCOMPARE(m_platform->alert.asked.takeFirst(),
             (QStringList{QStringLiteral("Move this photo to Trash?"),
                          QStringLiteral("\"1.jpg\" will be moved to the Trash."), QStringLiteral("Move to Trash"),
                          QStringLiteral("Cancel")}));
    // The alert's event loop still runs timers and results.
    m_platform->alert.answer = AlertRole::accept;
    m_platform->alert.whileOpen = [this] { m_library->showNext(); };
    m_library->deleteCurrentPhoto();
    QCOMPARE(m_platform->alert.asked.size(), 1);
    QCOMPARE(m_library->statusMessage(), QStringLiteral("Delete failed: It is not the current photo any more"));
    QVERIFY(m_library->statusIsError());
    // … and other programs.
    m_platform->alert.whileOpen = [this] { (void)m_folder.add(QStringLiteral("2.jpg"), "another"); };
    m_library->deleteCurrentPhoto();
    QCOMPARE(m_library->statusMessage(), QStringLiteral("Delete failed: It is another"));
    QVERIFY(m_platform->trash.moved.isEmpty());
    QCOMPARE(m_library->counterText(), QStringLiteral("3 / 10"));
  }
};

QTEST_GUILESS_MAIN(PhotoLibrarySelectionTest)
#include "PhotoLibrarySelectionTest.moc"
