#include <malloc.h>
#include <sys/stat.h>
#include <unistd.h>

#include <QTemporaryDir>
#include <QTest>
#include <atomic>
#include <fstream>
#include <thread>

#include "SamplePictures.h"

using namespace lumagrid;
using namespace samples;

// What is opened, whatever it is called; and files that are none, that are cut short, that lie, or that are broken.
class ImageDamageTest : public QObject {
  Q_OBJECT

 private Q_SLOTS:
  void brokenBytesNeverBreakTheDecoder_data() {
    QTest::addColumn<QByteArray>("file");
    const QImage image = rough({24, 16}, 0.1);
    const QByteArray wide = withProfile(jpeg(image), QColorSpace(QColorSpace::DisplayP3).iccProfile());
    QTest::newRow("JPEG with EXIF and a profile") << withSegment(wide, 0xe1, exif(6));
    QTest::newRow("CMYK JPEG") << jpeg(image, {.colors = JCS_CMYK});
    QTest::newRow("progressive JPEG") << jpeg(image, {.coding = &jpeg_simple_progression});
    QTest::newRow("PNG") << withChunk(encoded(image, "png"), "eXIf", exif(8).mid(6));
    QTest::newRow("GIF") << QByteArray("GIF89a\1\0\1\0\x80\0\0\xff\0\0\0\0\0,\0\0\0\0\1\0\1\0\0\2\2D\1\0;", 35);
    QTest::newRow("WebP") << encoded(image, "webp");
    QTest::newRow("BMP") << encoded(image, "bmp");
    QTest::newRow("TIFF") << encoded(image, "tiff");
    QTest::newRow("TIFF of floats") << encoded(image.convertToFormat(QImage::Format_RGBX32FPx4), "tiff");
    QTest::newRow("HEIC") << carried("turned-right.heic");
    QTest::newRow("AVIF") << carried("half-transparent.avif");
  }

