#include <turbojpeg.h>

#include <QTest>
#include <memory>

#include "BaselineJpegEighth.h"
#include "JpegReader.h"
#include "JpegStrips.h"
#include "SamplePictures.h"

using namespace lumagrid;
using samples::JpegSpec;

namespace {

enum class Damage { refused, tolerated };

// The picture of the general decoder, of an eighth of the size or whole; null where it has an error or, unless that is
// tolerated, a warning.
QImage generalPicture(int scale, const QByteArray& file, const JpegSpec& spec, Damage damage = Damage::refused) {
  const bool isCmyk = spec.colors == JCS_CMYK || spec.colors == JCS_YCCK;
  const std::unique_ptr<void, decltype(&tjDestroy)> handle(tjInitDecompress(), &tjDestroy);
  const auto* bytes = reinterpret_cast<const unsigned char*>(file.constData());
  const auto byteCount = static_cast<unsigned long>(file.size());
  QSize size(0, 0);
  int subsampling = 0;
  int colors = 0;
  tjDecompressHeader3(handle.get(), bytes, byteCount, &size.rwidth(), &size.rheight(), &subsampling, &colors);
  if (size.isEmpty()) return {};
  const auto decodedOver = [&](uint fill) {
    QImage pixels((size.width() + scale - 1) / scale, (size.height() + scale - 1) / scale, QImage::Format_RGBX8888);
    pixels.fill(fill);
    const int status = tjDecompress2(handle.get(), bytes, byteCount, pixels.bits(), pixels.width(),
                                     static_cast<int>(pixels.bytesPerLine()), pixels.height(),
                                     isCmyk ? TJPF_CMYK : TJPF_RGBA, TJFLAG_LIMITSCANS);
    return status == 0 || damage == Damage::tolerated ? pixels : QImage();
  };
  // Its status does not tell an error after a warning from the warning; what it has not written does.
  const QImage pixels = decodedOver(0);
  return damage == Damage::refused || pixels == decodedOver(~0U) ? pixels : QImage();
}

// By a reader that has read the header and is scaled.
template <typename Decode>
QImage readPicture(int eighths, const QByteArray& file, Decode decode) {
  JpegReader reader(file);
  return reader.readHeader(JpegReader::Markers::skipped) && reader.scaleTo(eighths) ? decode(reader) : QImage();
}

QImage quickAtEighth(const QByteArray& file) {
  return readPicture(1, file, [](const JpegReader& reader) { return baselineJpegAtEighth(reader); });
}

QImage readAtEighth(const QByteArray& file) {
  return readPicture(1, file, [](JpegReader& reader) { return reader.decode(); });
}

QImage readInStrips(const QByteArray& file, int strips) {
  return readPicture(8, file, [strips](const JpegReader& reader) { return jpegInStrips(reader, strips); });
}

}  // namespace

// The quick ways to a JPEG picture give the pixels of the general decoder, or none.
class BaselineJpegTest : public QObject {
  Q_OBJECT

 private Q_SLOTS:
  void givesThePixelsOfTheGeneralDecoder_data() {
    QTest::addColumn<JpegSpec>("spec");
    const auto row = [](const char* name, const JpegSpec& spec) { QTest::newRow(name) << spec; };
    row("full colour", {.sampling = {{1, 1}, {1, 1}, {1, 1}}});
    row("colour halved both ways", {});
    row("colour quartered across and halved down", {.sampling = {{4, 2}, {1, 1}, {1, 1}}});
    row("both colours in their own way", {.sampling = {{2, 2}, {1, 2}, {2, 1}}});
    row("brightness coarser than colour", {.sampling = {{1, 1}, {2, 2}, {2, 2}}});
    row("full colour in blocks of four", {.sampling = {{2, 1}, {2, 1}, {2, 1}}});
    row("gray with factors that mean nothing", {.colors = JCS_GRAYSCALE, .sampling = {{2, 2}}});
    row("red, green and blue", {.colors = JCS_RGB});
    row("CMYK", {.colors = JCS_CMYK});
    row("YCCK", {.colors = JCS_YCCK});
    row("restarts within rows", {.restartInterval = 3});
    row("a restart after every unit", {.sampling = {{1, 1}, {1, 1}, {1, 1}}, .restartInterval = 1});
    row("tables made for the picture", {.coding = [](j_compress_ptr jpeg) { jpeg->optimize_coding = TRUE; }});
  }

  // Broken bytes included: flipped bits may make another whole picture.
  void givesThePixelsOfTheGeneralDecoder() {
    QFETCH(JpegSpec, spec);
    std::minstd_rand random(11);
    int acceptedCount = 0;
    for (const QSize size : {QSize(5, 3), QSize(8, 8), QSize(17, 33), QSize(250, 131)}) {
      for (const double roughness : {0.0, 0.1, 1.0}) {
        const QImage image = samples::rough(size, roughness);
        for (const int quality : {1, 20, 60, 85, 95, 100}) {
          spec.quality = quality;
          const QByteArray file = samples::jpeg(image, spec);
          const QImage general = generalPicture(8, file, spec);
          QVERIFY(!general.isNull());
          QCOMPARE(quickAtEighth(file), general);
          for (int round = 0; round < 40; ++round) {
            const QByteArray broken = samples::broken(file, file.indexOf("\xff\xda"), random);
            const QImage quick = quickAtEighth(broken);
            if (quick.isNull()) continue;
            ++acceptedCount;
            const QImage wanted = generalPicture(8, broken, spec);
            QVERIFY2(wanted.isNull() || quick == wanted, qPrintable(QString::number(round)));
          }
        }
      }
    }
    QVERIFY2(acceptedCount > 50, qPrintable(QString::number(acceptedCount)));
  }

