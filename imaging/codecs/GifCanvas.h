#pragma once

#include <QByteArrayView>
#include <QImage>
#include <QRect>
#include <optional>

namespace lumagrid {

struct GifFrame {
  QRect place;
  qsizetype end = 0;  // of its data in the file, as far as that goes
  bool hasTransparency = false;
};

// Nothing when there is none.
[[nodiscard]] std::optional<GifFrame> gifFirstFrame(QByteArrayView file);

// Gives what the first frame of a GIF file leaves free of its canvas the file's background colour, or makes it
// transparent where there is none. The toolkit does so unless the frame has a palette of its own: then memory shows
// that it never wrote. `pixels` are those of the canvas with the first frame on it.
void fillGifBackground(QByteArrayView file, QImage& pixels);

}  // namespace lumagrid
