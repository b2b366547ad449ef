#include <QColorSpace>
#include <QTest>
#include <QtEndian>

#include "SamplePictures.h"

using namespace lumagrid;
using namespace samples;

// Colours, alpha and the formats of the pixels that come out.
class ImageColorTest : public QObject {
  Q_OBJECT

 private Q_SLOTS:
  void comesOutInSrgb_data();
  void comesOutInSrgb();
  void anSrgbProfileChangesNoPixel();
  void alphaIsPremultiplied_data();
  void alphaIsPremultiplied();
  void scalingKeepsHiddenColorsOut();
};

namespace {

QImage filled(const QColor& color, QImage::Format format = QImage::Format_RGB32) {
  QImage image(32, 32, format);
  image.fill(color);
  return image;
}

// Samples of one pixel for a whole TIFF of 32 × 32.
template <typename Sample>
QByteArray tiffOf(TiffSpec spec, std::initializer_list<Sample> pixel) {
  spec.width = spec.height = 32;
  spec.bits = static_cast<int>(sizeof(Sample) * 8);
  spec.samplesPerPixel = static_cast<int>(pixel.size());
  QByteArray samples;
  for (int count = 0; count < 32 * 32; ++count) {
    for (const Sample sample : pixel) samples.append(reinterpret_cast<const char*>(&sample), sizeof(Sample));
  }
  return tiff(spec, samples);
}

enum Photometric { kWhiteIsZero = 0, kBlackIsZero = 1, kRgb = 2, kSeparated = 5 };
enum SampleFormat { kUnsigned = 1, kSigned = 2, kFloat = 3 };

TiffSpec spec(int photometric, int sampleFormat = kUnsigned, int extraSample = -1) {
  TiffSpec made;
  made.photometric = photometric;
  made.sampleFormat = sampleFormat;
  made.extraSample = extraSample;
  return made;
}

}  // namespace

void ImageColorTest::comesOutInSrgb_data() {
  QTest::addColumn<QByteArray>("file");
  QTest::addColumn<QColor>("expected");
  const QColor color(200, 60, 40);
  // What the primaries of wide-gamut displays make of it, by the matrices of both (IEC 61966-2-1, SMPTE EG 432-1).
  const QColor widened(219, 41, 24);
  const QByteArray plain = jpeg(filled(color));
  QTest::newRow("JPEG without a profile counts as sRGB") << plain << color;
  QTest::newRow("JPEG with a wide gamut") << withProfile(plain, wideGamutProfile()) << widened;
  QTest::newRow("JPEG with a damaged profile counts as sRGB")
      << withProfile(plain, wideGamutProfile().left(200)) << color;
  QTest::newRow("JPEG with a profile for grays counts as sRGB") << withProfile(plain, linearGrayProfile()) << color;
  const QByteArray gray = jpeg(filled(QColor(55, 55, 55)), Model::gray);
  QTest::newRow("gray JPEG") << gray << QColor(55, 55, 55);
  QTest::newRow("gray JPEG of linear light") << withProfile(gray, linearGrayProfile()) << QColor(128, 128, 128);
  QTest::newRow("gray JPEG with a profile for RGB") << withProfile(gray, wideGamutProfile()) << QColor(55, 55, 55);
  QTest::newRow("CMYK JPEG") << jpeg(filled(color), Model::cmyk) << color;
  QTest::newRow("CMYK JPEG with a profile for RGB")
      << withProfile(jpeg(filled(color), Model::cmyk), wideGamutProfile()) << color;

  QImage tagged = filled(color);
  tagged.setColorSpace(QColorSpace::DisplayP3);
  QTest::newRow("PNG with a wide gamut") << encoded(tagged, "png") << widened;
  QTest::newRow("WebP with a wide gamut") << encoded(tagged, "webp") << widened;
  const QByteArray gamma45455("\0\0\xb1\x8f", 4);
  QTest::newRow("PNG whose gamma spells sRGB") << withChunk(encoded(filled(color), "png"), "gAMA", gamma45455) << color;
  const QByteArray gamma1("\0\x01\x86\xa0", 4);
  QTest::newRow("PNG of linear light") << withChunk(encoded(filled(QColor(55, 55, 55)), "png"), "gAMA", gamma1)
                                       << QColor(128, 128, 128);
  QImage deep = filled(color).convertToFormat(QImage::Format_RGBX64);
  QTest::newRow("PNG of 16 bits") << encoded(deep, "png") << color;
  deep.setColorSpace(QColorSpace::DisplayP3);
  QTest::newRow("PNG of 16 bits with a wide gamut") << encoded(deep, "png") << widened;

  QTest::newRow("HEIC that names its primaries") << carried("wide-gamut.heic") << widened;
  // Paper white lands on three quarters of the light: 0.75 through the curve of sRGB.
  QTest::newRow("HEIC of high dynamic range") << carried("high-range.heic") << QColor(225, 225, 225);

  QTest::newRow("TIFF of 8 bits") << tiffOf<quint8>(spec(kRgb), {200, 60, 40}) << color;
  QTest::newRow("TIFF of 16 bits") << tiffOf<quint16>(spec(kRgb), {200 * 257, 60 * 257, 40 * 257}) << color;
  QTest::newRow("TIFF of 32 bits") << tiffOf<quint32>(spec(kRgb), {200U << 24, 60U << 24, 40U << 24}) << color;
  QTest::newRow("TIFF of signed samples")
      << tiffOf<qint8>(spec(kRgb, kSigned), {200 - 128, 60 - 128, 40 - 128}) << color;
  QTest::newRow("TIFF of floats") << tiffOf<float>(spec(kRgb, kFloat), {200 / 255.F, 60 / 255.F, 40 / 255.F}) << color;
  QTest::newRow("TIFF of floats out of range")
      << tiffOf<float>(spec(kRgb, kFloat), {2.F, -1.F, std::numeric_limits<float>::quiet_NaN()}) << QColor(255, 0, 0);
  QTest::newRow("TIFF whose zero is white") << tiffOf<quint8>(spec(kWhiteIsZero), {55}) << QColor(200, 200, 200);
  QTest::newRow("TIFF of inks") << tiffOf<quint8>(spec(kSeparated), {55, 195, 215, 0}) << color;
  QTest::newRow("TIFF of inks, 16 bits") << tiffOf<quint16>(spec(kSeparated), {55 * 257, 195 * 257, 215 * 257, 0})
                                         << color;
}

