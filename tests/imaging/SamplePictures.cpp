#include "SamplePictures.h"

#include <zlib.h>

#include <QDir>
#include <QTemporaryFile>
#include <cmath>
#include <cstdlib>

namespace samples {
QImage filled(const QColor& color, QSize size, QImage::Format format) {
  QImage image(size, format);
  image.fill(color);
  return image;
}

QImage rough(QSize size, double roughness) {
  QImage image(size, QImage::Format_RGBX8888);
  std::minstd_rand random(3);
  for (int y = 0; y < size.height(); ++y) {
    uchar* to = image.scanLine(y);
    for (int x = 0; x < size.width(); ++x) {
      for (int phase = 1; phase <= 4; ++phase) {
        const double smooth = 127.5 + 120 * std::sin(x * 0.021 * phase + y * 0.034) * std::cos(y * 0.017 * phase);
        const auto noise = static_cast<double>(random() % 256);
        *to++ = static_cast<uchar>(smooth * (1 - roughness) + noise * roughness);
      }
    }
  }
  return image;
}

QByteArray jpeg(const QImage& image, const JpegSpec& spec) {
  const QImage pixels = image.convertToFormat(QImage::Format_RGBX8888);
  jpeg_compress_struct jpeg{};
  jpeg_error_mgr errors{};
  jpeg.err = jpeg_std_error(&errors);  // ends the program: what is asked for here can be written
  jpeg_create_compress(&jpeg);
  unsigned char* written = nullptr;
  unsigned long size = 0;
  jpeg_mem_dest(&jpeg, &written, &size);
  jpeg.image_width = static_cast<JDIMENSION>(pixels.width());
  jpeg.image_height = static_cast<JDIMENSION>(pixels.height());
  jpeg.input_components = 4;
  jpeg.in_color_space = spec.colors == JCS_CMYK || spec.colors == JCS_YCCK ? JCS_CMYK : JCS_EXT_RGBX;
  jpeg_set_defaults(&jpeg);
  jpeg_set_colorspace(&jpeg, spec.colors);
  jpeg_set_quality(&jpeg, spec.quality, TRUE);
  for (size_t index = 0; index < spec.sampling.size(); ++index) {
    jpeg.comp_info[index].h_samp_factor = spec.sampling[index].first;
    jpeg.comp_info[index].v_samp_factor = spec.sampling[index].second;
  }
  jpeg.restart_interval = spec.restartInterval;
  if (spec.coding != nullptr) spec.coding(&jpeg);
  jpeg_start_compress(&jpeg, TRUE);
  for (int y = 0; y < pixels.height(); ++y) {
    auto* row = const_cast<uchar*>(pixels.constScanLine(y));
    jpeg_write_scanlines(&jpeg, &row, 1);
  }
  jpeg_finish_compress(&jpeg);
  jpeg_destroy_compress(&jpeg);
  QByteArray bytes(reinterpret_cast<const char*>(written), static_cast<qsizetype>(size));
  std::free(written);
  return bytes;
}

QByteArray withSegment(const QByteArray& jpeg, unsigned char marker, const QByteArray& content) {
  const QByteArray header = big<quint8>(0xff) + big<quint8>(marker);
  return QByteArray(jpeg).insert(2, header + big<quint16>(content.size() + 2) + content);
}

QByteArray withProfile(const QByteArray& jpeg, const QByteArray& profile) {
  // Two chunks, the second one first: their numbers count, not their places.
  const qsizetype half = profile.size() / 2;
  const QByteArray name("ICC_PROFILE\0", 12);
  const QByteArray withFirst = withSegment(jpeg, 0xe2, name + "\x01\x02" + profile.left(half));
  return withSegment(withFirst, 0xe2, name + "\x02\x02" + profile.mid(half));
}

QByteArray exif(int orientation) {
  const QByteArray beforeValue("Exif\0\0II*\0\x08\0\0\0\x01\0\x12\x01\x03\0\x01\0\0\0", 24);
  return beforeValue + static_cast<char>(orientation) + QByteArray(7, '\0');
}

QByteArray withChunk(const QByteArray& png, const QByteArray& name, const QByteArray& content) {
  const QByteArray checked = name + content;
  const auto sum = crc32(0, reinterpret_cast<const Bytef*>(checked.constData()), static_cast<uInt>(checked.size()));
  constexpr qsizetype kAfterHeader = 8 + 25;
  return QByteArray(png).insert(kAfterHeader, big<quint32>(content.size()) + checked + big<quint32>(sum));
}

QByteArray tiff(std::map<quint16, quint32> fields, const QByteArray& samples, const QByteArray& colorMap) {
  constexpr quint32 kSamplesAt = 8;
  const auto size = static_cast<quint32>(samples.size());
  fields.insert({{TIFFTAG_BITSPERSAMPLE, 8},
                 {TIFFTAG_PHOTOMETRIC, PHOTOMETRIC_RGB},
                 {TIFFTAG_STRIPOFFSETS, kSamplesAt},
                 {TIFFTAG_SAMPLESPERPIXEL, 3},
                 {TIFFTAG_ROWSPERSTRIP, fields[TIFFTAG_IMAGELENGTH]},
                 {TIFFTAG_STRIPBYTECOUNTS, size}});
  if (!colorMap.isEmpty()) fields[TIFFTAG_COLORMAP] = kSamplesAt + size;
  const auto directoryAt = static_cast<quint32>(kSamplesAt + samples.size() + colorMap.size());
  QByteArray bytes = QByteArray("MM\0*", 4) + big<quint32>(directoryAt) + samples + colorMap;
  bytes += big<quint16>(fields.size());
  const QByteArray oneNumber("\0\x04\0\0\0\x01", 6);
  const QByteArray manyShortNumbers = QByteArray("\0\x03", 2) + big<quint32>(colorMap.size() / 2);
  for (const auto& [tag, value] : fields) {
    bytes += big<quint16>(tag) + (tag == TIFFTAG_COLORMAP ? manyShortNumbers : oneNumber) + big<quint32>(value);
  }
  return bytes + big<quint32>(0);
}

QByteArray carried(const char* name) {
  QFile file(QStringLiteral(IMAGING_TEST_DATA "/") + QLatin1String(name));
  return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

lumagrid::DecodedImage decoded(const QByteArray& file, int bound) {
  QTemporaryFile written(QDir::tempPath() + QStringLiteral("/XXXXXX.png"));
  if (!written.open() || written.write(file) != file.size() || !written.flush()) return {};
  const auto url = lumagrid::FileUrl::fromPath(written.fileName());
  lumagrid::FileImageDecoder decoder;
  return bound > 0 ? decoder.decodeBounded(url, bound) : decoder.decode(url);
}

QByteArray broken(QByteArray file, qsizetype headerBytes, std::minstd_rand& random) {
  const auto below = [&random](qsizetype limit) { return static_cast<qsizetype>(random()) % limit; };
  for (qsizetype hits = 1 + below(4); hits > 0; --hits) {
    const qsizetype reach = below(2) == 0 ? file.size() : std::min(file.size(), headerBytes);
    file[below(reach)] = static_cast<char>(below(4) == 0 ? 0xff : random());
  }
  if (below(8) == 0) file.truncate(below(file.size()));
  return file;
}

}  // namespace samples