  // Nor does a picture show memory that its decoding only took.
  void brokenBytesNeverBreakTheDecoder() {
    QFETCH(const QByteArray, file);
    QCOMPARE(decoded(file).error, ImageError::none);
    std::minstd_rand random(1);
    for (int round = 0; round < 300; ++round) {
      const QByteArray damaged = broken(file, 128, random);
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
    QTest::addColumn<QByteArray>("file");
    const QImage image = rough({256, 256}, 1);
    QTest::newRow("JPEG") << jpeg(image);
    QTest::newRow("PNG") << encoded(image, "png");
    QTest::newRow("BMP, which begins with its last row") << encoded(image, "bmp");
  }

  void aFileCutShortShowsWhatThereIs() {
    QFETCH(const QByteArray, file);
    const QImage whole = decoded(file).pixels;
    const QByteArray half = file.left(file.size() / 2);
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

  void isRefused_data() {
    QTest::addColumn<QByteArray>("file");
    QTest::addColumn<QList<ImageError>>("errors");
    const auto row = [](const char* name, const QByteArray& file, const QList<ImageError>& errors) {
      QTest::newRow(name) << file << errors;
    };
    row("an empty file", {}, {ImageError::unsupported});
    row("vector graphics", "<svg xmlns='http://www.w3.org/2000/svg' width='9' height='9'/>", {ImageError::unsupported});
    row("a film", QByteArray("\0\0\0\30ftypisom\0\0\2\0isommp41", 24), {ImageError::unsupported});
    row("a text that begins like a BMP", "BMW is a maker of cars, and this is a sentence.", {ImageError::unsupported});
    row("the beginning of a JPEG", "\xff\xd8\xff\xe0", {ImageError::damaged});
    row("the beginning of a PNG", "\x89PNG\r\n\x1a\n", {ImageError::damaged});
    const QList<ImageError> lies = {ImageError::damaged, ImageError::tooLarge};
    const QImage image = filled(Qt::red);
    const QByteArray file = jpeg(image);
    const qsizetype size = file.indexOf("\xff\xc0") + 5;
    row("JPEG that claims 60000 x 60000", QByteArray(file).replace(size, 4, "\xea\x60\xea\x60"), lies);
    row("JPEG of one kilobyte that claims 10000 x 10000", QByteArray(file).replace(size, 4, "\x27\x10\x27\x10"), lies);
    row("BMP that claims 60000 x 60000",
        encoded(image, "bmp").replace(18, 8, QByteArray("\x60\xea\0\0\x60\xea\0\0", 8)), lies);
    row("TIFF whose area overflows 64 bits with its samples",
        tiff({{TIFFTAG_IMAGEWIDTH, 2'000'000'000}, {TIFFTAG_IMAGELENGTH, 2'000'000'000}}, QByteArray(64, 'x')), lies);
    row("GIF of a few bytes that claims 11390 x 12595",
        QByteArray("GIF89a~,31\x39\x61~,31\x38\x35\x37\xfb\x38\0\0\0\xfb\x38", 26), lies);
  }

  void isRefused() {
    QFETCH(const QByteArray, file);
    QFETCH(const QList<ImageError>, errors);
    for (const int bound : {0, 64}) {
      const auto [pixels, error] = decoded(file, bound);
      QVERIFY(errors.contains(error));
      QVERIFY(pixels.isNull());
    }
  }

  void aFileThatCannotBeReadNeverBlocks() {
    const QTemporaryDir folder;
    const QByteArray path = QFile::encodeName(folder.path()) + "/caf\xe9.jpg";  // not UTF-8
    const auto errorOf = [](const QByteArray& file) {
      return FileImageDecoder().decode(FileUrl::fromPath(file)).error;
    };
    QCOMPARE(errorOf({}), ImageError::missing);
    QCOMPARE(errorOf(path), ImageError::missing);
    QCOMPARE(errorOf(path + "/.."), ImageError::unsupported);
    QCOMPARE(::mkfifo(path.constData(), 0644), 0);
    QCOMPARE(errorOf(path), ImageError::unsupported);
    QCOMPARE(::unlink(path.constData()), 0);
    const QByteArray photo = jpeg(filled(Qt::red));
    std::ofstream(path.constData(), std::ios::binary).write(photo.constData(), photo.size());
    QCOMPARE(errorOf(path), ImageError::none);

    QCOMPARE(::chmod(path.constData(), 0), 0);
    const bool isRoot = ::geteuid() == 0;  // whom permissions do not bind
    constexpr uid_t kNobody = 65534;
    if (isRoot) QCOMPARE(::seteuid(kNobody), 0);
    const ImageError error = errorOf(path);
    if (isRoot) QCOMPARE(::seteuid(0), 0);
    QCOMPARE(error, ImageError::denied);
    QCOMPARE(::unlink(path.constData()), 0);  // QTemporaryDir cannot name it
  }

  void severalThreadsDecodeAtOnce() {
    const QImage image = rough({96, 64}, 0.1);
    const QByteArray wide = QColorSpace(QColorSpace::DisplayP3).iccProfile();
    const QByteArrayList files = {withProfile(jpeg(image), wide), encoded(image, "png"), encoded(image, "tiff"),
                                  carried("turned-right.heic")};
    std::vector<QImage> expected;
    for (const QByteArray& file : files) expected.push_back(decoded(file).pixels);
    std::atomic<int> differences = 0;
    std::vector<std::jthread> threads;
    for (qsizetype thread = 0; thread < files.size(); ++thread) {
      threads.emplace_back([&, thread] {
        for (qsizetype round = 0; round < 20; ++round) {
          const qsizetype index = (thread + round) % files.size();
          const QImage pixels = decoded(files[index]).pixels;
          if (pixels.isNull() || pixels != expected[static_cast<size_t>(index)]) ++differences;
        }
      });
    }
    threads.clear();
    QCOMPARE(differences.load(), 0);
  }
};

QTEST_GUILESS_MAIN(ImageDamageTest)
#include "ImageDamageTest.moc"
