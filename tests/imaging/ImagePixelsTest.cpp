#include <lcms2.h>

#include <QtEndian>
#include <memory>

#include "ColorConversion.h"
#include "SamplePictures.h"
#include "Table.h"

using namespace lumagrid;
using namespace samples;

namespace {

using Profile = std::unique_ptr<void, decltype(&cmsCloseProfile)>;

Profile opened(const QByteArray& bytes) {
  return {cmsOpenProfileFromMem(bytes.constData(), static_cast<cmsUInt32Number>(bytes.size())), &cmsCloseProfile};
}

QByteArray saved(const Profile& profile) {
  cmsUInt32Number size = 0;
  cmsSaveProfileToMem(profile.get(), nullptr, &size);
  QByteArray bytes(static_cast<qsizetype>(size), '\0');
  cmsSaveProfileToMem(profile.get(), bytes.data(), &size);
  return bytes;
}

QByteArray linearGrayProfile() {
  const std::unique_ptr<cmsToneCurve, decltype(&cmsFreeToneCurve)> curve(cmsBuildGamma(nullptr, 1), &cmsFreeToneCurve);
  return saved({cmsCreateGrayProfile(cmsD50_xyY(), curve.get()), &cmsCloseProfile});
}

// Tables that say otherwise than the matrix beside them.
QByteArray profileWithTables() {
  const Profile profile = opened(QColorSpace(QColorSpace::DisplayP3).iccProfile());
  const Profile effect(cmsCreateBCHSWabstractProfile(11, 30, 1, 60, 0, 0, 0), &cmsCloseProfile);
  cmsWriteTag(profile.get(), cmsSigAToB0Tag, cmsReadTag(effect.get(), cmsSigAToB0Tag));
  return saved(profile);
}

// The gray axis, then colors scattered over the cube; enough for several threads.
QImage scatteredColors() {
  QImage colors(2048, 2304, QImage::Format_RGBX8888);
  auto* pixels = reinterpret_cast<quint32*>(colors.bits());
  for (quint32 index = 0; index < 2048 * 2304; ++index) {
    const quint32 color = index < 256 ? index * 0x10101U : index * 6700417U;  // odd, so that no color comes twice
    pixels[index] = qToLittleEndian(0xff000000U | color);
  }
  return colors;
}

using Field = std::pair<const quint16, quint32>;
const Field kPalette{TIFFTAG_PHOTOMETRIC, PHOTOMETRIC_PALETTE};
const Field kLab{TIFFTAG_PHOTOMETRIC, PHOTOMETRIC_CIELAB};
const Field kCmyk{TIFFTAG_PHOTOMETRIC, PHOTOMETRIC_SEPARATED};
const Field kAlpha{TIFFTAG_EXTRASAMPLES, EXTRASAMPLE_UNASSALPHA};

// Samples of one pixel for a whole TIFF of 32 × 32.
template <typename Sample>
QByteArray tiffOf(std::map<quint16, quint32> fields, std::initializer_list<Sample> pixel,
                  const QByteArray& colorMap = {}) {
  QByteArray bytes(static_cast<qsizetype>(pixel.size() * sizeof(Sample)), '\0');
  qToBigEndian<Sample>(pixel.begin(), static_cast<qsizetype>(pixel.size()), bytes.data());
  fields[TIFFTAG_IMAGEWIDTH] = fields[TIFFTAG_IMAGELENGTH] = 32;
  fields[TIFFTAG_BITSPERSAMPLE] = sizeof(Sample) * 8;
  fields[TIFFTAG_SAMPLESPERPIXEL] = static_cast<quint32>(pixel.size());
  return tiff(fields, bytes.repeated(32 * 32), colorMap);
}

QByteArray littleEndian(std::initializer_list<quint32> numbers) {
  QByteArray bytes(static_cast<qsizetype>(numbers.size()) * 4, '\0');
  qToLittleEndian<quint32>(numbers.begin(), static_cast<qsizetype>(numbers.size()), bytes.data());
  return bytes;
}

// 32 × 32 times one pixel whose bits the masks divide among red, green, blue and alpha; a header of 56 bytes, as
// painting programs write it.
template <typename Pixel>
QByteArray bmpOf(std::initializer_list<quint32> masks, Pixel pixel) {
  constexpr quint32 kMasks = 3;
  const QByteArray header =
      littleEndian({56, 32, 32, sizeof(Pixel) << 19 | 1, kMasks, 0, 0, 0, 0, 0}) + littleEndian(masks);
  const QByteArray samples(reinterpret_cast<const char*>(&pixel), sizeof(Pixel));
  return "BM" + littleEndian({0, 0, 14 + 56}) + header + samples.repeated(32 * 32);
}

// Pixels of 8 bits, all of them the second color of a palette of two, or as `runs` says.
QByteArray indexedBmp(const QByteArray& runs = {}) {
  const bool isOs2 = runs.isEmpty();
  const QByteArray header = isOs2 ? littleEndian({12, 32 << 16 | 32, 8 << 16 | 1})
                                  : littleEndian({40, 32, 32, 8 << 16 | 1, 1, 0, 0, 0, 2, 0});
  const QByteArray palette = isOs2 ? QByteArray("abc\x28\x3c\xc8", 6) : QByteArray("abc\0\x28\x3c\xc8\0", 8);
  const auto pixelsAt = static_cast<quint32>(14 + header.size() + palette.size());
  return "BM" + littleEndian({0, 0, pixelsAt}) + header + palette + (isOs2 ? QByteArray(32 * 32, 1) : runs);
}

// A file, and the premultiplied color that comes of it.
using Colored = std::pair<QByteArray, QColor>;

}  // namespace

