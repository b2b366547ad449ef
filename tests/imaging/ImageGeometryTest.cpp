#include <QTest>

#include "AreaScaling.h"
#include "SamplePictures.h"

using namespace lumagrid;
using namespace samples;

// Sizes, turns and square pixels.
class ImageGeometryTest : public QObject {
  Q_OBJECT

 private Q_SLOTS:
  void standsUpright_data();
  void standsUpright();
  void largePicturesStandUprightToo();
  void boundsTheLongerSide_data();
  void boundsTheLongerSide();
  void scaledPixelsAreMeansOfTheirAreas();
  void pixelsComeOutSquare_data();
  void pixelsComeOutSquare();
  void neverUsesTheThumbnailOfTheFile();
};

void ImageGeometryTest::standsUpright_data() {
  QTest::addColumn<QByteArray>("file");
  QTest::addColumn<QSize>("size");
  QTest::addColumn<QPoint>("corner");  // a pixel of the marked corner, once upright
  const QSize lying(96, 64);
  const QSize standing(64, 96);
  const struct {
    const char* name;
    int orientation;
    QSize size;
    QPoint corner;
  } rows[] = {
      {"0 is invalid and counts as upright", 0, lying, {2, 2}},
      {"1 is upright", 1, lying, {2, 2}},
      {"2 is mirrored", 2, lying, {93, 2}},
      {"3 is upside down", 3, lying, {93, 61}},
      {"4 is mirrored upside down", 4, lying, {2, 61}},
      {"5 is mirrored and lies on its left side", 5, standing, {2, 2}},
      {"6 lies on its left side", 6, standing, {61, 2}},
      {"7 is mirrored and lies on its right side", 7, standing, {61, 93}},
      {"8 lies on its right side", 8, standing, {2, 93}},
      {"9 is invalid and counts as upright", 9, lying, {2, 2}},
  };
  const QByteArray plain = jpeg(picture());
  for (const auto& row : rows) {
    QTest::addRow("JPEG whose orientation %s", row.name)
        << withSegment(plain, 0xe1, exif(row.orientation)) << row.size << row.corner;
  }
  QTest::newRow("PNG with orientation 6")
      << withChunk(encoded(picture(), "png"), "eXIf", exif(6).mid(6)) << standing << QPoint(61, 2);
  QTest::newRow("HEIC that is turned by its own property") << carried("turned-right.heic") << standing << QPoint(61, 2);
  TiffSpec spec;
  spec.width = 96;
  spec.height = 64;
  spec.orientation = 8;
  QByteArray samples;
  const QImage source = picture().convertToFormat(QImage::Format_RGB888);
  for (int y = 0; y < 64; ++y) samples.append(reinterpret_cast<const char*>(source.constScanLine(y)), 96 * 3);
  QTest::newRow("TIFF with orientation 8") << tiff(spec, samples) << standing << QPoint(2, 93);
}

void ImageGeometryTest::standsUpright() {
  QFETCH(const QByteArray, file);
  QFETCH(const QSize, size);
  QFETCH(const QPoint, corner);
  const Folder folder;
  const DecodedImage whole = folder.decode(file);
  QCOMPARE(whole.error, ImageError::none);
  QCOMPARE(whole.pixels.size(), size);
  for (const int x : {2, size.width() - 3}) {
    for (const int y : {2, size.height() - 3}) {
      QVERIFY2(isNear(whole.pixels, x, y, QPoint(x, y) == corner ? kCorner : kGround),
               qPrintable(u"%1,%2"_qs.arg(x).arg(y)));
    }
  }
  const DecodedImage half = folder.decodeBounded(file, 48);
  QCOMPARE(half.pixels.size(), size / 2);
  QVERIFY(isNear(half.pixels, corner.x() / 2, corner.y() / 2, kCorner));
}

// Their pixels lie in memory of another kind, and are turned in squares that the edges cut.
void ImageGeometryTest::largePicturesStandUprightToo() {
  const QByteArray plain = jpeg(picture(1809, 1203));
  const Folder folder;
  const QImage turned = folder.decode(withSegment(plain, 0xe1, exif(6))).pixels;
  QCOMPARE(turned.size(), QSize(1203, 1809));
  QVERIFY(isNear(turned, 1202, 0, kCorner) && isNear(turned, 0, 0, kGround) && isNear(turned, 1202, 1808, kGround));
  const QImage mirrored = folder.decode(withSegment(plain, 0xe1, exif(3))).pixels;
  QCOMPARE(mirrored.size(), QSize(1809, 1203));
  QVERIFY(isNear(mirrored, 1808, 1202, kCorner) && isNear(mirrored, 0, 0, kGround));
}

void ImageGeometryTest::boundsTheLongerSide_data() {
  QTest::addColumn<QSize>("stored");
  QTest::addColumn<int>("bound");
  QTest::addColumn<QSize>("expected");
  QTest::newRow("the bound is met exactly") << QSize(600, 400) << 480 << QSize(480, 320);
  QTest::newRow("the shorter side is rounded") << QSize(1000, 667) << 100 << QSize(100, 67);
  QTest::newRow("a standing picture is bound in height") << QSize(400, 600) << 75 << QSize(50, 75);
  QTest::newRow("a line never loses its last pixel") << QSize(2000, 3) << 100 << QSize(100, 1);
  QTest::newRow("a single pixel can be asked for") << QSize(64, 48) << 1 << QSize(1, 1);
  QTest::newRow("a picture of the bound's size stays") << QSize(480, 320) << 480 << QSize(480, 320);
  QTest::newRow("a small picture is not enlarged") << QSize(33, 21) << 480 << QSize(33, 21);
}

