#include <QTransform>

#include "SamplePictures.h"
#include "Table.h"

using namespace lumagrid;
using namespace samples;

// A file, the same with its pixels turned, and the turn that makes it upright.
using Turned = std::tuple<QByteArray, QByteArray, QTransform>;
// A file, its whole size, a bound, and the size within it.
using Sizes = std::tuple<QByteArray, QSize, int, QSize>;

// Sizes and turns of the pictures that come out.
class ImageShapeTest : public QObject {
  Q_OBJECT

 private Q_SLOTS:
  void standsUpright_data() {
    QTest::addColumn<Turned>("row");
    const QTransform mirror(-1, 0, 0, 1, 0, 0);
    const QTransform right(0, 1, -1, 0, 0, 0);
    const QTransform half = right * right;
    // By the number in EXIF data, of which 0 and 9 are invalid.
    const QTransform turns[] = {{},           {}, mirror, half, mirror * half, right * mirror, right, mirror * right,
                                right * half, {}};
    // Large enough for memory of another kind, and cut by the edges of the squares in which it is turned.
    const QImage image = rough({1205, 907}, 0.3);
    const QByteArray plain = jpeg(image);
    const QByteArray thumbnail = jpeg(filled(Qt::blue));  // in the file, and never used
    for (int orientation = 0; orientation <= 9; ++orientation) {
      QTest::addRow("JPEG with orientation %d", orientation)
          << Turned(plain, withSegment(plain, 0xe1, exif(orientation) + thumbnail), turns[orientation]);
    }
    const QByteArray png = pictureFile(image.copy(0, 0, 50, 41), "png");
    QTest::newRow("PNG with orientation 6") << Turned(png, withChunk(png, "eXIf", exif(6).mid(6)), turns[6]);
    const auto oriented = [&image](quint32 orientation) {
      return tiff({{TIFFTAG_IMAGEWIDTH, 60}, {TIFFTAG_IMAGELENGTH, 50}, {TIFFTAG_ORIENTATION, orientation}},
                  QByteArray(reinterpret_cast<const char*>(image.constBits()), 60 * 50 * 3));
    };
    QTest::newRow("TIFF with orientation 8") << Turned(oriented(1), oriented(8), turns[8]);
  }

  void standsUpright() {
    const auto [plain, lying, turn] = fetchedRow<Turned>();
    for (const int bound : {0, 37}) {
      const auto [pixels, error] = decoded(lying, bound);
      QCOMPARE(error, ImageError::none);
      QCOMPARE(pixels, decoded(plain, bound).pixels.transformed(turn).convertToFormat(pixels.format()));
    }
  }

  void comesOutInItsSize_data() {
    QTest::addColumn<Sizes>("row");
    const auto row = [](const char* name, const Sizes& sizes) { QTest::newRow(name) << sizes; };
    const auto plain = [](int width, int height) { return jpeg(filled(Qt::red, {width, height})); };
    row("the shorter side is rounded", {plain(1000, 667), {1000, 667}, 100, {100, 67}});
    row("a standing picture is bound in height", {plain(400, 600), {400, 600}, 75, {50, 75}});
    row("a line never loses its last pixel", {plain(2000, 3), {2000, 3}, 100, {100, 1}});
    row("a single pixel can be asked for", {plain(64, 48), {64, 48}, 1, {1, 1}});
    row("a small picture is not enlarged", {plain(33, 21), {33, 21}, 480, {33, 21}});
    row("HEIC, turned by its own property", {carried("turned-right.heic"), {64, 96}, 48, {32, 48}});

    const auto dense = [file = plain(96, 64)](const QByteArray& bothDensities) {
      return QByteArray(file).replace(file.indexOf("JFIF") + 8, 4, bothDensities);
    };
    const QByteArray doubled = dense(QByteArray("\0\x90\0\x48", 4));
    row("twice as dense across, it grows in height", {doubled, {96, 128}, 48, {36, 48}});
    row("twice as dense down, it grows in width", {dense(QByteArray("\0\x01\0\x02", 4)), {192, 64}, 48, {48, 16}});
    row("no density across", {dense(QByteArray("\0\0\0\x48", 4)), {96, 64}, 48, {48, 32}});
    row("a density that no device had", {dense(QByteArray("\0\x01\xea\x60", 4)), {96, 64}, 48, {48, 32}});
    row("turned after it was stretched", {withSegment(doubled, 0xe1, exif(6)), {128, 96}, 48, {48, 36}});
    QImage image = filled(Qt::red, {96, 64});
    const QByteArray rounded("\0\0\x0b\x12\0\0\x0b\x13\x01", 9);
    row("a unit that was rounded",
        {withChunk(pictureFile(filled(Qt::red, {3000, 2}), "png"), "pHYs", rounded), {3000, 2}, 48, {48, 1}});
    image.setDotsPerMeterX(2 * image.dotsPerMeterY());
    row("PNG, twice as dense across", {pictureFile(image, "png"), {96, 128}, 48, {36, 48}});
    row("TIFF, twice as dense across", {pictureFile(image, "tiff"), {96, 128}, 48, {36, 48}});
  }

  void comesOutInItsSize() {
    const auto [file, whole, bound, bounded] = fetchedRow<Sizes>();
    QCOMPARE(decoded(file).pixels.size(), whole);
    QCOMPARE(decoded(file, bound).pixels.size(), bounded);
  }

  void scaledPixelsAreMeansOfTheirAreas() {
    // One white column in four, so that each pixel of the result covers 7/3 columns.
    QImage stripes = filled(Qt::black, {7, 2});
    for (const int x : {0, 4, 7, 11}) stripes.setPixelColor(x % 7, x / 7, Qt::white);
    const QImage scaled = decoded(pictureFile(stripes), 3).pixels;
    QCOMPARE(scaled.size(), QSize(3, 1));
    for (int x = 0; x < 3; ++x) {
      const double mean = 255 * (1 - x / 3.0) / (7.0 / 3);
      QVERIFY(std::abs(qRed(scaled.pixel(x, 0)) - mean) <= 1);
    }
    const QSize size(123, 92);
    QCOMPARE(decoded(pictureFile(filled(Qt::white, {1000, 750})), 123).pixels,
             filled(Qt::white, size, QImage::Format_RGBX8888));
  }
};

QTEST_GUILESS_MAIN(ImageShapeTest)
#include "ImageShapeTest.moc"