// Colors and alpha of the pixels that come out.
class ImagePixelsTest : public QObject {
  Q_OBJECT

 private Q_SLOTS:
  void comesOutInSrgb_data() {
    QTest::addColumn<Colored>("row");
    const auto row = [](const char* name, const QByteArray& file, const QColor& color) {
      QTest::newRow(name) << Colored(file, color);
    };
    const QColor color(200, 60, 40);
    // What the primaries of wide-gamut displays make of it, by the matrices of both (IEC 61966-2-1, SMPTE EG 432-1).
    const QColor widened(219, 41, 24);
    const QColor grayed(55, 55, 55);
    const QColor lightened(128, 128, 128);
    const QColor orange(255, 128, 0);
    const QColor premultiplied(100, 30, 20, 128);
    const QByteArray wide = QColorSpace(QColorSpace::DisplayP3).iccProfile();
    const QByteArray plain = jpeg(filled(color));
    row("JPEG without a profile counts as sRGB", plain, color);
    row("JPEG with a wide gamut", withProfile(plain, wide), widened);
    row("JPEG with junk before its segments", withProfile(plain, wide).insert(2, "junk"), widened);
    row("JPEG with a segment without a length", QByteArray(plain).insert(2, QByteArray("\xff\xe4\0\0", 4)), color);
    row("JPEG with a segment that ends late", withSegment(plain, 0xe4, "abc").insert(9, "defg"), color);
    row("JPEG with a damaged profile counts as sRGB", withProfile(plain, wide.left(200)), color);
    row("JPEG with a profile for grays counts as sRGB", withProfile(plain, linearGrayProfile()), color);
    const QByteArray gray = jpeg(filled(grayed), {.colors = JCS_GRAYSCALE});
    row("gray JPEG of linear light", withProfile(gray, linearGrayProfile()), lightened);
    row("gray JPEG with a profile for RGB", withProfile(gray, wide), grayed);
    const QByteArray cmyk = jpeg(filled(color), {.colors = JCS_CMYK});
    row("CMYK JPEG", cmyk, color);
    row("CMYK JPEG with a profile for RGB", withProfile(cmyk, wide), color);

    QImage tagged = filled(color);
    tagged.setColorSpace(QColorSpace::DisplayP3);
    row("PNG with a wide gamut", pictureFile(tagged, "png"), widened);
    row("WebP with a wide gamut", pictureFile(tagged, "webp"), widened);
    row("PNG of 16 bits with a wide gamut", pictureFile(tagged.convertToFormat(QImage::Format_RGBX64), "png"), widened);
    const QByteArray png = pictureFile(filled(color), "png");
    const QByteArray gamma = withChunk(png, "gAMA", QByteArray("\0\0\xb1\x8f", 4));
    row("PNG whose gamma spells sRGB", gamma, color);
    const QByteArray primaries(
        "\0\0\x7a\x26\0\0\x80\x84\0\0\xfa\0\0\0\x80\xe8\0\0\x75\x30\0\0\xea\x60\0\0\x3a\x98\0\0\x17\x70", 32);
    row("PNG whose gamma and primaries spell sRGB", withChunk(gamma, "cHRM", primaries), color);
    row("PNG that names its primaries", withChunk(png, "cICP", QByteArray("\x0c\x0d\0\1", 4)), widened);
    row("PNG of linear light", withChunk(pictureFile(filled(grayed), "png"), "gAMA", QByteArray("\0\x01\x86\xa0", 4)),
        lightened);
    row("BMP of 5, 6 and 5 bits", bmpOf<quint16>({0xf800, 0x7e0, 0x1f, 0}, 0xf81f), Qt::magenta);
    row("BMP of 1, 20 and 7 bits", bmpOf<quint32>({0x80000000, 0xfffff, 0x7f00000, 0}, 0x8007ffff), orange);
    row("BMP of 5 bits each and one for alpha", bmpOf<quint16>({0x7c00, 0x3e0, 0x1f, 0x8000}, 0xffe0), Qt::yellow);
    row("BMP with alpha", bmpOf<quint32>({0xff0000, 0xff00, 0xff, 0xff000000}, 0x80c83c28), premultiplied);
    row("BMP with alpha that was left at zero", bmpOf<quint32>({0xff, 0xff00, 0xff0000, 0xff000000}, 0x283cc8), color);
    row("OS/2 BMP with a short palette", indexedBmp(), color);
    row("BMP of runs", indexedBmp(QByteArray("\x20\1\0\0", 4).repeated(32)), color);
    row("BMP of runs that skip most of it", indexedBmp(QByteArray("\x20\1\0\2\0\x1f\1\1", 8)), Qt::transparent);
    // One pixel of the second color in the last corner of the canvas, whose background is the first.
    const QByteArray palette("\xc8\x3c\x28\0\0\0", 6);
    const QByteArray corner = QByteArray(",\x1f\0\x1f\0\1\0\1\0\x80", 10) + palette + QByteArray("\2\2L\1\0;", 6);
    const QByteArray canvas("GIF89a\x20\0\x20\0", 10);
    row("GIF that leaves its background free", canvas + QByteArray("\x80\0\0", 3) + palette + corner, color);
    row("GIF that leaves free a canvas without background", canvas + QByteArray("\0\0\0", 3) + corner, Qt::transparent);
    row("HEIC that names its primaries", carried("wide-gamut.heic"), widened);
    row("gray AVIF in the range of video", carried("gray-limited.avif"), grayed);
    row("AVIF whose alpha is in the range of video", carried("alpha-limited.avif"), color);
    // Paper white lands on three quarters of the light: 0.75 through the curve of sRGB.
    row("HEIC of high dynamic range", carried("high-range.heic"), QColor(225, 225, 225));

    row("TIFF of 16 bits", tiffOf<quint16>({}, {200 * 257, 60 * 257, 40 * 257}), color);
    row("TIFF of 32 bits", tiffOf<quint32>({}, {200U << 24, 60U << 24, 40U << 24}), color);
    row("TIFF of signed samples", tiffOf<qint8>({{TIFFTAG_SAMPLEFORMAT, SAMPLEFORMAT_INT}}, {200 - 128, -68, -88}),
        color);
    row("TIFF of floats, some out of range",
        tiffOf<float>({{TIFFTAG_SAMPLEFORMAT, SAMPLEFORMAT_IEEEFP}}, {2.F, 0.5F, std::nanf("")}), orange);
    row("TIFF whose zero is white", tiffOf<quint8>({{TIFFTAG_PHOTOMETRIC, PHOTOMETRIC_MINISWHITE}}, {200}), grayed);
    row("CMYK TIFF", tiffOf<quint8>({kCmyk}, {55, 195, 215, 0}), color);
    row("TIFF of CIELab", tiffOf<quint8>({kLab}, {121, 55, 45}), color);
    const auto colorMap = [](qsizetype count) {  // black, but for the last color
      const QByteArray black((count - 1) * 2, '\0');
      return black + "\xc8\xc8" + black + "\x3c\x3c" + black + "\x28\x28";
    };
    row("TIFF of a palette, 16 bits", tiffOf<quint16>({kPalette}, {65535}, colorMap(65536)), color);
    row("CMYK TIFF, 16 bits", tiffOf<quint16>({kCmyk}, {55 * 257, 195 * 257, 215 * 257, 0}), color);

    const QByteArray transparent("\0\xc8\0\x3c\0\x28", 6);
    row("PNG with a transparent color before a palette in vain",
        withChunk(withChunk(png, "PLTE", "abc"), "tRNS", transparent), Qt::transparent);
    const QByteArray deep = pictureFile(filled(color).convertToFormat(QImage::Format_RGBX64), "png");
    row("PNG of 16 bits with a transparent color", withChunk(deep, "tRNS", QByteArray("\xc8\xc8\x3c\x3c\x28\x28", 6)),
        Qt::transparent);
    QImage translucent = filled(QColor(200, 60, 40, 128), {32, 32}, QImage::Format_ARGB32);
    row("translucent PNG", pictureFile(translucent, "png"), premultiplied);
    row("translucent AVIF", carried("half-transparent.avif"), premultiplied);
    translucent.setColorSpace(QColorSpace::DisplayP3);
    row("wide gamut: colors first, then alpha", pictureFile(translucent, "png"), QColor(110, 21, 12, 128));
    row("TIFF with alpha apart", tiffOf<quint8>({kAlpha}, {200, 60, 40, 128}), premultiplied);
    row("TIFF with alpha in the colors",
        tiffOf<quint8>({{TIFFTAG_EXTRASAMPLES, EXTRASAMPLE_ASSOCALPHA}}, {100, 30, 20, 128}), premultiplied);
    row("TIFF of CIELab, 16 bits, with alpha", tiffOf<quint16>({kLab, kAlpha}, {30972, 14174, 11426, 0x8080}),
        premultiplied);
    row("TIFF of CIELab with alpha", tiffOf<quint8>({kLab, kAlpha}, {121, 55, 45, 128}), premultiplied);
    row("TIFF of a palette, 16 bits, with alpha", tiffOf<quint16>({kPalette, kAlpha}, {65535, 0x8080}, colorMap(65536)),
        premultiplied);
    row("TIFF of a palette with alpha", tiffOf<quint8>({kPalette, kAlpha}, {255, 128}, colorMap(256)), premultiplied);
    // Green that nobody sees beside red: the mean is red, half as strong.
    QImage striped = filled(QColor(255, 0, 0, 128), {32, 32}, QImage::Format_ARGB32);
    for (int y = 16; y < 18; ++y) {
      striped.setPixelColor(8, y, QColor(0, 255, 0, 0));
      striped.setPixelColor(9, y, Qt::red);
    }
    row("scaling keeps hidden colors out", pictureFile(striped, "png"), QColor(128, 0, 0, 128));
  }

