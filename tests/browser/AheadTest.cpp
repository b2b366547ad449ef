#include <QScopeGuard>
#include <QSemaphore>
#include <QTest>
#include <mutex>
#include <thread>

#include "FakePlatform.h"
#include "ImageCache.h"
#include "PhotoFolder.h"
#include "PhotoPyramid.h"
#include "PhotosAhead.h"
#include "PictureStore.h"
#include "ThumbnailStore.h"
#include "ThumbnailsAhead.h"
#include "WorkerPool.h"

using namespace lumagrid;

namespace {

// Decodes when the test lets it; thread-safe. The pictures take memory only where they are written.
struct GatedDecoder : ImageDecoder {
  QSize size{3, 2};
  QSemaphore gate;

  [[nodiscard]] QByteArrayList begun() const {
    const std::scoped_lock lock(m_mutex);
    return m_begun;
  }
  DecodedImage decode(const FileUrl& file) override { return decoded(file, "", size); }
  DecodedImage decodeInBackground(const FileUrl& file) override { return decoded(file, "~", size); }
  DecodedImage decodeBounded(const FileUrl& file, std::int64_t bound) override {
    return decoded(file, "#", {int(bound), int(bound)});
  }

 private:
  DecodedImage decoded(const FileUrl& file, const QByteArray& kind, QSize itsSize) {
    {
      const std::scoped_lock lock(m_mutex);
      m_begun.append(kind + file.displayName().toUtf8());
    }
    gate.acquire();
    return {QImage(itsSize, QImage::Format_RGBX8888), ImageError::none};
  }

  mutable std::mutex m_mutex;
  QByteArrayList m_begun;
};

}  // namespace

// What is made before anybody asks for it.
class AheadTest : public QObject {
  Q_OBJECT

 private Q_SLOTS:
  void init() { m_folder = std::make_unique<PhotoFolder>(numberedNames(80)); }

  void picturesArePreparedOnce() {
    GatedDecoder decoder;
    decoder.gate.release(100);
    PictureStore store(decoder);
    std::atomic<int> ready = 0;
    const auto prepare = [&](std::initializer_list<int> numbers) {
      ready = 0;
      return store.prepare(files(numbers), [&](const FileUrl&, const QImage& picture) { ready += !picture.isNull(); });
    };
    QCOMPARE(prepare({1, 2, 3}), std::size_t{3});
    QTRY_COMPARE(ready.load(), 3);
    QCOMPARE(sorted(decoder.begun()), QByteArrayList({"~1.jpg", "~2.jpg", "~3.jpg"}));
    for (const int number : {1, 2, 3}) QVERIFY(!store.decode(file(number)).pixels.isNull());
    (void)prepare({3, 4});
    QTRY_COMPARE(ready.load(), 2);
    QCOMPARE(decoder.begun().mid(3), QByteArrayList{"~4.jpg"});
    m_folder->setDate(QStringLiteral("4.jpg"), 1);
    (void)store.decode(file(4));
    QCOMPARE(decoder.begun().mid(4), QByteArrayList{"4.jpg"});
  }

  void picturesAskedForGoFirst() {
    GatedDecoder decoder;
    PictureStore store(decoder);
    const auto nothing = [](const FileUrl&, const QImage&) {};
    std::thread asking([&] { (void)store.decode(file(0)); });
    QTRY_COMPARE(decoder.begun(), QByteArrayList{"0.jpg"});
    (void)store.prepare(files({1, 2, 3, 4, 5, 6, 7, 8}), nothing);
    QTest::qWait(20);
    QCOMPARE(decoder.begun().size(), 1);  // nothing else while somebody waits
    decoder.gate.release();
    asking.join();
    const int atOnce = std::min(coreCount(), 8);
    QTRY_COMPARE(decoder.begun().size(), 1 + atOnce);
    // One that is being decoded is waited for; what has not begun is dropped.
    (void)store.prepare({}, nothing);
    std::thread waiting([&] { (void)store.decode(file(1)); });
    QTest::qWait(50);
    decoder.gate.release(100);
    waiting.join();
    QTest::qWait(20);
    QCOMPARE(decoder.begun().size(), 1 + atOnce);
    // So is what waits for a thread.
    QSemaphore busy;
    const int threads = workerPool().maxThreadCount();
    for (int thread = 0; thread < threads; ++thread) startWork([&] { busy.acquire(); }, kUrgentWork);
    (void)store.prepare(files({70}), nothing);
    (void)store.prepare({}, nothing);
    busy.release(threads);
    QVERIFY(workerPool().waitForDone(5000));
    QCOMPARE(decoder.begun().size(), 1 + atOnce);
  }

