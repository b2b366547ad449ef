// What it costs to decode in processes of their own: the same photos through ProcessImageDecoder and, in turns, in this
// process, into memory that is used again, as the shared buffers are. By the clock: processor time of other processes
// is not this one's.
//
// LUMAGRID_BENCH_PHOTOS names a folder of JPEG files to take instead of made ones.
#include <QFile>
#include <QTemporaryDir>
#include <algorithm>
#include <cstdlib>

#include "BenchPhotos.h"
#include "FileImageDecoder.h"
#include "PictureMemory.h"
#include "ProcessImageDecoder.h"

using namespace lumagrid;

namespace {

// Keeps the block that was given back last.
class OneSpareBlock : public PictureMemory {
 public:
  bool claim(std::int64_t) override { return true; }
  void* allocate(std::size_t bytes) override {
    if (bytes == m_bytes && m_spare != nullptr) return std::exchange(m_spare, nullptr);
    std::free(std::exchange(m_spare, nullptr));
    m_bytes = bytes;
    return std::aligned_alloc(4096, (bytes + 4095) / 4096 * 4096);
  }
  void release(void* memory) override { std::free(std::exchange(m_spare, memory)); }

 private:
  void* m_spare = nullptr;
  std::size_t m_bytes = 0;
};

Comparison byTheClock(Comparison comparison) {
  comparison.ours.processor = comparison.reference.processor = 0;
  return comparison;
}

}  // namespace

int main() {
  constexpr int kRounds = 11;
  constexpr std::int64_t kBound = 480;
  OneSpareBlock memory;
  setPictureMemory(memory);
  FileImageDecoder inProcess;
  ProcessImageDecoder isolated(LUMAGRID_DECODER);
  const QTemporaryDir folder;
  std::vector<Comparison> thumbnails;
  std::vector<Comparison> wholes;
  for (const BenchPhoto& photo : benchPhotos()) {
    const QByteArray path = QFile::encodeName(folder.filePath(QStringLiteral("photo.jpg")));
    std::FILE* const file = std::fopen(path.constData(), "wb");
    if (file == nullptr) return EXIT_FAILURE;
    std::fwrite(photo.bytes.constData(), 1, static_cast<std::size_t>(photo.bytes.size()), file);
    std::fclose(file);
    const FileUrl url = FileUrl::fromPath(path);
    if (isolated.decode(url).pixels != inProcess.decode(url).pixels) return EXIT_FAILURE;
    thumbnails.push_back(byTheClock(compared(
        kRounds, [&] { (void)isolated.decodeBounded(url, kBound); },
        [&] { (void)inProcess.decodeBounded(url, kBound); })));
    wholes.push_back(byTheClock(compared(
        kRounds, [&] { (void)isolated.decode(url); }, [&] { (void)inProcess.decode(url); })));
  }
  report("thumbnail by a decoder process", "in this process", thumbnails);
  report("whole photo by a decoder process", "in this process", wholes);
  return thumbnails.empty() ? EXIT_FAILURE : EXIT_SUCCESS;
}
