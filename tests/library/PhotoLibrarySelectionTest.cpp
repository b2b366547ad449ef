#include <set>

#include "FakePlatform.h"
#include "PhotoFolder.h"
#include "Table.h"

using namespace lumagrid;

// Steps, and what they leave selected and current.
using Selection = std::tuple<const char*, QByteArray, int>;
// Steps, and what they move in which order, the current photo, its picture and the status that they leave.
using Outcome = std::tuple<QByteArray, QByteArray, int, QByteArray, QByteArray>;

// What the operations on photos leave of the selection, of the list and of what shows. Each starts from ten photos,
// "0.jpg" to "9.jpg".
class PhotoLibrarySelectionTest : public QObject {
  Q_OBJECT

 private:
  // Each step is a letter and, for some, an index.
  void take(const QByteArray& steps) {
    const QHash<char, std::function<void(int)>> actions = {
        {'o', [this](int index) { m_library->openPhoto(index); }},
        {'t', [this](int index) { m_library->toggleSelection(index); }},
        {'e', [this](int index) { m_library->extendSelection(index); }},
        {'s', [this](int) { m_library->setSortOrder(m_library->sortOrder()); }},
        {'n', [this](int) { m_library->showNext(); }},
        {'p', [this](int) { m_library->showPrevious(); }},
        {'d', [this](int) { m_library->deleteCurrentPhoto(); }},
        {'x', [this](int) { m_library->deleteSelectedPhotos(); }},
        {'m', [this](int) { m_library->openFolder(m_folder.url(QStringLiteral("missing"))); }},
        {'k', [this](int index) { m_platform->trash.stuck.insert(numberedNames(10).at(index)); }},
        {'b', [this](int index) { m_platform->decoder.damaged.insert(numberedNames(10).at(index)); }},
    };
    for (const QByteArray& step : steps.split(' ')) actions[step.front()](step.mid(1).toInt());
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
    addRows<Selection>({
        {"toggled twice, it is not, and stays the anchor", {"o5 t3 t3 e5", "3 4 5", 5}},
        {"without an anchor from the current photo", {"o6 e2", "2 3 4 5 6", 6}},
        {"a second range starts where the first ended", {"o0 t2 e5 t2 e8", "3 4 5 6 7 8", 0}},
        {"a range only adds, downwards too", {"o0 t0 t9 t5 e3", "0 3 4 5 9", 0}},
        {"outside of the list nothing changes", {"o5 t3 t-1 t10 e-1 e10 e4", "3 4", 5}},
        {"opening a photo keeps the selection and the anchor", {"t2 o6 n p e3", "2 3", 6}},
        {"the active order again clears them", {"o5 t2 s e6", "5 6", 5}},
        {"deleting the current photo keeps them, by index", {"o5 t8 t2 d e3", "2 3 8", 5}},
        {"deleting the selected photos clears them", {"o5 t2 t3 x e6", "5 6", 5}},
        {"a folder that cannot be opened clears them", {"o5 t2 m n p", "", -1}},
    });
  }

  void selects() {
    const auto [steps, selection, current] = fetchedRow<Selection>();
    take(steps);
    const auto& indices = m_library->selectedIndices();
    QByteArrayList selected;
    for (const auto index : std::set(indices.begin(), indices.end())) {
      selected.append(QByteArray::number(qint64{index}));
    }
    QCOMPARE(selected.join(' '), selection);
    QCOMPARE(m_library->currentIndex(), current);
  }

  void movesAndShows_data() {
    addRows<Outcome>({
        {"the next photo takes its place", {"o2 d", "2", 2, "3.jpg", "Moved \"2.jpg\" to the Trash."}},
        {"after the last photo, the new last", {"o9 d", "9", 8, "8.jpg", "Moved \"9.jpg\" to the Trash."}},
        {"the only photo", {"t0 e8 x d", "8 7 6 5 4 3 2 1 0 9", -1, "", "Moved \"9.jpg\" to the Trash."}},
        {"the move fails", {"o1 k1 d", "", 1, "1.jpg", "Delete failed: It sticks"}},
        {"some stay", {"o0 k2 t1 t2 t3 x", "3 1", 0, "0.jpg", "Moved 2 photos to Trash. 1 failed."}},
        {"before the current photo: number and picture stay", {"o3 t0 x", "0", 3, "3.jpg", "Moved 1 photo to Trash."}},
        {"the current photo, which ends the list", {"o9 t8 t9 x", "9 8", 7, "7.jpg", "Moved 2 photos to Trash."}},
        {"all", {"t0 e9 x d x", "9 8 7 6 5 4 3 2 1 0", -1, "", "Moved 10 photos to Trash."}},
        {"there is nothing after the last", {"o8 n n n", "", 9, "9.jpg", "Showing \"9.jpg\"."}},
        {"nor before the first", {"o1 p p p", "", 0, "0.jpg", "Showing \"0.jpg\"."}},
        {"nor outside", {"o1 o-1 o10", "", 1, "1.jpg", "Showing \"1.jpg\"."}},
        {"a damaged photo", {"b3 o3 n p", "", 3, "", "Could not open \"3.jpg\"."}},
    });
  }

  void movesAndShows() {
    const auto [steps, moved, current, image, status] = fetchedRow<Outcome>();
    take(steps);
    QStringList remaining = numberedNames(10);
    for (const QString& name : m_platform->trash.moved) remaining.removeOne(name);
    QCOMPARE(namesOf(m_library->photos()), remaining);
    QCOMPARE(m_platform->trash.moved.join(u' ').remove(QStringLiteral(".jpg")).toLatin1(), moved);
    QCOMPARE(m_library->currentIndex(), current);
    QCOMPARE(FakeImageDecoder::nameOf(m_library->currentImage()).toLatin1(), image);
    QCOMPARE(m_library->statusMessage().toLatin1(), status);
    QCOMPARE(m_library->statusIsError(), steps.contains('k') || steps.contains('b'));
    QVERIFY(m_library->selectedIndices().empty());
  }

  void asksBeforeTheMove() {
    take("o1 x");  // nothing is selected
    m_platform->alert.answer = AlertRole::cancel;
    m_library->deleteCurrentPhoto();
    QCOMPARE(m_platform->alert.asked.takeFirst().join(u'|'),
             QStringLiteral("Move this photo to Trash?|\"1.jpg\" will be moved to the Trash.|Move to Trash|Cancel"));
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
  }
};

QTEST_GUILESS_MAIN(PhotoLibrarySelectionTest)
#include "PhotoLibrarySelectionTest.moc"
