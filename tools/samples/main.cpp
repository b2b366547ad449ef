// lumagrid-samples DIR: fills DIR with sample pictures of many formats, proportions and names. The same pictures and
// dates on every machine.

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

// One file to make. Its format follows from the ending of its name.
struct Sample {
  const char* name = nullptr;  // UTF-8
  Scene scene = nullptr;
  HourName hour = HourName::Noon;
  int width = 1600;   // pixels, upright
  int height = 1067;  // pixels, upright
  FileOptions options = {};
};

// clang-format off: one sample a line, to be read as a table.
using enum HourName;
constexpr auto kSamples = std::to_array<Sample>({
    // Numbers that sort by value, not by letter.
    {"IMG_1.jpg", paintMountains, Sunset},
    {"IMG_2.jpg", paintLeaves, Autumn},
    {"IMG_3.jpg", paintSea, Gold},
    {"IMG_10.jpg", paintForest, Mint},
    {"IMG_20.jpg", paintCity, Dusk},
    {"img_21.JPG", paintMountains, Noon},
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
    {"صورة البحر.jpg", paintSea, Dusk},
    {"Осенний лес.jpg", paintForest, Autumn},
    {"🌸 spring 🌊.jpg", paintMountains, Rose},
    {"Crème brûlée — été.jpg", paintLeaves, Gold},
    {"<b>Bold & fine.jpg", paintCity, Mint},
    {"A long walk along the ridge from the first hut to the last, with a halt at every spring, a look back at every "
     "bend, and a picture of the valley in the light of the late afternoon.jpg",
     paintMountains, Gold},
    // Every format that can be written here.
    {"Format avif alpha.avif", paintLeavesOnNothing, Autumn, 640, 640},
    {"Format bmp.bmp", paintMountains, Ice, 640, 427},
    {"Format heic.heic", paintForest, Gold, 1200, 800},
    {"Format jpeg progressive.jpg", paintSea, Rose, 1600, 1067, {.isProgressive = true}},
    {"Format png alpha.png", paintLeavesOnNothing, Mint, 800, 800},
    {"Format tiff.tiff", paintLeaves, Dusk, 960, 640},
    {"Format webp.webp", paintForest, Rose},
    // Stored as the sensor lay: each stands upright when shown.
    {"Turned left.jpg", paintCity, Gold, 900, 600, {.turn = 90}},
    {"Turned over.jpg", paintCity, Dawn, 900, 600, {.turn = 180}},
    {"Turned right.jpg", paintCity, Rose, 900, 600, {.turn = 270}},
    {"Damaged.jpg", nullptr},
});
// clang-format on

QByteArray fileBytes(const Sample& sample, const QByteArray& ending, std::uint64_t seed) {
  if (!sample.scene) return "\xff\xd8\xff";  // the beginning of a JPEG file, and no more
  const bool alpha = sample.scene == paintLeavesOnNothing;
  QImage picture(sample.width, sample.height, alpha ? QImage::Format_ARGB32_Premultiplied : QImage::Format_RGB32);
  Random random(seed);
  sample.scene(picture, hour(sample.hour), random);
  if (ending == "avif") return heifFile(picture, HeifCodec::Av1);
  if (ending == "heic") return heifFile(picture, HeifCodec::Hevc);
  return qtFile(picture, ending == "jpg" ? "jpeg" : ending, sample.options);
}

// Dates over six years, in an order that is neither that of the names nor its reverse.
QDateTime sampleDate(int index) {
  const QDateTime start(QDate(2018, 4, 2), QTime(7, 30), Qt::UTC);
  return start.addDays(index * qint64{37} % 101 * 23).addSecs(index * qint64{1733} % 40000);
}

bool writeSample(const QDir& folder, const Sample& sample, int index) {
  const QString name = QString::fromUtf8(sample.name);
  const QByteArray bytes =
      fileBytes(sample, QFileInfo(name).suffix().toLower().toLatin1(), static_cast<std::uint64_t>(index));
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
