#pragma once

#include <QByteArray>
#include <QImage>

namespace lumagrid::samples {

// Each answers the bytes of a file; empty when the format cannot be written on this machine.

struct FileOptions {
  bool isProgressive = false;  // for JPEG
  int turn =
      0;  // degrees clockwise, 90 apart: how far a viewer has to turn the stored pixels (by Exif) to show `upright`
};
// `format` as QImageWriter names it.
[[nodiscard]] QByteArray qtFile(const QImage& upright, const QByteArray& format, const FileOptions& options);

enum class HeifCodec { Hevc, Av1 };
[[nodiscard]] QByteArray heifFile(const QImage& picture, HeifCodec codec);

}  // namespace lumagrid::samples
