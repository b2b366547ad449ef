#include "FileImageDecoder.h"

#include <sys/stat.h>

#include <QBuffer>
#include <QImageReader>
#include <algorithm>
#include <cerrno>
#include <mutex>
#include <new>

#include "FileContents.h"
#include "ImageCodec.h"
#include "MemoryLimit.h"
#include "RegularFile.h"
#include "ShownSize.h"

namespace lumagrid {
namespace {

DecodedImage decodeFile(const FileUrl& file, std::int64_t bound) {
  struct stat status = {};
  const FileDescriptor opened = openRegularFile(file, status);
  if (!opened.isOpen()) return {{}, errorOfOpening(errno)};
  return FileImageDecoder::decodeOpenFile(opened.number(), status.st_size, bound);
}

DecodedImage decodeBytes(ImageFormat format, const CodecRequest& request) {
  for (const ImageCodec codec : codecsFor(format)) {
    DecodedImage answer = codec(request);
    if (answer.error != ImageError::unsupported) return answer;
  }
  return {{}, ImageError::unsupported};
}

}  // namespace

DecodedImage FileImageDecoder::decodeOpenFile(int descriptor, std::int64_t size, std::int64_t bound) {
  try {
    const auto contents =
        readContents(descriptor, size, [](QByteArrayView head) { return sniffImageFormat(head).has_value(); });
    if (const auto* error = std::get_if<ImageError>(&contents)) return {{}, *error};
    const auto& bytes = std::get<QByteArray>(contents);
    const auto format = sniffImageFormat(bytes);
    if (!format) return {{}, ImageError::unsupported};  // it changed between the two looks
    DecodedImage image = decodeBytes(*format, {bytes, bound});
    if (image.error == ImageError::damaged && bound > 0 && *format == ImageFormat::jpeg) {
      // What cannot be decoded at a part of its size may still open as a whole.
      image = decodeBytes(*format, {bytes, 0});
      const QSize size = shownSize(image.pixels.size(), 1, bound);
      if (!image.pixels.isNull()) {
        image.pixels = image.pixels.scaled(size, Qt::IgnoreAspectRatio, Qt::SmoothTransformation);
      }
    }
    return image;
  } catch (const std::bad_alloc&) {
    return {{}, ImageError::tooLarge};
  }
}

void prepareCodecs() {
  const FileImageDecoder setsLimit;
  for (const char* plugin : {"gif", "webp"}) {
    QBuffer empty;
    empty.open(QIODevice::ReadOnly);
    (void)QImageReader(&empty, plugin).canRead();
  }
  (void)decodeHeif({QByteArrayView("\0\0\0\x10"
                                   "ftypavif\0\0\0",
                                   16),
                    0});
}

FileImageDecoder::FileImageDecoder() {
  static std::once_flag once;
  std::call_once(once, [] { QImageReader::setAllocationLimit(static_cast<int>(pictureByteLimit() >> 20)); });
}

DecodedImage FileImageDecoder::decode(const FileUrl& file) {
  return decodeFile(file, 0);
}

DecodedImage FileImageDecoder::decodeBounded(const FileUrl& file, std::int64_t maxPixelSize) {
  return decodeFile(file, std::max<std::int64_t>(maxPixelSize, 1));
}

}  // namespace lumagrid