  // Flipped bits and ends that are missing included.
  void needsNotAllScansOfAProgressiveFile() {
    std::minstd_rand random(7);
    const QImage image = samples::rough({250, 131}, 0.3);
    int damagedCount = 0;
    for (JpegSpec spec : {JpegSpec{},
                          {.sampling = {{1, 1}, {1, 1}, {1, 1}}},
                          {.sampling = {{2, 1}, {1, 1}, {1, 1}}},
                          {.sampling = {{4, 2}, {1, 1}, {1, 1}}},
                          {.colors = JCS_GRAYSCALE, .sampling = {{1, 1}}},
                          {.colors = JCS_YCCK},
                          {.restartInterval = 3}}) {
      spec.coding = &jpeg_simple_progression;
      const QByteArray file = samples::jpeg(image, spec);
      QCOMPARE(readAtEighth(file), generalPicture(8, file, spec));
      for (int round = 0; round < 100; ++round) {
        const QByteArray damaged = round % 2 ? samples::broken(file, file.indexOf("\xff\xda"), random)
                                             : file.first(file.size() * (round + 1) / 102);
        const QImage wanted = generalPicture(8, damaged, spec, Damage::tolerated);
        if (wanted.isNull()) continue;
        ++damagedCount;
        QVERIFY2(readAtEighth(damaged) == wanted, qPrintable(QString::number(round)));
      }
    }
    QVERIFY2(damagedCount > 100, qPrintable(QString::number(damagedCount)));
  }

  // The colours of neighbouring rows are mixed where they are enlarged, across the cuts too.
  void decodesStripsSideBySide_data() {
    QTest::addColumn<JpegSpec>("spec");
    const auto row = [](const char* name, const JpegSpec& spec) { QTest::newRow(name) << spec; };
    row("colour halved both ways", {.restartInterval = 2});
    row("colour halved down", {.sampling = {{1, 2}, {1, 1}, {1, 1}}, .restartInterval = 4});
    row("colour halved across", {.sampling = {{2, 1}, {1, 1}, {1, 1}}, .restartInterval = 1});
    row("full colour, restarts within rows", {.sampling = {{1, 1}, {1, 1}, {1, 1}}, .restartInterval = 12});
    row("gray, as many units as a row has", {.colors = JCS_GRAYSCALE, .sampling = {{2, 2}}, .restartInterval = 32});
    row("colour quartered across and halved down", {.sampling = {{4, 2}, {1, 1}, {1, 1}}, .restartInterval = 3});
    row("YCCK", {.colors = JCS_YCCK, .restartInterval = 2});
  }

  void decodesStripsSideBySide() {
    QFETCH(JpegSpec, spec);
    const QImage image = samples::rough({250, 331}, 0.3);
    const QByteArray file = samples::jpeg(image, spec);
    const QImage whole = generalPicture(1, file, spec);
    for (const int strips : {2, 3, 100}) QCOMPARE(readInStrips(file, strips), whole);
    QVERIFY(readInStrips(file, 1).isNull());
    std::minstd_rand random(5);
    int acceptedCount = 0;
    for (int round = 0; round < 300; ++round) {
      const QByteArray broken = samples::broken(file, file.indexOf("\xff\xda"), random);
      const QImage quick = readInStrips(broken, 3);
      if (quick.isNull()) continue;
      ++acceptedCount;
      QCOMPARE(quick, generalPicture(1, broken, spec, Damage::tolerated));
    }
    QVERIFY2(acceptedCount > 10, qPrintable(QString::number(acceptedCount)));
    spec.restartInterval = 0;
    QVERIFY(readInStrips(samples::jpeg(image, spec), 3).isNull());
  }

  void leavesTheRestToTheGeneralDecoder_data() {
    QTest::addColumn<QByteArray>("file");
    const QImage image = samples::rough({250, 131}, 0.1);
    const QByteArray file = samples::jpeg(image);
    QTest::newRow("progressive") << samples::jpeg(image, {.coding = &jpeg_simple_progression});
    QTest::newRow("a scan for each component")
        << samples::jpeg(image, {.coding = [](j_compress_ptr jpeg) {
                           static constexpr jpeg_scan_info kScans[] = {
                               {1, {0}, 0, 63, 0, 0}, {1, {1}, 0, 63, 0, 0}, {1, {2}, 0, 63, 0, 0}};
                           jpeg->scan_info = kScans;
                           jpeg->num_scans = 3;
                         }});
    QTest::newRow("cut short") << file.left(file.size() / 2);
    QTest::newRow("without its end") << file.chopped(2);
    QTest::newRow("bytes between data and end") << QByteArray(file).insert(file.size() - 2, "abc");
    const QByteArray restarts = samples::jpeg(image, {.restartInterval = 4});
    QTest::newRow("restarts out of order") << QByteArray(restarts).replace("\xff\xd2", "\xff\xd5");
    QTest::newRow("a restart that is missing") << QByteArray(restarts).replace("\xff\xd1", "");
  }

  void leavesTheRestToTheGeneralDecoder() {
    QFETCH(const QByteArray, file);
    QVERIFY(quickAtEighth(file).isNull());
  }
};

QTEST_GUILESS_MAIN(BaselineJpegTest)
#include "BaselineJpegTest.moc"
