#include <turbojpeg.h>

#include <QTest>
#include <memory>
#include <random>

#include "BaselineJpegEighth.h"
#include "JpegWriter.h"

using namespace lumagrid;
using samples::JpegSpec;

// The quick way to an eighth of a JPEG picture gives the pixels of the general decoder, or none.
class BaselineJpegTest : public QObject {
  Q_OBJECT

 private Q_SLOTS:
  void givesThePixelsOfTheGeneralDecoder_data();
  void givesThePixelsOfTheGeneralDecoder();
  void leavesTheRestToTheGeneralDecoder_data();
  void leavesTheRestToTheGeneralDecoder();
  void neverTrustsBrokenBytes_data();
  void neverTrustsBrokenBytes();
};

namespace {

struct General {
  QImage pixels;
  bool isClean = false;  // no error, no warning
};

General generalAtEighth(const QByteArray& file, bool isInks) {
  const std::unique_ptr<void, decltype(&tjDestroy)> handle(tjInitDecompress(), &tjDestroy);
  const auto* bytes = reinterpret_cast<const unsigned char*>(file.constData());
  const auto byteCount = static_cast<unsigned long>(file.size());
  QSize size(0, 0);
  int subsampling = 0;
  int colors = 0;
  tjDecompressHeader3(handle.get(), bytes, byteCount, &size.rwidth(), &size.rheight(), &subsampling, &colors);
  if (size.isEmpty()) return {};
  General general;
  general.pixels = QImage((size.width() + 7) / 8, (size.height() + 7) / 8, QImage::Format_RGBX8888);
  if (general.pixels.isNull()) return {};
  const int status = tjDecompress2(handle.get(), bytes, byteCount, general.pixels.bits(), general.pixels.width(),
                                   static_cast<int>(general.pixels.bytesPerLine()), general.pixels.height(),
                                   isInks ? TJPF_CMYK : TJPF_RGBA, TJFLAG_LIMITSCANS);
  general.isClean = status == 0;
  return general;
}

bool isSame(const QImage& one, const QImage& other) {
  if (one.size() != other.size()) return false;
  for (int y = 0; y < one.height(); ++y) {
    if (std::memcmp(one.constScanLine(y), other.constScanLine(y), static_cast<size_t>(one.width()) * 4) != 0) {
      return false;
    }
  }
  return true;
}

JpegSpec sampled(std::vector<std::pair<int, int>> sampling) {
  JpegSpec spec;
  spec.sampling = std::move(sampling);
  return spec;
}

JpegSpec colored(JpegSpec::Colors colors, std::vector<std::pair<int, int>> sampling) {
  JpegSpec spec = sampled(std::move(sampling));
  spec.colors = colors;
  return spec;
}

JpegSpec restarting(int interval, std::vector<std::pair<int, int>> sampling) {
  JpegSpec spec = sampled(std::move(sampling));
  spec.restartInterval = interval;
  return spec;
}

}  // namespace

Q_DECLARE_METATYPE(samples::JpegSpec)

void BaselineJpegTest::givesThePixelsOfTheGeneralDecoder_data() {
  QTest::addColumn<JpegSpec>("spec");
  using Colors = JpegSpec::Colors;
  QTest::newRow("full colour") << sampled({{1, 1}, {1, 1}, {1, 1}});
  QTest::newRow("colour halved across") << sampled({{2, 1}, {1, 1}, {1, 1}});
  QTest::newRow("colour halved both ways") << sampled({{2, 2}, {1, 1}, {1, 1}});
  QTest::newRow("colour halved down") << sampled({{1, 2}, {1, 1}, {1, 1}});
  QTest::newRow("colour quartered across") << sampled({{4, 1}, {1, 1}, {1, 1}});
  QTest::newRow("colour quartered across and halved down") << sampled({{4, 2}, {1, 1}, {1, 1}});
  QTest::newRow("colour halved across and quartered down") << sampled({{2, 4}, {1, 1}, {1, 1}});
  QTest::newRow("both colours in their own way") << sampled({{2, 2}, {1, 2}, {2, 1}});
  QTest::newRow("brightness coarser than colour") << sampled({{1, 1}, {2, 2}, {2, 2}});
  QTest::newRow("full colour in blocks of four") << sampled({{2, 1}, {2, 1}, {2, 1}});
  QTest::newRow("gray") << colored(Colors::gray, {{1, 1}});
  QTest::newRow("gray with factors that mean nothing") << colored(Colors::gray, {{2, 2}});
  QTest::newRow("red, green and blue") << colored(Colors::rgb, {{1, 1}, {1, 1}, {1, 1}});
  QTest::newRow("inks") << colored(Colors::cmyk, {{1, 1}, {1, 1}, {1, 1}, {1, 1}});
  QTest::newRow("inks as brightness and colour") << colored(Colors::ycck, {{2, 2}, {1, 1}, {1, 1}, {2, 2}});
  QTest::newRow("restarts within rows") << restarting(3, {{2, 2}, {1, 1}, {1, 1}});
  QTest::newRow("a restart after every unit") << restarting(1, {{1, 1}, {1, 1}, {1, 1}});
  JpegSpec optimized = sampled({{2, 2}, {1, 1}, {1, 1}});
  optimized.coding = JpegSpec::Coding::optimizedHuffman;
  QTest::newRow("tables made for the picture") << optimized;
}

