#include <malloc.h>

#include "BackgroundQueue.h"
#include "SamplePictures.h"
#include "Table.h"
#include "TemporaryHome.h"

using namespace lumagrid;
using namespace samples;

// What is opened, whatever it is called; and files that are none, that are cut short, that lie, or that are broken.
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

  // Nor does a picture show memory that its decoding only took.
  void brokenBytesNeverBreakTheDecoder() {
    QFETCH(const QByteArray, row);
    QCOMPARE(decoded(row).error, ImageError::none);
    std::minstd_rand random(1);
    for (int round = 0; round < 300; ++round) {
      const QByteArray damaged = broken(row, 128, random);
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

  void isRefused_data() {
    using Errors = QList<ImageError>;
    const Errors none = {ImageError::unsupported};
    const Errors damaged = {ImageError::damaged};
    const Errors lies = {ImageError::damaged, ImageError::tooLarge};
    const QByteArray file = jpeg(filled(Qt::red));
    const auto claiming = [&file](const char* size) {
      return QByteArray(file).replace(file.indexOf("\xff\xc0") + 5, 4, size);
    };
    const QByteArray wideBmp =
        pictureFile(filled(Qt::red), "bmp").replace(18, 8, QByteArray("\x60\xea\0\0\x60\xea\0\0", 8));
    const QByteArray overflowing =
        tiff({{TIFFTAG_IMAGEWIDTH, 2'000'000'000}, {TIFFTAG_IMAGELENGTH, 2'000'000'000}}, QByteArray(64, 'x'));
    addRows<std::pair<QByteArray, Errors>>({
        {"an empty file", {{}, none}},
        {"vector graphics", {"<svg xmlns='http://www.w3.org/2000/svg' width='9' height='9'/>", none}},
        {"a film", {QByteArray("\0\0\0\30ftypisom\0\0\2\0isommp41", 24), none}},
        {"a text that begins like a BMP", {"BMW is a maker of cars, and this is a sentence.", none}},
        {"the beginning of a JPEG", {"\xff\xd8\xff\xe0", damaged}},
        {"the beginning of a PNG", {"\x89PNG\r\n\x1a\n", damaged}},
        {"JPEG that claims 60000 x 60000", {claiming("\xea\x60\xea\x60"), lies}},
        {"JPEG of one kilobyte that claims 10000 x 10000", {claiming("\x27\x10\x27\x10"), lies}},
        {"BMP that claims 60000 x 60000", {wideBmp, lies}},
        {"TIFF whose area overflows 64 bits with its samples", {overflowing, lies}},
        {"GIF of a few bytes that claims 11390 x 12595",
         {QByteArray("GIF89a~,31\x39\x61~,31\x38\x35\x37\xfb\x38\0\0\0\xfb\x38", 26), lies}},
    });
  }

  void isRefused() {
    using Row = std::pair<QByteArray, QList<ImageError>>;
    QFETCH(const Row, row);
    for (const int bound : {0, 64}) {
      const auto [pixels, error] = decoded(row.first, bound);
      QVERIFY(row.second.contains(error));
      QVERIFY(pixels.isNull());
    }
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