  void comesOutInSrgb() {
    const auto [file, expected] = fetchedRow<Colored>();
    const bool isOpaque = expected.alpha() == 255;
    for (const int bound : {0, 16}) {
      const auto [pixels, error] = decoded(file, bound);
      QCOMPARE(error, ImageError::none);
      QCOMPARE(pixels.format(), isOpaque ? QImage::Format_RGBX8888 : QImage::Format_RGBA8888_Premultiplied);
      QVERIFY(bound == 0 || pixels.width() == bound);
      const uchar* pixel = pixels.constScanLine(8) + 4 * 4;
      const int wanted[] = {expected.red(), expected.green(), expected.blue(), expected.alpha()};
      for (int channel = 0; channel < 4; ++channel) {
        const int tolerance = channel == 3 && isOpaque ? 0 : 3;
        QVERIFY2(std::abs(pixel[channel] - wanted[channel]) <= tolerance,
                 qPrintable(u"%1: %2"_qs.arg(channel).arg(pixel[channel])));
      }
    }
  }

  void anSrgbProfileChangesNoPixel() {
    const QImage image = rough({256, 64}, 0.5);
    QCOMPARE(convertedToSrgb(image, ColorModel::rgb, QColorSpace(QColorSpace::SRgb).iccProfile()), image);
  }