void BaselineJpegTest::givesThePixelsOfTheGeneralDecoder() {
  QFETCH(JpegSpec, spec);
  const bool isInks = spec.colors == JpegSpec::Colors::cmyk || spec.colors == JpegSpec::Colors::ycck;
  for (const QSize size : {QSize(5, 3), QSize(8, 8), QSize(17, 33), QSize(250, 131)}) {
    for (const double roughness : {0.0, 0.1, 1.0}) {
      spec.size = size;
      spec.roughness = roughness;
      for (const int quality : {1, 20, 60, 85, 95, 100}) {
        spec.quality = quality;
        const QByteArray file = samples::writtenJpeg(spec);
        const General general = generalAtEighth(file, isInks);
        QVERIFY(general.isClean);
        const QImage quick = baselineJpegAtEighth(file);
        const QString place =
            u"%1 × %2, roughness %3, quality %4"_qs.arg(size.width()).arg(size.height()).arg(roughness).arg(quality);
        QVERIFY2(!quick.isNull(), qPrintable(place));
        QVERIFY2(isSame(quick, general.pixels), qPrintable(place));
      }
    }
  }
}

void BaselineJpegTest::leavesTheRestToTheGeneralDecoder_data() {
  QTest::addColumn<QByteArray>("file");
  const JpegSpec plain = sampled({{2, 2}, {1, 1}, {1, 1}});
  const QByteArray file = samples::writtenJpeg(plain);
  JpegSpec progressive = plain;
  progressive.coding = JpegSpec::Coding::progressive;
  QTest::newRow("progressive") << samples::writtenJpeg(progressive);
  JpegSpec arithmetic = plain;
  arithmetic.coding = JpegSpec::Coding::arithmetic;
  QTest::newRow("arithmetic") << samples::writtenJpeg(arithmetic);
  JpegSpec separate = plain;
  separate.coding = JpegSpec::Coding::scanPerComponent;
  QTest::newRow("a scan for each component") << samples::writtenJpeg(separate);
  QTest::newRow("four pixels") << samples::writtenJpeg([&] {
    JpegSpec tiny = plain;
    tiny.size = QSize(2, 2);
    return tiny;
  }());
  QTest::newRow("cut short") << file.left(file.size() / 2);
  QTest::newRow("without its end") << file.chopped(2);
  QTest::newRow("bytes between data and end") << QByteArray(file).insert(file.size() - 2, "abc");
  const QByteArray restarts = samples::writtenJpeg(restarting(4, {{1, 1}, {1, 1}, {1, 1}}));
  QTest::newRow("restarts out of order") << QByteArray(restarts).replace("\xff\xd2", "\xff\xd5");
  QTest::newRow("a restart that is missing") << QByteArray(restarts).replace("\xff\xd1", "");
  QTest::newRow("nothing") << QByteArray();
  QTest::newRow("only a beginning") << file.left(3);
}

void BaselineJpegTest::leavesTheRestToTheGeneralDecoder() {
  QFETCH(const QByteArray, file);
  QVERIFY(baselineJpegAtEighth(file).isNull());
}

void BaselineJpegTest::neverTrustsBrokenBytes_data() {
  QTest::addColumn<JpegSpec>("spec");
  QTest::newRow("colour halved both ways") << sampled({{2, 2}, {1, 1}, {1, 1}});
  QTest::newRow("restarts") << restarting(2, {{2, 1}, {1, 1}, {1, 1}});
  QTest::newRow("inks") << colored(JpegSpec::Colors::cmyk, {{1, 1}, {1, 1}, {1, 1}, {1, 1}});
  QTest::newRow("gray") << colored(JpegSpec::Colors::gray, {{1, 1}});
}

void BaselineJpegTest::neverTrustsBrokenBytes() {
  QFETCH(JpegSpec, spec);
  spec.size = QSize(61, 45);
  spec.quality = 90;
  const QByteArray fine = samples::writtenJpeg(spec);
  spec.quality = 30;
  const QByteArray coarse = samples::writtenJpeg(spec);
  std::minstd_rand random(11);
  const auto below = [&random](qsizetype limit) { return static_cast<qsizetype>(random()) % limit; };
  int acceptedCount = 0;
  for (int round = 0; round < 4000; ++round) {
    QByteArray broken = round % 2 == 0 ? fine : coarse;
    const qsizetype scan = broken.indexOf("\xff\xda");
    for (qsizetype hits = 1 + below(3); hits > 0; --hits) {
      const qsizetype at = below(4) == 0 ? below(scan) : scan + below(broken.size() - scan);
      broken[at] = static_cast<char>(below(3) == 0 ? 0xff : random());
    }
    if (below(16) == 0) broken.truncate(below(broken.size()));
    const QImage quick = baselineJpegAtEighth(broken);
    if (quick.isNull()) continue;
    ++acceptedCount;
    const General general = generalAtEighth(broken, spec.colors == JpegSpec::Colors::cmyk);
    QVERIFY2(!general.isClean || isSame(quick, general.pixels), qPrintable(QString::number(round)));
  }
  // Flipped bits that make another whole picture are part of the trial.
  QVERIFY(acceptedCount > 50);
}

QTEST_GUILESS_MAIN(BaselineJpegTest)
#include "BaselineJpegTest.moc"
