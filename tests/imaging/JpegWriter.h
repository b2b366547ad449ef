#pragma once

#include <QByteArray>
#include <QSize>
#include <utility>
#include <vector>

// JPEG files of every kind that the format allows, which TurboJPEG's own interface does not write.
namespace samples {

struct JpegSpec {
  enum class Colors { gray, rgb, yCbCr, cmyk, ycck };
  enum class Coding { huffman, optimizedHuffman, progressive, arithmetic, scanPerComponent };

  QSize size{250, 131};
  double roughness = 0.1;  // 0: only smooth colours; 1: only noise
  int quality = 85;
  Colors colors = Colors::yCbCr;
  Coding coding = Coding::huffman;
  std::vector<std::pair<int, int>> sampling;  // horizontal and vertical factor of each component
  int restartInterval = 0;                    // in MCUs
};

QByteArray writtenJpeg(const JpegSpec& spec);

}  // namespace samples
