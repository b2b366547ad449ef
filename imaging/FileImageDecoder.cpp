#include "FileImageDecoder.h"

#include <QImageReader>
#include <algorithm>
#include <mutex>
#include <new>

#include "FileContents.h"
#include "ImageCodec.h"
#include "MemoryLimit.h"

namespace lumagrid {
namespace {

DecodedImage decodeFile(const FileUrl& file, std::int64_t bound) {
  try {
    const auto contents = readFile(file, [](QByteArrayView head) { return sniffImageFormat(head).has_value(); });
    if (const auto* error = std::get_if<ImageError>(&contents)) return {{}, *error};
    const auto& bytes = std::get<QByteArray>(contents);
    const auto format = sniffImageFormat(bytes);
    if (!format) return {{}, ImageError::unsupported};  // it changed between the two looks
    for (const ImageCodec codec : codecsFor(*format)) {
      DecodedImage answer = codec({bytes, bound});
      if (answer.error != ImageError::unsupported) return answer;
    }
    return {{}, ImageError::unsupported};
  } catch (const std::bad_alloc&) {
    return {{}, ImageError::tooLarge};
  }
}

}  // namespace

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