void ImageGeometryTest::boundsTheLongerSide() {
  QFETCH(const QSize, stored);
  QFETCH(const int, bound);
  QFETCH(const QSize, expected);
  const Folder folder;
  for (const QByteArray& file :
       {jpeg(picture(stored.width(), stored.height())), encoded(picture(stored.width(), stored.height()), "png")}) {
    const DecodedImage decoded = folder.decodeBounded(file, bound);
    QCOMPARE(decoded.error, ImageError::none);
    QCOMPARE(decoded.pixels.size(), expected);
  }
}

void ImageGeometryTest::scaledPixelsAreMeansOfTheirAreas() {
  // One white column in four, so that each pixel of the result covers 7/3 columns.
  QImage stripes(7, 6, QImage::Format_RGBA8888_Premultiplied);
  stripes.fill(Qt::black);
  for (int y = 0; y < 6; ++y) {
    stripes.setPixelColor(0, y, Qt::white);
    stripes.setPixelColor(4, y, Qt::white);
  }
  const QImage scaled = scaledTo(stripes, {3, 2});
  const auto mean = [](double white) { return qRound(255 * white / (7.0 / 3)); };
  for (int y = 0; y < 2; ++y) {
    QCOMPARE(scaled.pixelColor(0, y).red(), mean(1));
    QCOMPARE(scaled.pixelColor(1, y).red(), mean(2.0 / 3));
    QCOMPARE(scaled.pixelColor(2, y).red(), mean(1.0 / 3));
    for (int x = 0; x < 3; ++x) QCOMPARE(scaled.pixelColor(x, y).alpha(), 255);
  }
  QImage white(999, 777, QImage::Format_RGBX8888);
  white.fill(Qt::white);
  const QImage stillWhite = scaledTo(white, {123, 45});
  for (int y = 0; y < 45; ++y) {
    for (int x = 0; x < 123; ++x) QCOMPARE(stillWhite.pixel(x, y), 0xffffffffU);
  }
}

void ImageGeometryTest::pixelsComeOutSquare_data() {
  QTest::addColumn<QByteArray>("file");
  QTest::addColumn<QSize>("whole");
  QTest::addColumn<QSize>("bounded");  // to 48
  const QByteArray plain = jpeg(picture());
  QTest::newRow("JPEG, twice as dense across, grows in height")
      << withDensity(plain, 144, 72) << QSize(96, 128) << QSize(36, 48);
  QTest::newRow("JPEG, twice as dense down, grows in width")
      << withDensity(plain, 1, 2) << QSize(192, 64) << QSize(48, 16);
  QTest::newRow("JPEG, square") << withDensity(plain, 300, 300) << QSize(96, 64) << QSize(48, 32);
  QTest::newRow("JPEG, no density across") << withDensity(plain, 0, 72) << QSize(96, 64) << QSize(48, 32);
  QTest::newRow("JPEG, a density that no device had") << withDensity(plain, 1, 60000) << QSize(96, 64) << QSize(48, 32);
  QTest::newRow("JPEG, turned after it was stretched")
      << withSegment(withDensity(plain, 144, 72), 0xe1, exif(6)) << QSize(128, 96) << QSize(48, 36);
  QImage wide = picture();
  wide.setDotsPerMeterX(2000);
  wide.setDotsPerMeterY(1000);
  QTest::newRow("PNG, twice as dense across") << encoded(wide, "png") << QSize(96, 128) << QSize(36, 48);
  QTest::newRow("PNG, rounding of the unit")
      << withChunk(encoded(picture(), "png"), "pHYs", QByteArray("\0\0\x0b\x12\0\0\x0b\x13\x01", 9)) << QSize(96, 64)
      << QSize(48, 32);
  TiffSpec fax;
  fax.width = 96;
  fax.height = 64;
  fax.photometric = 1;
  fax.samplesPerPixel = 1;
  fax.horizontalDensity = 200;
  fax.verticalDensity = 100;
  QTest::newRow("TIFF of a fax") << tiff(fax, QByteArray(96 * 64, '\x80')) << QSize(96, 128) << QSize(36, 48);
}

void ImageGeometryTest::pixelsComeOutSquare() {
  QFETCH(const QByteArray, file);
  QFETCH(const QSize, whole);
  QFETCH(const QSize, bounded);
  const Folder folder;
  QCOMPARE(folder.decode(file).pixels.size(), whole);
  QCOMPARE(folder.decodeBounded(file, 48).pixels.size(), bounded);
}

void ImageGeometryTest::neverUsesTheThumbnailOfTheFile() {
  QImage other(32, 32, QImage::Format_RGB32);
  other.fill(Qt::blue);
  const QByteArray file = withSegment(jpeg(picture()), 0xe1, exif(1, jpeg(other)));
  const Folder folder;
  for (const int bound : {8, 32, 48}) {
    const DecodedImage decoded = folder.decodeBounded(file, bound);
    QCOMPARE(decoded.pixels.width(), bound);
    QVERIFY(isNear(decoded.pixels, bound - 1, decoded.pixels.height() - 1, kGround));
  }
}

QTEST_GUILESS_MAIN(ImageGeometryTest)
#include "ImageGeometryTest.moc"
