#include <lcms2.h>

#include <QTest>
#include <memory>

#include "ColorConversion.h"
#include "SamplePictures.h"

using namespace lumagrid;

// Colours over the whole cube come out as the colour management library has them, whichever way they go.
class ColorAccuracyTest : public QObject {
  Q_OBJECT

 private Q_SLOTS:
  void isWithinOneStepOfTheReference_data();
  void isWithinOneStepOfTheReference();
};

namespace {

struct CloseProfile {
  void operator()(void* profile) const { cmsCloseProfile(profile); }
};
struct FreeCurve {
  void operator()(cmsToneCurve* curve) const { cmsFreeToneCurve(curve); }
};
using Profile = std::unique_ptr<void, CloseProfile>;
using Curve = std::unique_ptr<cmsToneCurve, FreeCurve>;

QByteArray saved(const Profile& profile) {
  cmsUInt32Number size = 0;
  cmsSaveProfileToMem(profile.get(), nullptr, &size);
  QByteArray bytes(static_cast<qsizetype>(size), '\0');
  cmsSaveProfileToMem(profile.get(), bytes.data(), &size);
  return bytes;
}

Profile matrixProfile(const cmsCIExyYTRIPLE& primaries, const Curve& red, const Curve& green, const Curve& blue) {
  const cmsCIExyY white = {0.3127, 0.3290, 1};
  cmsToneCurve* const curves[3] = {red.get(), green.get(), blue.get()};
  return Profile(cmsCreateRGBProfile(&white, &primaries, curves));
}

// Tables that exchange red and blue, which the matrix beside them does not.
QByteArray withTables(const Profile& profile) {
  const double exchange[9] = {0, 0, 0.4, 0, 0.4, 0, 0.4, 0, 0};
  cmsPipeline* const pipeline = cmsPipelineAlloc(nullptr, 3, 3);
  // The tag takes a matrix only between curves.
  cmsPipelineInsertStage(pipeline, cmsAT_END, cmsStageAllocToneCurves(nullptr, 3, nullptr));
  cmsPipelineInsertStage(pipeline, cmsAT_END, cmsStageAllocMatrix(nullptr, 3, 3, exchange, nullptr));
  cmsPipelineInsertStage(pipeline, cmsAT_END, cmsStageAllocToneCurves(nullptr, 3, nullptr));
  cmsWriteTag(profile.get(), cmsSigAToB0Tag, pipeline);
  cmsPipelineFree(pipeline);
  return saved(profile);
}

// The gray axis, then colours scattered over the cube; enough for several threads.
QImage scatteredColors() {
  QImage colors(2048, 2304, QImage::Format_RGBX8888);
  quint32 color = 0;
  for (int y = 0; y < colors.height(); ++y) {
    uchar* row = colors.scanLine(y);
    for (int x = 0; x < colors.width(); ++x, row += 4) {
      const bool isGray = y == 0 && x < 256;
      const quint32 value = isGray ? static_cast<quint32>(x) * 0x10101U : color;
      row[0] = static_cast<uchar>(value);
      row[1] = static_cast<uchar>(value >> 8);
      row[2] = static_cast<uchar>(value >> 16);
      row[3] = 255;
      color += 6700417;  // odd, so that no colour comes twice
    }
  }
  return colors;
}

}  // namespace

void ColorAccuracyTest::isWithinOneStepOfTheReference_data() {
  QTest::addColumn<QByteArray>("profile");
  const cmsCIExyYTRIPLE wide = {{0.680, 0.320, 1}, {0.265, 0.690, 1}, {0.150, 0.060, 1}};
  const cmsCIExyYTRIPLE photo = {{0.640, 0.330, 1}, {0.210, 0.710, 1}, {0.150, 0.060, 1}};
  const cmsCIExyYTRIPLE widest = {{0.7347, 0.2653, 1}, {0.1596, 0.8404, 1}, {0.0366, 0.0001, 1}};
  const cmsCIExyYTRIPLE narrow = {{0.640, 0.330, 1}, {0.300, 0.600, 1}, {0.150, 0.060, 1}};
  const Curve gamma10(cmsBuildGamma(nullptr, 1.0));
  const Curve gamma18(cmsBuildGamma(nullptr, 1.8));
  const Curve gamma22(cmsBuildGamma(nullptr, 2.19921875));
  quint16 bent[64];
  for (int index = 0; index < 64; ++index) bent[index] = static_cast<quint16>(index * index * 65535 / (63 * 63));
  const Curve table(cmsBuildTabulatedToneCurve16(nullptr, 64, bent));
  QTest::newRow("displays of wide gamut") << samples::wideGamutProfile();
  QTest::newRow("photo papers") << saved(matrixProfile(photo, gamma22, gamma22, gamma22));
  QTest::newRow("more than the eye sees") << saved(matrixProfile(widest, gamma18, gamma18, gamma18));
  QTest::newRow("linear light") << saved(matrixProfile(narrow, gamma10, gamma10, gamma10));
  QTest::newRow("a curve for each channel") << saved(matrixProfile(wide, gamma18, table, gamma22));
  QTest::newRow("curves of an old version") << saved([&] {
    Profile old = matrixProfile(photo, gamma22, table, gamma22);
    cmsSetProfileVersion(old.get(), 2.1);
    return old;
  }());
  QTest::newRow("tables that say otherwise than the matrix beside them")
      << withTables(matrixProfile(wide, gamma18, gamma18, gamma18));
}

void ColorAccuracyTest::isWithinOneStepOfTheReference() {
  QFETCH(const QByteArray, profile);
  const QImage colors = scatteredColors();
  const QImage found = convertedToSrgb(colors, ColorModel::rgb, profile);
  QCOMPARE(found.size(), colors.size());
  const Profile source(cmsOpenProfileFromMem(profile.constData(), static_cast<cmsUInt32Number>(profile.size())));
  const Profile srgb(cmsCreate_sRGBProfile());
  QVERIFY(source && srgb);
  cmsHTRANSFORM transform =
      cmsCreateTransform(source.get(), TYPE_RGBA_8, srgb.get(), TYPE_RGBA_8, INTENT_PERCEPTUAL, cmsFLAGS_COPY_ALPHA);
  QVERIFY(transform != nullptr);
  std::vector<uchar> wanted(static_cast<size_t>(colors.bytesPerLine()));
  int largest = 0;
  for (int y = 0; y < colors.height(); ++y) {
    cmsDoTransform(transform, colors.constScanLine(y), wanted.data(), static_cast<cmsUInt32Number>(colors.width()));
    const uchar* row = found.constScanLine(y);
    for (size_t at = 0; at < wanted.size(); ++at) largest = std::max(largest, std::abs(row[at] - wanted[at]));
  }
  cmsDeleteTransform(transform);
  QVERIFY2(largest <= 1, qPrintable(QString::number(largest)));
}

QTEST_GUILESS_MAIN(ColorAccuracyTest)
#include "ColorAccuracyTest.moc"