  void asManyAreKeptAsFit() {
    GatedDecoder decoder;
    decoder.gate.release(100);
    decoder.size = QSize(6000, int(imageCache().budget() / 7 * 2 / 6000 / 4));  // three and a half
    PictureStore store(decoder);
    QImage shown = store.decode(file(0)).pixels;
    std::atomic<int> ready = 0;
    const auto prepare = [&](std::initializer_list<int> numbers) {
      ready = 0;
      return store.prepare(files(numbers), [&](const FileUrl&, const QImage&) { ++ready; });
    };
    // Forth: what was left and what is shown stay, what lies further off goes.
    QCOMPARE(prepare({1, 2, 3}), std::size_t{2});
    QTRY_COMPARE(ready.load(), 2);
    shown = store.decode(file(1)).pixels;
    (void)prepare({2, 0, 3});
    QTRY_COMPARE(ready.load(), 2);
    QCOMPARE(decoder.begun().size(), 3);
    shown = store.decode(file(2)).pixels;
    (void)prepare({3, 1, 4});
    QTRY_COMPARE(ready.load(), 2);
    QCOMPARE(decoder.begun().mid(3), QByteArrayList{"~3.jpg"});
    (void)store.decode(file(0));
    QCOMPARE(decoder.begun().mid(4), QByteArrayList{"0.jpg"});
    QCOMPARE(store.decode(file(2)).pixels.cacheKey(), shown.cacheKey());  // it cannot go
  }

  void stepsAreLookedAheadOf() {
    FakePlatform platform;
    FakeImageDecoder& decoder = platform.decoder;
    PhotoLibrary library(platform.services());
    PhotosAhead ahead(library, decoder);
    library.openFolder(m_folder->url());
    QCOMPARE(decoder.expected, QStringList());  // for the grid, nothing
    library.openPhoto(40);
    ahead.setOnStage(true);
    const auto expects = [&](std::initializer_list<int> numbers) {
      QStringList names;
      for (const int number : numbers) names.append(QStringLiteral("%1.jpg").arg(number));
      return QTest::qWaitFor([&] { return decoder.expected == names; }, 500);
    };
    QVERIFY(expects({41, 39, 42}));
    library.showPrevious();
    QVERIFY(expects({38, 40, 37}));
    ahead.setHeld(PhotosAhead::Step::next);  // the other way
    QVERIFY(expects({40, 41, 42}));
    ahead.setHeld(PhotosAhead::Step::previous);
    QVERIFY(expects({38, 37, 36}));
    library.showPrevious();
    QVERIFY(expects({37, 36, 35}));
    ahead.setHeld(std::nullopt);
    library.openPhoto(0);
    QVERIFY(expects({1}));
    library.openPhoto(10);
    QVERIFY(expects({11, 9, 12}));
    library.setSortOrder(SortOrder::nameDescending);
    QVERIFY(expects({9, 11, 8}));
    library.openPhoto(79);
    QVERIFY(expects({1}));
    ahead.setOnStage(false);
    QVERIFY(expects({}));

    // A picture is ready with what the stage shows of it.
    decoder.preparesInTime = false;
    ahead.setOnStage(true);
    ahead.setStage({{400, 300}, {}, 1});
    ahead.photoShown();
    QVERIFY(!ahead.isReady(PhotosAhead::Step::previous));
    QVERIFY(ahead.isReady(PhotosAhead::Step::next));  // there is none
    const QImage picture(1000, 1000, QImage::Format_RGBX8888);
    decoder.ready(file(1), picture);
    QVERIFY(QTest::qWaitFor([&] { return ahead.isReady(PhotosAhead::Step::previous); }, 500));
    const QSize fitted = PhotoStage{{400, 300}, {}, 1}.fittedPixels(picture.size());
    QCOMPARE(fitted, QSize(184, 184));
    QCOMPARE(PhotoPyramid(picture).fitted(fitted).cacheKey(), PhotoPyramid(picture).fitted(fitted).cacheKey());
  }

