// lumagrid-samples DIR: fills DIR with sample pictures of every format, orientation and proportion that the program
// opens. The same pictures and dates on every machine.

#include <QDateTime>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <cstdio>

#include "PictureFiles.h"
#include "SampleList.h"

namespace lumagrid::samples {

namespace {

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
  return sample.variant == Variant::Grey ? picture.convertToFormat(QImage::Format_Grayscale8) : picture;
}

QList<QImage> sunsetFrames(const Sample& sample) {
  constexpr int kFrames = 8;
  QList<QImage> frames;
  for (int i = 0; i < kFrames; ++i) {
    QImage frame(sample.width, sample.height, QImage::Format_RGB32);
    paintSinkingSun(frame, hour(sample.hour), static_cast<double>(i) / (kFrames - 1));
    frames.append(frame);
  }
  return frames;
}

QByteArray fileBytes(const Sample& sample, const QString& ending, std::uint64_t seed) {
  if (sample.variant == Variant::Animated) {
    return gifFile(sunsetFrames(sample));
  }
  const QImage picture = painted(sample, seed);
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
  for (const Sample& sample : sampleList()) {
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
