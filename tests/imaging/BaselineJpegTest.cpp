#include <turbojpeg.h>

#include <memory>

#include "BaselineJpegEighth.h"
#include "JpegReader.h"
#include "JpegStrips.h"
#include "SamplePictures.h"
#include "Table.h"

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
    addRows<JpegSpec>({
        {"full color", {.sampling = {{1, 1}, {1, 1}, {1, 1}}}},
        {"color halved both ways", {}},
        {"color quartered across and halved down", {.sampling = {{4, 2}, {1, 1}, {1, 1}}}},
        {"both colors in their own way", {.sampling = {{2, 2}, {1, 2}, {2, 1}}}},
        {"brightness coarser than color", {.sampling = {{1, 1}, {2, 2}, {2, 2}}}},
        {"full color in blocks of four", {.sampling = {{2, 1}, {2, 1}, {2, 1}}}},
        {"gray with factors that mean nothing", {.colors = JCS_GRAYSCALE, .sampling = {{2, 2}}}},
        {"red, green and blue", {.colors = JCS_RGB}},
        {"CMYK", {.colors = JCS_CMYK}},
        {"YCCK", {.colors = JCS_YCCK}},
        {"restarts within rows", {.restartInterval = 3}},
        {"a restart after every unit", {.sampling = {{1, 1}, {1, 1}, {1, 1}}, .restartInterval = 1}},
        {"tables made for the picture", {.coding = [](j_compress_ptr jpeg) { jpeg->optimize_coding = TRUE; }}},
    });
  }

  // Broken bytes included: flipped bits may make another whole picture.
  void givesThePixelsOfTheGeneralDecoder() {
    QFETCH(JpegSpec, row);
    std::minstd_rand random(11);
    int acceptedCount = 0;
    for (const QSize size : {QSize(5, 3), QSize(8, 8), QSize(17, 33), QSize(250, 131)}) {
      for (const double roughness : {0.0, 0.1, 1.0}) {
        const QImage image = samples::rough(size, roughness);
        for (const int quality : {1, 20, 60, 85, 95, 100}) {
          row.quality = quality;
          const QByteArray file = samples::jpeg(image, row);
          const QImage general = generalPicture(8, file, row);
          QVERIFY(!general.isNull());
          QCOMPARE(quickAtEighth(file), general);
          for (int round = 0; round < 40; ++round) {
            const QByteArray broken = samples::broken(file, file.indexOf("\xff\xda"), random);
            const QImage quick = quickAtEighth(broken);
            if (quick.isNull()) continue;
            ++acceptedCount;
            const QImage wanted = generalPicture(8, broken, row);
            QVERIFY2(wanted.isNull() || quick == wanted, qPrintable(QString::number(round)));
          }
        }
      }
    }
    QVERIFY2(acceptedCount > 50, qPrintable(QString::number(acceptedCount)));
  }

  void needsNotAllScansOfAProgressiveFile_data() { givesThePixelsOfTheGeneralDecoder_data(); }

  // Flipped bits and ends that are missing included.
  void needsNotAllScansOfAProgressiveFile() {
    QFETCH(JpegSpec, row);
    row.coding = &jpeg_simple_progression;
    const QByteArray file = samples::jpeg(samples::rough({250, 131}, 0.3), row);
    QCOMPARE(readAtEighth(file), generalPicture(8, file, row));
    std::minstd_rand random(7);
    int damagedCount = 0;
    for (int round = 0; round < 100; ++round) {
      const QByteArray damaged = round % 2 ? samples::broken(file, file.indexOf("\xff\xda"), random)
                                           : file.first(file.size() * (round + 1) / 102);
      const QImage wanted = generalPicture(8, damaged, row, Damage::tolerated);
      if (wanted.isNull()) continue;
      ++damagedCount;
      QVERIFY2(readAtEighth(damaged) == wanted, qPrintable(QString::number(round)));
    }
    QVERIFY2(damagedCount > 10, qPrintable(QString::number(damagedCount)));
  }

  void decodesStripsSideBySide_data() { givesThePixelsOfTheGeneralDecoder_data(); }

  // The colors of neighboring rows are mixed where they are enlarged, across the cuts too.
  void decodesStripsSideBySide() {
    QFETCH(JpegSpec, row);
    const QImage image = samples::rough({250, 331}, 0.3);
    QVERIFY(row.restartInterval > 0 || readInStrips(samples::jpeg(image, row), 3).isNull());
    std::minstd_rand random(5);
    int acceptedCount = 0;
    for (const unsigned interval : {1, 3, 12}) {
      row.restartInterval = interval;
      const QByteArray file = samples::jpeg(image, row);
      const QImage whole = generalPicture(1, file, row);
      for (const int strips : {2, 3, 100}) QCOMPARE(readInStrips(file, strips), whole);
      QVERIFY(readInStrips(file, 1).isNull());
      for (int round = 0; round < 100; ++round) {
        const QByteArray broken = samples::broken(file, file.indexOf("\xff\xda"), random);
        const QImage quick = readInStrips(broken, 3);
        if (quick.isNull()) continue;
        ++acceptedCount;
        QCOMPARE(quick, generalPicture(1, broken, row, Damage::tolerated));
      }
    }
    QVERIFY2(acceptedCount > 10, qPrintable(QString::number(acceptedCount)));
  }

  void leavesTheRestToTheGeneralDecoder_data() {
    static constexpr jpeg_scan_info kScans[] = {{1, {0}, 0, 63, 0, 0}, {1, {1}, 0, 63, 0, 0}, {1, {2}, 0, 63, 0, 0}};
    const auto useScans = [](j_compress_ptr jpeg) {
      jpeg->scan_info = kScans;
      jpeg->num_scans = 3;
    };
    const QImage image = samples::rough({250, 131}, 0.1);
    const QByteArray file = samples::jpeg(image);
    const QByteArray restarts = samples::jpeg(image, {.restartInterval = 4});
    addRows<QByteArray>({{"progressive", samples::jpeg(image, {.coding = &jpeg_simple_progression})},
                         {"a scan for each component", samples::jpeg(image, {.coding = useScans})},
                         {"cut short", file.left(file.size() / 2)},
                         {"without its end", file.chopped(2)},
                         {"bytes between data and end", QByteArray(file).insert(file.size() - 2, "abc")},
                         {"restarts out of order", QByteArray(restarts).replace("\xff\xd2", "\xff\xd5")},
                         {"a restart that is missing", QByteArray(restarts).replace("\xff\xd1", "")}});
  }

  void leavesTheRestToTheGeneralDecoder() {
    QFETCH(const QByteArray, row);
    QVERIFY(quickAtEighth(row).isNull());
  }
};

QTEST_GUILESS_MAIN(BaselineJpegTest)
#include "BaselineJpegTest.moc"
