#include <malloc.h>

#include "BackgroundQueue.h"
#include "SamplePictures.h"
#include "Table.h"
#include "TemporaryHome.h"

using namespace lumagrid;
using namespace samples;

// Files that are cut short or broken, or that cannot be read.
class ImageDamageTest : public QObject {
  Q_OBJECT

 private Q_SLOTS:
  void brokenBytesNeverBreakTheDecoder_data() {
    const QImage image = rough({24, 16}, 0.1);
    const QByteArray wide = withProfile(jpeg(image), QColorSpace(QColorSpace::DisplayP3).iccProfile());
    addRows<QByteArray>({
        {"JPEG with EXIF and a profile", withSegment(wide, 0xe1, exif(6))},
        {"CMYK JPEG", jpeg(image, {.colors = JCS_CMYK})},
        {"progressive JPEG", jpeg(image, {.coding = &jpeg_simple_progression})},
        {"PNG", withChunk(pictureFile(image, "png"), "eXIf", exif(8).mid(6))},
        {"GIF", QByteArray("GIF89a\1\0\1\0\x80\0\0\xff\0\0\0\0\0,\0\0\0\0\1\0\1\0\0\2\2D\1\0;", 35)},
        {"WebP", pictureFile(image, "webp")},
        {"BMP", pictureFile(image, "bmp")},
        {"TIFF", pictureFile(image, "tiff")},
        {"TIFF of floats", pictureFile(image.convertToFormat(QImage::Format_RGBX32FPx4), "tiff")},
        {"HEIC", carried("turned-right.heic")},
        {"AVIF", carried("half-transparent.avif")},
    });
  }

  // Cut anywhere too. Nor does a picture show memory that its decoding only took.
  void brokenBytesNeverBreakTheDecoder() {
    QFETCH(const QByteArray, row);
    QCOMPARE(decoded(row).error, ImageError::none);
    constexpr int kCuts = 48;
    std::minstd_rand random(1);
    for (int round = 1; round < 300; ++round) {
      const QByteArray damaged = round < kCuts ? row.first(row.size() * round / kCuts) : broken(row, 128, random);
      const int bound = round % 2 == 0 ? 10 : 0;
      ::mallopt(M_PERTURB, 0x55);  // fills what is allocated
      const auto [pixels, error] = decoded(damaged, bound);
      ::mallopt(M_PERTURB, 0xaa);
      QCOMPARE(decoded(damaged, bound).pixels, pixels);
      QCOMPARE(pixels.isNull(), error != ImageError::none);
      QVERIFY(pixels.isNull() || pixels.format() == QImage::Format_RGBX8888 ||
              pixels.format() == QImage::Format_RGBA8888_Premultiplied);
    }
  }

  void cleanup() { ::mallopt(M_PERTURB, 0); }

  void aFileCutShortShowsWhatThereIs_data() {
    const QImage image = rough({256, 256}, 1);
    addRows<QByteArray>({{"JPEG", jpeg(image)},
                         {"PNG", pictureFile(image, "png")},
                         {"BMP, which begins with its last row", pictureFile(image, "bmp")}});
  }

  void aFileCutShortShowsWhatThereIs() {
    QFETCH(const QByteArray, row);
    const QImage whole = decoded(row).pixels;
    const QByteArray half = row.left(row.size() / 2);
    const auto [cut, error] = decoded(half);
    QCOMPARE(error, ImageError::none);
    QCOMPARE(cut.size(), whole.size());
    int sameRows = 0;
    for (int y = 0; y < 256; ++y) {
      if (std::equal(cut.constScanLine(y), cut.constScanLine(y) + 1024, whole.constScanLine(y))) ++sameRows;
    }
    QVERIFY2(sameRows > 96, qPrintable(QString::number(sameRows)));
    QCOMPARE(decoded(half, 64).pixels.size(), QSize(64, 64));
  }

  void aFileThatCannotBeReadNeverBlocks() {
    const QByteArray path = m_home.path() + "/caf\xe9.jpg";  // not UTF-8
    const auto errorOf = [](const QByteArray& file) {
      return FileImageDecoder().decode(FileUrl::fromPath(file)).error;
    };
    QCOMPARE(errorOf({}), ImageError::missing);
    QCOMPARE(errorOf(path), ImageError::missing);
    QCOMPARE(errorOf(path + "/.."), ImageError::unsupported);
    QCOMPARE(::mkfifo(path.constData(), 0644), 0);
    QCOMPARE(errorOf(path), ImageError::unsupported);
    QCOMPARE(::unlink(path.constData()), 0);
    QVERIFY(writeFile(path, jpeg(filled(Qt::red))));
    QCOMPARE(errorOf(path), ImageError::none);
    QCOMPARE(::chmod(path.constData(), 0), 0);
    QCOMPARE(errorOf(path), ImageError::denied);
  }

  void severalThreadsDecodeAtOnce() {
    const QImage image = rough({96, 64}, 0.1);
    const QByteArray wide = QColorSpace(QColorSpace::DisplayP3).iccProfile();
    const QByteArrayList files = {withProfile(jpeg(image), wide), pictureFile(image, "png"), pictureFile(image, "tiff"),
                                  carried("turned-right.heic")};
    QList<QImage> expected;
    for (const QByteArray& file : files) expected.append(decoded(file).pixels);
    std::vector<int> areSame(80);
    parallelFor(
        80, [&](int round) { areSame[std::size_t(round)] = decoded(files[round % 4]).pixels == expected[round % 4]; });
    QCOMPARE(std::count(areSame.begin(), areSame.end(), 1), 80);
  }

 private:
  const TemporaryHome m_home;
};

QTEST_GUILESS_MAIN(ImageDamageTest)
#include "ImageDamageTest.moc"