  // Colors over the whole cube, whichever way they go.
  void isWithinOneStepOfTheColorManagementLibrary_data() {
    QList<quint16> bent;
    for (int index = 0; index < 64; ++index) bent.append(static_cast<quint16>(index * index * 65535 / (63 * 63)));
    const QColorSpace wide(QColorSpace::DisplayP3);
    addRows<QByteArray>({{"displays of wide gamut", wide.iccProfile()},
                         {"photo papers", QColorSpace(QColorSpace::AdobeRgb).iccProfile()},
                         {"more than the eye sees", QColorSpace(QColorSpace::ProPhotoRgb).iccProfile()},
                         {"linear light", QColorSpace(QColorSpace::SRgbLinear).iccProfile()},
                         {"curves", wide.withTransferFunctions(bent, {0, 65535}, bent).iccProfile()},
                         {"tables beside the matrix", profileWithTables()}});
  }

  void isWithinOneStepOfTheColorManagementLibrary() {
    QFETCH(const QByteArray, row);
    const QImage colors = scatteredColors();
    const QImage found = convertedToSrgb(colors, ColorModel::rgb, row);
    QCOMPARE(found.size(), colors.size());
    const Profile source = opened(row);
    const Profile srgb(cmsCreate_sRGBProfile(), &cmsCloseProfile);
    cmsHTRANSFORM transform =
        cmsCreateTransform(source.get(), TYPE_RGBA_8, srgb.get(), TYPE_RGBA_8, INTENT_PERCEPTUAL, cmsFLAGS_COPY_ALPHA);
    QImage wanted(colors.size(), colors.format());
    cmsDoTransform(transform, colors.constBits(), wanted.bits(), 2048 * 2304);
    cmsDeleteTransform(transform);
    int largest = 0;
    for (qsizetype at = 0; at < wanted.sizeInBytes(); ++at) {
      largest = std::max(largest, std::abs(found.constBits()[at] - wanted.constBits()[at]));
    }
    QVERIFY2(largest <= 1, qPrintable(QString::number(largest)));
  }
};

QTEST_GUILESS_MAIN(ImagePixelsTest)
#include "ImagePixelsTest.moc"
