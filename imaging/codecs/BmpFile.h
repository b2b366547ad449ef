#pragma once

#include <QByteArrayView>
#include <QSize>
#include <array>
#include <optional>

#include "PictureMetadata.h"

namespace lumagrid {

enum class BmpPacking : unsigned char { none, runs4, runs8, runs24, jpeg, png };

// What the headers of a BMP file say, whichever of their many kinds they are: OS/2 1 and 2 (cut at any length), Windows
// 3 to 5 and the two between, alone or first in an array of pictures.
struct BmpFile {
  using Color = std::array<uchar, 4>;  // red, green, blue, 255

  QSize size;  // not checked
  bool isTopDown = false;
  int bits = 0;  // per pixel: 1, 2, 4, 8 (of the palette), 16, 24, 32 or 64; 0 for a picture of another format
  BmpPacking packing = BmpPacking::none;
  std::array<std::uint32_t, 4> masks{};  // of red, green, blue and alpha in 16 and 32 bits; 0 where there is none
  std::array<Color, 256> palette{};      // black behind its end
  QByteArrayView pixels;                 // to the end of the file
  PictureMetadata metadata;
};

// Nothing for headers that are cut short, and for kinds of pixels that are none of the above.
[[nodiscard]] std::optional<BmpFile> bmpFile(QByteArrayView bytes);

}  // namespace lumagrid
