#include "SamplePictures.h"

#include <lcms2.h>
#include <turbojpeg.h>

#include <QBuffer>
#include <QFile>
#include <QtEndian>
#include <cstdlib>
#include <memory>
#include <vector>

namespace samples {
namespace {

template <typename Number>
QByteArray bigEndian(Number number) {
  QByteArray bytes(sizeof(Number), '\0');
  qToBigEndian(number, bytes.data());
  return bytes;
}

template <typename Number>
QByteArray littleEndian(Number number) {
  QByteArray bytes(sizeof(Number), '\0');
  qToLittleEndian(number, bytes.data());
  return bytes;
}

QByteArray saved(cmsHPROFILE profile) {
  cmsUInt32Number size = 0;
  cmsSaveProfileToMem(profile, nullptr, &size);
  QByteArray bytes(static_cast<qsizetype>(size), '\0');
  cmsSaveProfileToMem(profile, bytes.data(), &size);
  cmsCloseProfile(profile);
  return bytes;
}

QByteArray entry(quint16 tag, quint16 type, quint32 count, quint32 value) {
  return littleEndian(tag) + littleEndian(type) + littleEndian(count) + littleEndian(value);
}

}  // namespace

QImage picture(int width, int height) {
  QImage image(width, height, QImage::Format_RGB32);
  image.fill(kGround);
  for (int y = 0; y < height / 2; ++y) {
    for (int x = 0; x < width / 3; ++x) image.setPixelColor(x, y, kCorner);
  }
  return image;
}

QByteArray encoded(const QImage& image, const char* format) {
  QByteArray bytes;
  QBuffer buffer(&bytes);
  buffer.open(QIODevice::WriteOnly);
  image.save(&buffer, format, 100);
  return bytes;
}

QByteArray jpeg(const QImage& image, Model model) {
  const QImage source = image.convertToFormat(QImage::Format_RGBX8888);
  std::vector<unsigned char> pixels;
  for (int y = 0; y < source.height(); ++y) {
    const uchar* row = source.constScanLine(y);
    for (int x = 0; x < source.width(); ++x, row += 4) {
      // As inks, stored inverted as usual, these are the same colours without black.
      pixels.insert(pixels.end(), {row[0], row[1], row[2], 255});
    }
  }
  const bool isCmyk = model == Model::cmyk;
  const std::unique_ptr<void, decltype(&tjDestroy)> handle(tjInitCompress(), &tjDestroy);
  unsigned char* written = nullptr;
  unsigned long size = 0;
  tjCompress2(handle.get(), pixels.data(), source.width(), 0, source.height(), isCmyk ? TJPF_CMYK : TJPF_RGBX, &written,
              &size, model == Model::gray ? TJSAMP_GRAY : TJSAMP_444, 95, 0);
  QByteArray bytes(reinterpret_cast<const char*>(written), static_cast<qsizetype>(size));
  tjFree(written);
  return bytes;
}

QByteArray withSegment(const QByteArray& jpeg, unsigned char marker, const QByteArray& content) {
  QByteArray segment = "\xff";
  segment += static_cast<char>(marker);
  segment += bigEndian(static_cast<quint16>(content.size() + 2)) + content;
  return QByteArray(jpeg).insert(2, segment);
}

QByteArray withDensity(const QByteArray& jpeg, int horizontal, int vertical) {
  QByteArray bytes = jpeg;
  const qsizetype densities = bytes.indexOf(QByteArray("JFIF\0", 5)) + 8;
  return bytes.replace(densities, 4,
                       bigEndian(static_cast<quint16>(horizontal)) + bigEndian(static_cast<quint16>(vertical)));
}

QByteArray withProfile(const QByteArray& jpeg, const QByteArray& profile) {
  // Two chunks, the second one first: their numbers count, not their places.
  const qsizetype half = profile.size() / 2;
  const QByteArray name("ICC_PROFILE\0", 12);
  const QByteArray withFirst = withSegment(jpeg, 0xe2, name + "\x01\x02" + profile.left(half));
  return withSegment(withFirst, 0xe2, name + "\x02\x02" + profile.mid(half));
}

QByteArray exif(int orientation, const QByteArray& thumbnail) {
  QByteArray bytes("Exif\0\0II*\0\x08\0\0\0\x01\0", 16);
  bytes += entry(274, 3, 1, static_cast<quint32>(orientation));
  if (thumbnail.isEmpty()) return bytes + littleEndian<quint32>(0);
  constexpr quint32 kSecondDirectory = 8 + 2 + 12 + 4;
  constexpr quint32 kThumbnail = kSecondDirectory + 2 + 3 * 12 + 4;
  bytes += littleEndian(kSecondDirectory) + littleEndian<quint16>(3) + entry(259, 3, 1, 6) +
           entry(513, 4, 1, kThumbnail) + entry(514, 4, 1, static_cast<quint32>(thumbnail.size()));
  return bytes + littleEndian<quint32>(0) + thumbnail;
}

QByteArray withChunk(const QByteArray& png, const QByteArray& name, const QByteArray& content) {
  // The checksum of PNG is the CRC-32 of name and content.
  quint32 crc = 0xffffffff;
  for (const char byte : name + content) {
    crc ^= static_cast<unsigned char>(byte);
    for (int bit = 0; bit < 8; ++bit) crc = (crc >> 1) ^ ((crc & 1) != 0 ? 0xedb88320 : 0);
  }
  constexpr qsizetype kAfterHeader = 8 + 25;
  return QByteArray(png).insert(
      kAfterHeader, bigEndian(static_cast<quint32>(content.size())) + name + content + bigEndian(crc ^ 0xffffffff));
}

QByteArray tiff(const TiffSpec& spec, const QByteArray& samples) {
  const auto number = [](int value) { return static_cast<quint32>(value); };
  const quint32 dataAt = 8;
  const quint32 densitiesAt = dataAt + static_cast<quint32>(samples.size());
  const quint32 bitsAt = densitiesAt + 16;
  const quint32 directoryAt = bitsAt + 8;
  QByteArray bits;
  for (int sample = 0; sample < 4; ++sample) bits += littleEndian(static_cast<quint16>(spec.bits));
  std::vector<QByteArray> entries = {
      entry(256, 4, 1, number(spec.width)),
      entry(257, 4, 1, number(spec.height)),
      spec.samplesPerPixel <= 2 ? entry(258, 3, number(spec.samplesPerPixel), number(spec.bits) * 0x10001)
                                : entry(258, 3, number(spec.samplesPerPixel), bitsAt),
      entry(259, 3, 1, 1),
      entry(262, 3, 1, number(spec.photometric)),
      entry(273, 4, 1, dataAt),
      entry(274, 3, 1, number(spec.orientation)),
      entry(277, 3, 1, number(spec.samplesPerPixel)),
      entry(278, 4, 1, number(spec.height)),
      entry(279, 4, 1, number(static_cast<int>(samples.size()))),
      entry(282, 5, 1, densitiesAt),
      entry(283, 5, 1, densitiesAt + 8),
      entry(296, 3, 1, 2),
  };
  if (spec.extraSample >= 0) entries.push_back(entry(338, 3, 1, number(spec.extraSample)));
  entries.push_back(entry(339, 3, 1, number(spec.sampleFormat)));
  QByteArray bytes = QByteArray("II*\0", 4) + littleEndian(directoryAt) + samples;
  bytes += littleEndian(number(spec.horizontalDensity)) + littleEndian<quint32>(1);
  bytes += littleEndian(number(spec.verticalDensity)) + littleEndian<quint32>(1);
  bytes += bits + littleEndian(static_cast<quint16>(entries.size()));
  for (const QByteArray& one : entries) bytes += one;
  return bytes + littleEndian<quint32>(0);
}

QByteArray wideGamutProfile() {
  const cmsCIExyY white = {0.3127, 0.3290, 1};
  const cmsCIExyYTRIPLE primaries = {{0.680, 0.320, 1}, {0.265, 0.690, 1}, {0.150, 0.060, 1}};
  const cmsFloat64Number srgb[5] = {2.4, 1 / 1.055, 0.055 / 1.055, 1 / 12.92, 0.04045};
  cmsToneCurve* const curve = cmsBuildParametricToneCurve(nullptr, 4, srgb);
  cmsToneCurve* const curves[3] = {curve, curve, curve};
  const QByteArray bytes = saved(cmsCreateRGBProfile(&white, &primaries, curves));
  cmsFreeToneCurve(curve);
  return bytes;
}

QByteArray srgbProfile() {
  return saved(cmsCreate_sRGBProfile());
}

QByteArray linearGrayProfile() {
  const cmsCIExyY white = {0.3457, 0.3585, 1};
  cmsToneCurve* const curve = cmsBuildGamma(nullptr, 1.0);
  const QByteArray bytes = saved(cmsCreateGrayProfile(&white, curve));
  cmsFreeToneCurve(curve);
  return bytes;
}

QByteArray carried(const char* name) {
  QFile file(QStringLiteral(IMAGING_TEST_DATA "/") + QLatin1String(name));
  return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

QByteArray Folder::path(const QByteArray& name) const {
  return QFile::encodeName(m_folder.path()) + '/' + name;
}

lumagrid::FileUrl Folder::write(const QByteArray& name, const QByteArray& bytes) const {
  std::FILE* const file = std::fopen(path(name).constData(), "wb");
  if (file == nullptr) return {};
  std::fwrite(bytes.constData(), 1, static_cast<size_t>(bytes.size()), file);
  std::fclose(file);
  return lumagrid::FileUrl::fromPath(path(name));
}

lumagrid::DecodedImage Folder::decode(const QByteArray& bytes) const {
  return lumagrid::FileImageDecoder().decode(write("sample", bytes));
}

lumagrid::DecodedImage Folder::decodeBounded(const QByteArray& bytes, int bound) const {
  return lumagrid::FileImageDecoder().decodeBounded(write("sample", bytes), bound);
}

bool isNear(const QImage& image, int x, int y, const QColor& color, int tolerance) {
  const QColor found = image.pixelColor(x, y);
  return std::abs(found.red() - color.red()) <= tolerance && std::abs(found.green() - color.green()) <= tolerance &&
         std::abs(found.blue() - color.blue()) <= tolerance && std::abs(found.alpha() - color.alpha()) <= tolerance;
}

}  // namespace samples
