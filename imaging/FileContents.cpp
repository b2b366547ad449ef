#include "FileContents.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>

#include "MemoryLimit.h"

namespace lumagrid {
namespace {

class Descriptor {
 public:
  explicit Descriptor(const QByteArray& path) : m_number(::open(path.constData(), O_RDONLY | O_NONBLOCK | O_CLOEXEC)) {}
  ~Descriptor() {
    if (m_number >= 0) ::close(m_number);
  }
  Descriptor(const Descriptor&) = delete;
  Descriptor& operator=(const Descriptor&) = delete;

  [[nodiscard]] int number() const { return m_number; }

 private:
  const int m_number;
};

ImageError errorOfOpening(int systemError) {
  switch (systemError) {
    case EACCES:
    case EPERM:
      return ImageError::denied;
    case ENXIO:  // a socket, or a device that is not there
    case ELOOP:
      return ImageError::unsupported;
    default:
      return ImageError::missing;
  }
}

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

std::variant<QByteArray, ImageError> readFile(const FileUrl& file, bool (*wanted)(QByteArrayView head)) {
  if (file.isEmpty()) return ImageError::missing;
  const Descriptor descriptor(file.path());
  if (descriptor.number() < 0) return errorOfOpening(errno);
  struct stat status {};
  if (::fstat(descriptor.number(), &status) != 0) return ImageError::damaged;
  if (!S_ISREG(status.st_mode)) return ImageError::unsupported;

  const qsizetype size = status.st_size;
  char head[kFormatHeadBytes];
  const qsizetype headSize = readUpTo(descriptor.number(), head, std::min(size, kFormatHeadBytes));
  if (headSize < 0) return ImageError::damaged;
  if (!wanted(QByteArrayView(head, headSize))) return ImageError::unsupported;
  if (size > pictureByteLimit()) return ImageError::tooLarge;

  QByteArray bytes(size, Qt::Uninitialized);
  std::copy_n(head, headSize, bytes.data());
  const qsizetype rest = readUpTo(descriptor.number(), bytes.data() + headSize, size - headSize);
  if (rest < 0) return ImageError::damaged;
  bytes.truncate(headSize + rest);  // it may have shrunk meanwhile
  return bytes;
}

}  // namespace lumagrid
