#include "PictureMemory.h"

#include <cstdlib>

#include "MemoryLimit.h"

namespace lumagrid {

namespace {

class Heap : public PictureMemory {
 public:
  bool claim(std::int64_t bytes) override { return bytes >= 0 && bytes <= pictureByteLimit(); }

  // Whole huge pages, for systems that give these.
  void* allocate(std::size_t bytes) override {
    constexpr std::size_t kHugePage = std::size_t{2} << 20;
    return std::aligned_alloc(kHugePage, (bytes + kHugePage - 1) / kHugePage * kHugePage);
  }
  void release(void* memory) override { std::free(memory); }
};

PictureMemory*& current() {
  static Heap heap;
  static PictureMemory* memory = &heap;
  return memory;
}

}  // namespace

PictureMemory& pictureMemory() {
  return *current();
}

void setPictureMemory(PictureMemory& memory) {
  current() = &memory;
}

}  // namespace lumagrid
