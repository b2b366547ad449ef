#pragma once

#include <QByteArray>
#include <QColor>
#include <QImage>
#include <QTemporaryDir>

#include "FileImageDecoder.h"

// Small pictures made on the spot, and the pieces of files from which odd ones are put together.
namespace samples {

inline const QColor kGround(200, 60, 40);
inline const QColor kCorner(40, 180, 60);

// `kGround` with the top left third of the width and half of the height in `kCorner`: no turn or mirroring looks like
// another one.
QImage picture(int width = 96, int height = 64);

QByteArray encoded(const QImage& image, const char* format);

enum class Model { rgb, gray, cmyk };
QByteArray jpeg(const QImage& image, Model model = Model::rgb);

// A JPEG with one more segment after its first two bytes.
QByteArray withSegment(const QByteArray& jpeg, unsigned char marker, const QByteArray& content);
QByteArray withDensity(const QByteArray& jpeg, int horizontal, int vertical);
QByteArray withProfile(const QByteArray& jpeg, const QByteArray& profile);
// The data of an Exif segment: one directory with an orientation and, when given, a thumbnail.
QByteArray exif(int orientation, const QByteArray& thumbnail = {});

// A PNG with one more chunk before its pixels.
QByteArray withChunk(const QByteArray& png, const QByteArray& name, const QByteArray& content);

// An uncompressed TIFF of one strip. `samples` are those of all pixels, little-endian.
struct TiffSpec {
  int width = 1;
  int height = 1;
  int photometric = 2;
  int samplesPerPixel = 3;
  int bits = 8;
  int sampleFormat = 1;
  int extraSample = -1;
  int orientation = 1;
  int horizontalDensity = 72;
  int verticalDensity = 72;
};
QByteArray tiff(const TiffSpec& spec, const QByteArray& samples);

// ICC profiles: the primaries of wide-gamut displays with the curve of sRGB, sRGB itself, a gray of gamma 1.
QByteArray wideGamutProfile();
QByteArray srgbProfile();
QByteArray linearGrayProfile();

// One of the files that cannot be made here; see data/README.md.
QByteArray carried(const char* name);

// Files for the decoder in a folder that goes with it.
class Folder {
 public:
  [[nodiscard]] lumagrid::FileUrl write(const QByteArray& name, const QByteArray& bytes) const;
  [[nodiscard]] QByteArray path(const QByteArray& name) const;
  [[nodiscard]] lumagrid::DecodedImage decode(const QByteArray& bytes) const;
  [[nodiscard]] lumagrid::DecodedImage decodeBounded(const QByteArray& bytes, int bound) const;

 private:
  QTemporaryDir m_folder;
};

// True when the pixel is within a few steps of the colour, as lossy codecs are.
bool isNear(const QImage& image, int x, int y, const QColor& color, int tolerance = 6);

}  // namespace samples
