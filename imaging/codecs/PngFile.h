#pragma once

#include <QByteArray>
#include <QByteArrayView>
#include <optional>
#include <vector>

#include "PictureMetadata.h"

namespace lumagrid {

// What of a PNG file its pixels and their colours need, put in the order in which a decoder wants it. Texts and all
// else that such a file may carry, packed a thousandfold, never reach one.
struct PngFile {
  QByteArray head;                     // from the signature to the header of a single IDAT chunk; its checksums are 0
  std::vector<QByteArrayView> pieces;  // what follows: the content of all IDAT chunks, as far as the file goes; the end
  qsizetype dataBytes = 0;             // of that content
  PictureMetadata metadata;
};

// Nothing when the file has no sound header or no pixels. The views point into `bytes`.
[[nodiscard]] std::optional<PngFile> pngFile(QByteArrayView bytes);

}  // namespace lumagrid
