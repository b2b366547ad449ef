#pragma once

#include <QByteArray>
#include <QByteArrayView>
#include <variant>

#include "ImageDecoder.h"

namespace lumagrid {

// How many bytes of a file's beginning tell its format.
inline constexpr qsizetype kFormatHeadBytes = 512;

// The `size` bytes of a regular file, open at its beginning, or fewer when it has shrunk. Read (never mapped: a file
// cut short under a mapping kills the process) after `wanted` has accepted the first kFormatHeadBytes, or as many as
// there are. Fails with unsupported (not wanted), tooLarge or damaged (it cannot be read). Any thread.
[[nodiscard]] std::variant<QByteArray, ImageError> readContents(int descriptor, std::int64_t size,
                                                                bool (*wanted)(QByteArrayView head));

}  // namespace lumagrid
