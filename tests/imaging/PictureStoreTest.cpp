#include "PictureStore.h"

#include <QTest>
#include <atomic>
#include <semaphore>
#include <thread>

#include "PhotoFolder.h"
#include "PixelBuffer.h"

using namespace lumagrid;

namespace {

// Of 24 megapixels, untouched.
struct CountingDecoder : ImageDecoder {
  std::atomic<int> count = 0;
  std::counting_semaphore<> mayEnd{0};

  DecodedImage decode(const FileUrl&) override {
    ++count;
    mayEnd.acquire();
    return {unsetPixels({6000, 4000}, QImage::Format_RGBX8888), ImageError::none};
  }
  DecodedImage decodeBounded(const FileUrl& file, std::int64_t) override { return decode(file); }
};

}  // namespace

class PictureStoreTest : public QObject {
  Q_OBJECT

 private Q_SLOTS:
  void decodesOnceForEachContentOfAFile() {
    CountingDecoder decoder;
    decoder.mayEnd.release(9);
    PictureStore store(decoder);
    const FileUrl file = m_folder.add(QStringLiteral("a.jpg"), "old");
    for (int time = 0; time < 2; ++time) QVERIFY(!store.decode(file).pixels.isNull());
    QCOMPARE(decoder.count, 1);
    m_folder.setDate(QStringLiteral("a.jpg"), 1);  // another file of the same length
    (void)store.decode(file);
    QCOMPARE(decoder.count, 2);
    (void)m_folder.add(QStringLiteral("a.jpg"), "longer");
    m_folder.setDate(QStringLiteral("a.jpg"), 1);
    (void)store.decode(file);
    QCOMPARE(decoder.count, 3);
  }

  void waitsForWhatIsDecodedAhead() {
    CountingDecoder decoder;
    PictureStore store(decoder);
    const FileUrl file = m_folder.add(QStringLiteral("b.jpg"), "x");
    store.decodeAhead(file);
    QTRY_COMPARE(decoder.count, 1);
    std::jthread late([&decoder] { decoder.mayEnd.release(); });
    QVERIFY(!store.decode(file).pixels.isNull());
    QCOMPARE(decoder.count, 1);
  }

  // The picture in use and the one before it are kept; the one before those makes room.
  void theNextPictureTakesTheMemoryOfTheOldest() {
    CountingDecoder decoder;
    decoder.mayEnd.release(9);
    PictureStore store(decoder);
    const auto pixelsOf = [&](const char* name) {
      return store.decode(m_folder.add(QString::fromLatin1(name), name)).pixels.constBits();
    };
    const uchar* const first = pixelsOf("1.jpg");
    const uchar* const second = pixelsOf("2.jpg");
    QCOMPARE(pixelsOf("3.jpg"), first);
    QCOMPARE(decoder.count, 3);
    QVERIFY(second != first);
  }

 private:
  PhotoFolder m_folder;
};

QTEST_GUILESS_MAIN(PictureStoreTest)
#include "PictureStoreTest.moc"
