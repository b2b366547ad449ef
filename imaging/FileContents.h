#pragma once

#include <QByteArray>
#include <QByteArrayView>
#include <variant>

#include "FileUrl.h"
#include "ImageDecoder.h"

namespace lumagrid {

// How many bytes of a file's beginning tell its format.
inline constexpr qsizetype kFormatHeadBytes = 512;

// The bytes of a regular file, read (never mapped: a file cut short under a mapping kills the process) after `wanted`
// has accepted its first kFormatHeadBytes, or as many as there are. Never waits for the other end of a FIFO. Fails with
// missing, denied, unsupported (not a regular file, not wanted), tooLarge or damaged (it cannot be read). Any thread.
[[nodiscard]] std::variant<QByteArray, ImageError> readFile(const FileUrl& file, bool (*wanted)(QByteArrayView head));

}  // namespace lumagrid
