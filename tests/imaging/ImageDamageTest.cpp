#include <QTest>
#include <QtEndian>
#include <random>

#include "SamplePictures.h"

using namespace lumagrid;
using namespace samples;

// Files that are cut short, that lie, or that are broken anywhere.
class ImageDamageTest : public QObject {
  Q_OBJECT

 private Q_SLOTS:
  void aJpegCutShortShowsWhatThereIs();
  void lyingHeadersTakeNoMemory_data();
  void lyingHeadersTakeNoMemory();
  void brokenBytesNeverBreakTheDecoder_data();
  void brokenBytesNeverBreakTheDecoder();
};

namespace {

QByteArray withBigEndian16(QByteArray bytes, qsizetype at, quint16 number) {
  qToBigEndian(number, bytes.data() + at);
  return bytes;
}

QByteArray claiming60000(const QByteArray& jpeg) {
  const qsizetype frame = jpeg.indexOf("\xff\xc0");
  return withBigEndian16(withBigEndian16(jpeg, frame + 5, 60000), frame + 7, 60000);
}

}  // namespace

void ImageDamageTest::aJpegCutShortShowsWhatThereIs() {
  QImage noise(256, 256, QImage::Format_RGB32);
  std::minstd_rand random(7);
  for (int y = 0; y < 256; ++y) {
    for (int x = 0; x < 256; ++x) noise.setPixel(x, y, static_cast<QRgb>(random()) | 0xff000000U);
  }
  const QByteArray file = jpeg(noise);
  const Folder folder;
  const QImage whole = folder.decode(file).pixels;
  const DecodedImage cut = folder.decode(file.left(file.size() / 2));
  QCOMPARE(cut.error, ImageError::none);
  QCOMPARE(cut.pixels.size(), whole.size());
  QCOMPARE(cut.pixels.copy(0, 0, 256, 96), whole.copy(0, 0, 256, 96));
  QCOMPARE(folder.decodeBounded(file.left(file.size() / 2), 64).pixels.size(), QSize(64, 64));
}

void ImageDamageTest::lyingHeadersTakeNoMemory_data() {
  QTest::addColumn<QByteArray>("file");
  const QImage image = picture();
  QTest::newRow("JPEG that claims 60000 x 60000") << claiming60000(jpeg(image));
  const QByteArray large = claiming60000(jpeg(image));
  const qsizetype frame = large.indexOf("\xff\xc0");
  QTest::newRow("JPEG of one kilobyte that claims 10000 x 10000")
      << withBigEndian16(withBigEndian16(large, frame + 5, 10000), frame + 7, 10000);
  QByteArray png = encoded(image, "png");
  constexpr qsizetype kPngWidth = 16;
  qToBigEndian<quint32>(60000, png.data() + kPngWidth);
  qToBigEndian<quint32>(60000, png.data() + kPngWidth + 4);
  QTest::newRow("PNG that claims 60000 x 60000") << png;
  QByteArray bmp = encoded(image, "bmp");
  constexpr qsizetype kBmpWidth = 18;
  qToLittleEndian<quint32>(60000, bmp.data() + kBmpWidth);
  qToLittleEndian<quint32>(60000, bmp.data() + kBmpWidth + 4);
  QTest::newRow("BMP that claims 60000 x 60000") << bmp;
  TiffSpec spec;
  spec.width = spec.height = 2'000'000'000;
  QTest::newRow("TIFF whose area overflows 64 bits with its samples") << tiff(spec, QByteArray(64, 'x'));
  QTest::newRow("GIF of a few bytes that claims 11390 x 12595")
      << QByteArray("GIF89a~,31\x39\x61~,31\x38\x35\x37\xfb\x38\0\0\0\xfb\x38", 26);
}

void ImageDamageTest::lyingHeadersTakeNoMemory() {
  QFETCH(const QByteArray, file);
  const Folder folder;
  const DecodedImage decoded = folder.decode(file);
  QVERIFY(decoded.error == ImageError::tooLarge || decoded.error == ImageError::damaged);
  QVERIFY(decoded.pixels.isNull());
  QVERIFY(folder.decodeBounded(file, 64).pixels.isNull());
}

void ImageDamageTest::brokenBytesNeverBreakTheDecoder_data() {
  QTest::addColumn<QByteArray>("file");
  const QImage image = picture(24, 16);
  const QByteArray wide = withProfile(jpeg(image), wideGamutProfile());
  QTest::newRow("JPEG with EXIF and a profile") << withSegment(wide, 0xe1, exif(6));
  QTest::newRow("CMYK JPEG") << jpeg(image, Model::cmyk);
  QTest::newRow("PNG") << withChunk(encoded(image, "png"), "eXIf", exif(8).mid(6));
  QTest::newRow("WebP") << encoded(image, "webp");
  QTest::newRow("BMP") << encoded(image, "bmp");
  QTest::newRow("TIFF") << encoded(image, "tiff");
  TiffSpec spec;
  spec.width = 24;
  spec.height = 16;
  spec.bits = 32;
  spec.sampleFormat = 3;
  QTest::newRow("TIFF of floats") << tiff(spec, QByteArray(24 * 16 * 12, '\x3e'));
  QTest::newRow("HEIC") << carried("turned-right.heic");
  QTest::newRow("AVIF") << carried("half-transparent.avif");
}

void ImageDamageTest::brokenBytesNeverBreakTheDecoder() {
  QFETCH(const QByteArray, file);
  const Folder folder;
  QCOMPARE(folder.decode(file).error, ImageError::none);
  std::minstd_rand random(1);
  const auto below = [&random](qsizetype limit) { return static_cast<qsizetype>(random()) % limit; };
  for (int round = 0; round < 300; ++round) {
    QByteArray broken = file;
    // Headers stand at the beginning: half of the hits go there.
    for (qsizetype hits = 1 + below(4); hits > 0; --hits) {
      const qsizetype reach = below(2) == 0 ? broken.size() : std::min<qsizetype>(broken.size(), 128);
      broken[below(reach)] = static_cast<char>(random());
    }
    if (below(4) == 0) broken.truncate(below(broken.size()));
    const DecodedImage decoded = below(2) == 0 ? folder.decode(broken) : folder.decodeBounded(broken, 10);
    QCOMPARE(decoded.pixels.isNull(), decoded.error != ImageError::none);
    if (decoded.pixels.isNull()) continue;
    QVERIFY(decoded.pixels.format() == QImage::Format_RGBX8888 ||
            decoded.pixels.format() == QImage::Format_RGBA8888_Premultiplied);
  }
}

QTEST_GUILESS_MAIN(ImageDamageTest)
#include "ImageDamageTest.moc"