  void thumbnailsAreMadeScreensAhead() {
    const int threads = workerPool().maxThreadCount();
    workerPool().setMaxThreadCount(1);  // so that what was asked for first is begun first
    const auto restore = qScopeGuard([threads] { workerPool().setMaxThreadCount(threads); });
    GatedDecoder decoder;
    decoder.gate.release(1000);
    ThumbnailStore::setDecoder(decoder);
    FakePlatform platform;
    PhotoLibrary library(platform.services());
    library.openFolder(m_folder->url());
    const GridLayout layout{GridMetrics::fitting({600, 600}, 4), 4, 80, {600, 600}};
    ThumbnailsAhead ahead(library, layout);
    QByteArrayList made;
    // Both screens [first, last) of photos, this one first but for what is made side by side.
    const auto makes = [&](std::pair<int, int> near, std::pair<int, int> far) {
      QByteArrayList wanted;
      for (const auto& [first, last] : {near, far}) {
        for (int number = first; number < last; ++number) wanted.append("#" + QByteArray::number(number) + ".jpg");
      }
      const auto count = made.size() + wanted.size();
      const bool areMade = QTest::qWaitFor([&] { return decoder.begun().size() >= count; }, 1000);
      const QByteArrayList now = decoder.begun().mid(made.size());
      made = decoder.begun();
      return areMade && sorted(now) == sorted(wanted);
    };
    ahead.follow(layout, 16, 32);
    QVERIFY(makes({32, 48}, {0, 16}));
    QVERIFY(made.indexOf("#40.jpg") < made.indexOf("#8.jpg"));
    ahead.follow(layout, 32, 48);
    QVERIFY(makes({48, 64}, {16, 32}));
    ahead.follow(layout, 32, 48);
    ahead.followStage(72);
    const auto [first, last] = layout.visibleIndices(layout.centeringContentY(72));
    QVERIFY(first < 64 && last > 64);
    QVERIFY(makes({64, int(last)}, {0, 0}));
    // Scrolled back up: those above come first.
    PhotoFolder others(numberedNames(80));
    library.openFolder(others.url());
    ahead.follow(layout, 40, 44);
    ahead.follow(layout, 36, 40);
    QTRY_VERIFY(decoder.begun().mid(made.size()).contains("#43.jpg"));
    made = decoder.begun().mid(made.size());
    QVERIFY(made.indexOf("#33.jpg") < made.indexOf("#42.jpg"));
    ThumbnailsAhead unseen(library, layout);  // whose grid never was
    unseen.followStage(79);
    QTRY_VERIFY(decoder.begun().last() == "#79.jpg");
  }

 private:
  [[nodiscard]] FileUrl file(int number) const { return m_folder->url(QStringLiteral("%1.jpg").arg(number)); }
  [[nodiscard]] std::vector<FileUrl> files(std::initializer_list<int> numbers) const {
    std::vector<FileUrl> all;
    for (const int number : numbers) all.push_back(file(number));
    return all;
  }
  static QByteArrayList sorted(QByteArrayList names) {
    std::sort(names.begin(), names.end());
    return names;
  }

  std::unique_ptr<PhotoFolder> m_folder;
};

QTEST_MAIN(AheadTest)
#include "AheadTest.moc"
