// lumagrid-samples DIR: fills DIR with sample pictures of every format, orientation and proportion that the program
// opens. The same pictures and dates on every machine.

#include <QDateTime>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <array>
#include <cstdio>

#include "PictureFiles.h"
#include "Scenes.h"

namespace lumagrid::samples {

namespace {

enum class Variant { Plain, Progressive, Gray, Alpha, Animated, Turned, Damaged };

// One file to make. Its format follows from the ending of its name.
struct Sample {
  const char* name = nullptr;  // UTF-8
  Scene scene = nullptr;       // none for Alpha and Turned, which have their own
  HourName hour = HourName::Noon;
  int width = 1600;   // pixels, upright
  int height = 1067;  // pixels, upright
  Variant variant = Variant::Plain;
  int exifOrientation = 0;  // for Turned
};

// clang-format off: one sample a line, to be read as a table.
using enum HourName;
constexpr auto kSamples = std::to_array<Sample>({
    // Numbers that sort by value, not by letter.
    {"IMG_1.jpg", paintMountains, Sunset},
    {"IMG_2.jpg", paintLeaves, Autumn},
    {"IMG_3.jpg", paintSea, Gold},
    {"IMG_9.jpg", paintSea, Night},
    {"IMG_10.jpg", paintForest, Mint},
    {"IMG_11.jpg", paintMountains, Dawn},
    {"IMG_20.jpg", paintCity, Dusk},
    {"IMG_100.jpg", paintDunes, Noon},
    {"img_21.JPG", paintDunes, Gold},
    // The usual proportions of a camera, lying and standing.
    {"Above the clouds.jpg", paintMountains, Dawn},
    {"Autumn path.jpg", paintForest, Autumn},
    {"Bay at sunset.jpg", paintSea, Sunset},
    {"City lights.jpeg", paintCity, Night},
    {"Morning fog.jpg", paintForest, Dawn},
    {"Pines.jpg", paintForest, Dusk, 1067, 1600},
    {"Red leaves.jpg", paintLeaves, Sunset, 1067, 1600},
    {"Teal lake.jpg", paintSea, Mint},
    // Other proportions.
    {"Panorama of the range.jpg", paintMountains, Gold, 2400, 600},
    {"Square leaves.jpg", paintLeaves, Mint, 1200, 1200},
    {"Tall sky.jpg", paintSea, Ice, 500, 1600},
    // Names in many scripts, and what looks like markup.
    {"東京の夕暮れ.jpg", paintCity, Dusk},
    {"富士山.png", paintMountains, Rose, 960, 640},
    {"صورة الصحراء.jpg", paintDunes, Sunset},
    {"Осенний лес.jpg", paintForest, Autumn},
    {"🌸 spring 🌊.jpg", paintDunes, Rose},
    {"Crème brûlée — été.jpg", paintLeaves, Gold},
    {"<b>Bold & fine.jpg", paintMountains, Gold},
    {"A long walk along the ridge from the first hut to the last, with a halt at every spring, a look back at every "
     "bend, and a picture of the valley in the light of the late afternoon.jpg",
     paintMountains, Autumn},
    {"長い名前の写真、山の上から見た海と空と雲と町と川と橋と森と畑と道.jpg", paintSea, Dusk},
    // Every format that the program opens.
    {"Format avif.avif", paintMountains, Mint, 960, 640},
    {"Format avif alpha.avif", nullptr, Autumn, 640, 640, Variant::Alpha},
    {"Format bmp.bmp", paintDunes, Dawn, 640, 427},
    {"Format gif.gif", paintDunes, Gold, 640, 427},
    {"Format gif animated.gif", paintSea, Sunset, 480, 320, Variant::Animated},
    {"Format heic.heic", paintForest, Gold, 1200, 800},
    {"Format heif.heif", paintMountains, Mint, 1200, 800},
    {"Format jpeg gray.jpeg", paintMountains, Night, 1600, 1067, Variant::Gray},
    {"Format jpeg progressive.jpg", paintLeaves, Gold, 1600, 1067, Variant::Progressive},
    {"Format png.png", paintCity, Mint, 960, 640},
    {"Format png alpha.png", nullptr, Mint, 800, 800, Variant::Alpha},
    {"Format tif.tif", paintSea, Ice, 960, 640},
    {"Format tiff.tiff", paintLeaves, Dusk, 960, 640},
    {"Format webp.webp", paintForest, Rose, 1600, 1067},
    {"Format webp alpha.webp", nullptr, Rose, 800, 800, Variant::Alpha},
    // The same arrow, stored in all eight ways: each points up when shown.
    {"Orientation 1.jpg", nullptr, Noon, 900, 600, Variant::Turned, 1},
    {"Orientation 2.jpg", nullptr, Noon, 900, 600, Variant::Turned, 2},
    {"Orientation 3.jpg", nullptr, Noon, 900, 600, Variant::Turned, 3},
    {"Orientation 4.jpg", nullptr, Noon, 900, 600, Variant::Turned, 4},
    {"Orientation 5.jpg", nullptr, Noon, 900, 600, Variant::Turned, 5},
    {"Orientation 6.jpg", nullptr, Noon, 900, 600, Variant::Turned, 6},
    {"Orientation 7.jpg", nullptr, Noon, 900, 600, Variant::Turned, 7},
    {"Orientation 8.jpg", nullptr, Noon, 900, 600, Variant::Turned, 8},
    // A file that stops in the middle of its header.
    {"Damaged.jpg", paintMountains, Noon, 640, 427, Variant::Damaged},
});
// clang-format on

QImage painted(const Sample& sample, std::uint64_t seed) {
  const bool alpha = sample.variant == Variant::Alpha;
  QImage picture(sample.width, sample.height, alpha ? QImage::Format_ARGB32_Premultiplied : QImage::Format_RGB32);
  Random random(seed);
  if (alpha) {
    paintLeavesOnNothing(picture, hour(sample.hour), random);
  } else if (sample.variant == Variant::Turned) {
    paintUpArrow(picture, sample.exifOrientation);
  } else {
    sample.scene(picture, hour(sample.hour), random);
  }
  return sample.variant == Variant::Gray ? picture.convertToFormat(QImage::Format_Grayscale8) : picture;
}

QByteArray fileBytes(const Sample& sample, const QString& ending, std::uint64_t seed) {
  const QImage picture = painted(sample, seed);
  if (sample.variant == Variant::Animated) {
    return gifFile({picture, painted(sample, seed + 1), painted(sample, seed + 2)});
  }
  if (ending == QLatin1String("gif")) {
    return gifFile({picture});
  }
  if (ending == QLatin1String("avif")) {
    return heifFile(picture, HeifCodec::Av1);
  }
  if (ending == QLatin1String("heic") || ending == QLatin1String("heif")) {
    return heifFile(picture, HeifCodec::Hevc);
  }
  if (ending == QLatin1String("jpg") || ending == QLatin1String("jpeg")) {
    const QByteArray file =
        jpegFile(picture, sample.exifOrientation,
                 sample.variant == Variant::Progressive ? JpegKind::Progressive : JpegKind::Baseline);
    constexpr int kHalfAHeader = 300;  // bytes: past the tables' beginning, before any pixel
    return sample.variant == Variant::Damaged ? file.left(kHalfAHeader) : file;
  }
  constexpr int kQuality = 85;  // for WebP alone: below 100 means lossy; the others ignore it or compress losslessly
  const bool lossy = ending == QLatin1String("webp");
  return qtFile(picture, ending == QLatin1String("tif") ? "tiff" : ending.toLatin1().constData(),
                lossy ? kQuality : -1);
}

// Dates over six years, in an order that is neither that of the names nor its reverse.
QDateTime sampleDate(int index) {
  const QDateTime start(QDate(2018, 4, 2), QTime(7, 30), Qt::UTC);
  return start.addDays(index * qint64{37} % 101 * 23).addSecs(index * qint64{1733} % 40000);
}

bool writeSample(const QDir& folder, const Sample& sample, int index) {
  const QString name = QString::fromUtf8(sample.name);
  const QByteArray bytes = fileBytes(sample, QFileInfo(name).suffix().toLower(), static_cast<std::uint64_t>(index));
  QFile file(folder.filePath(name));
  if (bytes.isEmpty()) {
    std::fprintf(stderr, "lumagrid-samples: no encoder on this machine for %s\n", sample.name);
    return false;
  }
  if (!file.open(QIODevice::WriteOnly) || file.write(bytes) != bytes.size() || !file.flush() ||
      !file.setFileTime(sampleDate(index), QFileDevice::FileModificationTime)) {
    std::fprintf(stderr, "lumagrid-samples: %s: %s\n", qPrintable(file.fileName()), qPrintable(file.errorString()));
    return false;
  }
  return true;
}

int run(const QString& path) {
  const QDir folder(path);
  if (!folder.mkpath(QStringLiteral("."))) {
    std::fprintf(stderr, "lumagrid-samples: cannot make the folder %s\n", qPrintable(path));
    return 1;
  }
  bool complete = true;
  int index = 0;
  for (const Sample& sample : kSamples) {
    complete = writeSample(folder, sample, ++index) && complete;
  }
  return complete ? 0 : 1;
}

}  // namespace

}  // namespace lumagrid::samples

int main(int argc, char** argv) {
  if (argc != 2) {
    std::fprintf(stderr, "usage: lumagrid-samples DIR\n");
    return 2;
  }
  return lumagrid::samples::run(QFile::decodeName(argv[1]));
}