void ImageColorTest::comesOutInSrgb() {
  QFETCH(const QByteArray, file);
  QFETCH(const QColor, expected);
  const Folder folder;
  const DecodedImage whole = folder.decode(file);
  QCOMPARE(whole.error, ImageError::none);
  QCOMPARE(whole.pixels.format(), QImage::Format_RGBX8888);
  const QColor found = whole.pixels.pixelColor(16, 20);
  QVERIFY2(isNear(whole.pixels, 16, 20, expected, 3), qPrintable(found.name()));
  QCOMPARE(whole.pixels.constScanLine(20)[16 * 4 + 3], uchar{255});
  const DecodedImage small = folder.decodeBounded(file, 16);
  QVERIFY(isNear(small.pixels, 8, 10, expected, 3));
}

void ImageColorTest::anSrgbProfileChangesNoPixel() {
  QImage ramp(256, 64, QImage::Format_RGB32);
  for (int y = 0; y < 64; ++y) {
    for (int x = 0; x < 256; ++x) ramp.setPixelColor(x, y, QColor(x, y * 4, (x * 7 + y * 3) % 256));
  }
  const Folder folder;
  const QByteArray plain = jpeg(ramp);
  QCOMPARE(folder.decode(withProfile(plain, srgbProfile())).pixels, folder.decode(plain).pixels);
}

void ImageColorTest::alphaIsPremultiplied_data() {
  QTest::addColumn<QByteArray>("file");
  QTest::addColumn<QRgb>("expected");  // premultiplied
  QImage translucent(32, 32, QImage::Format_ARGB32);
  translucent.fill(QColor(200, 60, 40, 128));
  const QRgb premultiplied = qRgba(100, 30, 20, 128);
  QTest::newRow("PNG") << encoded(translucent, "png") << premultiplied;
  QTest::newRow("WebP") << encoded(translucent, "webp") << premultiplied;
  QTest::newRow("AVIF") << carried("half-transparent.avif") << premultiplied;
  QTest::newRow("PNG of 16 bits") << encoded(translucent.convertToFormat(QImage::Format_RGBA64), "png")
                                  << premultiplied;
  translucent.setColorSpace(QColorSpace::DisplayP3);
  QTest::newRow("PNG with a wide gamut: colours first, then alpha")
      << encoded(translucent, "png") << qRgba(110, 21, 12, 128);
  QTest::newRow("TIFF with alpha apart") << tiffOf<quint8>(spec(kRgb, kUnsigned, 2), {200, 60, 40, 128})
                                         << premultiplied;
  QTest::newRow("TIFF with alpha in the colours")
      << tiffOf<quint8>(spec(kRgb, kUnsigned, 1), {100, 30, 20, 128}) << premultiplied;
  QTest::newRow("gray TIFF with alpha") << tiffOf<quint8>(spec(kBlackIsZero, kUnsigned, 2), {200, 128})
                                        << qRgba(100, 100, 100, 128);
}

void ImageColorTest::alphaIsPremultiplied() {
  QFETCH(const QByteArray, file);
  QFETCH(const QRgb, expected);
  const Folder folder;
  for (const DecodedImage& decoded : {folder.decode(file), folder.decodeBounded(file, 16)}) {
    QCOMPARE(decoded.error, ImageError::none);
    QCOMPARE(decoded.pixels.format(), QImage::Format_RGBA8888_Premultiplied);
    const uchar* pixel = decoded.pixels.constScanLine(8) + 4 * 4;
    const int wanted[] = {qRed(expected), qGreen(expected), qBlue(expected), qAlpha(expected)};
    for (int channel = 0; channel < 4; ++channel) {
      QVERIFY2(std::abs(pixel[channel] - wanted[channel]) <= 3,
               qPrintable(u"%1: %2"_qs.arg(channel).arg(pixel[channel])));
    }
  }
}

void ImageColorTest::scalingKeepsHiddenColorsOut() {
  // Green that nobody sees beside red: the mean is red, half as strong.
  QImage image(32, 32, QImage::Format_ARGB32);
  for (int y = 0; y < 32; ++y) {
    for (int x = 0; x < 32; ++x) image.setPixelColor(x, y, x % 2 == 0 ? QColor(0, 255, 0, 0) : QColor(255, 0, 0, 255));
  }
  const Folder folder;
  const QImage scaled = folder.decodeBounded(encoded(image, "png"), 16).pixels;
  const uchar* pixel = scaled.constScanLine(5) + 5 * 4;
  QVERIFY(std::abs(pixel[0] - 128) <= 1);
  QCOMPARE(pixel[1], uchar{0});
  QVERIFY(std::abs(pixel[3] - 128) <= 1);
}

QTEST_GUILESS_MAIN(ImageColorTest)
#include "ImageColorTest.moc"
