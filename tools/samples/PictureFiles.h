#pragma once

#include <QByteArray>
#include <QImage>
#include <QList>

namespace lumagrid::samples {

// Each answers the bytes of a file; empty when the format cannot be written on this machine.

enum class JpegKind { Baseline, Progressive };
// `exifOrientation` from 1 to 8: the pixels are stored turned, so that a viewer that heeds it shows `upright`.
// 0 writes no orientation.
[[nodiscard]] QByteArray jpegFile(const QImage& upright, int exifOrientation, JpegKind kind);

// `format` as QImageWriter names it: "png", "bmp", "webp", "tiff".
[[nodiscard]] QByteArray qtFile(const QImage& picture, const char* format, int quality);

// One picture, or an animation that repeats for ever; all frames have the size of the first.
[[nodiscard]] QByteArray gifFile(const QList<QImage>& frames);

enum class HeifCodec { Hevc, Av1 };
[[nodiscard]] QByteArray heifFile(const QImage& picture, HeifCodec codec);

}  // namespace lumagrid::samples
