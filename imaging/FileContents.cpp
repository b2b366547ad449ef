#include "FileContents.h"

#include <unistd.h>

#include <algorithm>
#include <cerrno>

#include "PictureMemory.h"

namespace lumagrid {
namespace {

constexpr std::int64_t kLargestFile = std::int64_t{1} << 30;  // four times the largest camera's

// Reads up to `count` bytes; fewer at the end of the file, -1 when the system reports a failure.
qsizetype readUpTo(int descriptor, char* target, qsizetype count) {
  qsizetype done = 0;
  while (done < count) {
    const ssize_t got = ::read(descriptor, target + done, static_cast<size_t>(count - done));
    if (got < 0 && errno == EINTR) continue;
    if (got < 0) return -1;
    if (got == 0) break;
    done += got;
  }
  return done;
}

}  // namespace

std::variant<QByteArray, ImageError> readContents(int descriptor, std::int64_t size,
                                                  bool (*wanted)(QByteArrayView head)) {
  char head[kFormatHeadBytes];
  const qsizetype headSize = readUpTo(descriptor, head, std::min<qsizetype>(size, kFormatHeadBytes));
  if (headSize < 0) return ImageError::unavailable;
  if (!wanted(QByteArrayView(head, headSize))) return ImageError::unsupported;
  if (size > kLargestFile || !claimMemory(size)) return ImageError::tooLarge;

  QByteArray bytes(size, Qt::Uninitialized);
  std::copy_n(head, headSize, bytes.data());
  const qsizetype rest = readUpTo(descriptor, bytes.data() + headSize, size - headSize);
  if (rest < 0) return ImageError::unavailable;
  bytes.truncate(headSize + rest);  // it may have shrunk meanwhile
  return bytes;
}

}  // namespace lumagrid
