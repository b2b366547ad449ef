// One codec, whole (FUZZED_BOUND 0) or for a thumbnail: it gives pixels or an error.
#include <QImageReader>
#include <cstdint>
#include <cstdlib>
#include <new>

#include "ImageCodec.h"
#include "PictureMemory.h"

namespace {

// Little enough for thousands of pictures a second.
class SmallMemory : public lumagrid::PictureMemory {
 public:
  bool claim(std::int64_t bytes) override { return bytes >= 0 && bytes <= std::int64_t{64} << 20; }
  void* allocate(std::size_t bytes) override { return std::malloc(bytes); }
  void release(void* memory) override { std::free(memory); }
};

}  // namespace

extern "C" int LLVMFuzzerInitialize(int*, char***) {
  static SmallMemory memory;
  lumagrid::setPictureMemory(memory);
  QImageReader::setAllocationLimit(64);
  return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  try {
    const auto picture = lumagrid::FUZZED_CODEC({QByteArrayView(data, static_cast<qsizetype>(size)), FUZZED_BOUND});
    if (picture.pixels.isNull() != (picture.error != lumagrid::ImageError::none)) std::abort();
  } catch (const std::bad_alloc&) {
    return 0;
  }
  return 0;
}
