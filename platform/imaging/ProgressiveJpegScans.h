#pragma once

#include <QByteArray>
#include <QByteArrayView>

namespace lumagrid {

// A progressive JPEG file (ITU-T T.81, G) without the scans that its picture at an eighth of its size has no use for:
// of a component that is not halved both ways that is all detail, which is most of the file. One scan of detail stays
// for each component, since libjpeg-turbo smooths one of which it has none. The general decoder gives the same pixels
// for it in half of the time or less.
//
// Null for every other kind of file, for one that is cut short, and where anything is doubtful. The general decoder may
// smooth a file with damage in another way than all of it: ask it again for the whole when it warns. Any thread.
[[nodiscard]] QByteArray progressiveJpegForEighth(QByteArrayView file);

}  // namespace lumagrid
