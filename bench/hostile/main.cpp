// Opens every file below some folders, and damaged copies of them, as a window does: a thumbnail of each on the pool's
// threads, and meanwhile each tenth whole. Prints what came of it, how long the longest wait was, and what it took.
//   lumagrid-bench-hostile FOLDER… [--copies N] [--seed S] [--first K] [--keep FOLDER]
// --first takes the copies from number K on. --keep leaves there the damaged files during whose decoding some decoder
// ended.
#include <QCoreApplication>
#include <QFile>
#include <QTemporaryDir>
#include <algorithm>
#include <atomic>
#include <chrono>
#include <cstdio>
#include <filesystem>
#include <mutex>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "Damage.h"
#include "ProcessImageDecoder.h"
#include "ProcessWatch.h"
#include "WorkerPool.h"

using namespace lumagrid;

namespace {

using Clock = std::chrono::steady_clock;

constexpr std::int64_t kThumbnailPixels = 480;
constexpr std::size_t kPictureEach = 10;

struct Arguments {
  std::vector<std::filesystem::path> folders;
  std::size_t copies = 0;
  std::size_t firstCopy = 0;
  std::uint64_t seed = 1;
  std::filesystem::path keep;
};

std::optional<Arguments> parse(int argc, char** argv) {
  Arguments arguments;
  for (int at = 1; at < argc; ++at) {
    const std::string_view argument = argv[at];
    const bool hasValue = at + 1 < argc;
    if (argument == "--copies" && hasValue) {
      arguments.copies = std::strtoull(argv[++at], nullptr, 10);
    } else if (argument == "--seed" && hasValue) {
      arguments.seed = std::strtoull(argv[++at], nullptr, 10);
    } else if (argument == "--first" && hasValue) {
      arguments.firstCopy = std::strtoull(argv[++at], nullptr, 10);
    } else if (argument == "--keep" && hasValue) {
      arguments.keep = argv[++at];
    } else if (argument.starts_with("--") || !std::filesystem::is_directory(argument)) {
      return std::nullopt;
    } else {
      arguments.folders.emplace_back(argument);
    }
  }
  return arguments.folders.empty() ? std::nullopt : std::optional(arguments);
}

// The same order on every machine.
std::vector<std::filesystem::path> filesBelow(const std::vector<std::filesystem::path>& folders) {
  std::vector<std::filesystem::path> files;
  for (const auto& folder : folders) {
    for (const auto& entry : std::filesystem::recursive_directory_iterator(folder)) {
      if (entry.is_regular_file()) files.push_back(entry.path());
    }
  }
  std::sort(files.begin(), files.end());
  return files;
}

FileUrl urlOf(const std::filesystem::path& path) {
  return FileUrl::fromPath(QByteArray::fromStdString(path.string()));
}

// The results of one kind of request.
class Results {
 public:
  void add(const std::string& name, ImageError error, Clock::duration wait) {
    const std::scoped_lock lock(m_mutex);
    ++(error == ImageError::none ? m_opened : m_refused);
    if (wait <= m_longest) return;
    m_longest = wait;
    m_longestName = name;
  }

  void print(const char* kind) const {
    std::printf("%-12s %8zu %8zu %8zu %8.2f s  %s\n", kind, m_opened + m_refused, m_opened, m_refused,
                std::chrono::duration<double>(m_longest).count(), m_longestName.c_str());
  }

 private:
  std::mutex m_mutex;  // guards all below
  std::size_t m_opened = 0;
  std::size_t m_refused = 0;
  Clock::duration m_longest{0};
  std::string m_longestName;
};

class Run {
 public:
  Run(const Arguments& arguments, ProcessImageDecoder& decoder)
      : m_arguments(arguments), m_files(filesBelow(arguments.folders)), m_decoder(decoder) {}

  void run() {
    for (int thread = 0; thread < coreCount(); ++thread) startWork([this] { makeThumbnails(); }, 0);
    for (std::size_t index = 0; index < count(); index += kPictureEach) open(index, Kind::picture);
    workerPool().waitForDone();
  }

  void print() const {
    std::printf("%-12s %8s %8s %8s %10s\n", "", "files", "opened", "refused", "longest");
    m_thumbnails.print("thumbnails");
    m_copies.print("  of copies");
    m_pictures.print("pictures");
  }

 private:
  enum class Kind : unsigned char { thumbnail, picture };

  // The files themselves, then the copies, in turns of all files.
  [[nodiscard]] std::size_t count() const { return m_files.empty() ? 0 : m_files.size() + m_arguments.copies; }

  void makeThumbnails() {
    for (std::size_t index = m_next++; index < count(); index = m_next++) open(index, Kind::thumbnail);
  }

  void open(std::size_t index, Kind kind) {
    if (index < m_files.size()) return decode(m_files[index], m_files[index].filename(), kind, false);
    const std::size_t copy = index - m_files.size() + m_arguments.firstCopy;
    const std::filesystem::path& file = m_files[copy % m_files.size()];
    const std::string name = std::to_string(copy) + "-" + file.filename().string();
    QFile source(QString::fromStdString(file.string()));
    QFile target(m_folder.filePath(QString::fromStdString((kind == Kind::picture ? "picture-" : "") + name)));
    if (!source.open(QIODevice::ReadOnly) || !target.open(QIODevice::WriteOnly)) return;
    target.write(damaged(source.readAll(), m_arguments.seed + copy));
    target.close();
    decode(target.fileName().toStdString(), name, kind, true);
    target.remove();
  }

  void decode(const std::filesystem::path& path, const std::string& name, Kind kind, bool isCopy) {
    const FileUrl url = urlOf(path);
    const std::uint64_t deaths = m_decoder.decoderDeaths();
    const auto begin = Clock::now();
    const ImageError error =
        (kind == Kind::picture ? m_decoder.decode(url) : m_decoder.decodeBounded(url, kThumbnailPixels)).error;
    const auto wait = Clock::now() - begin;
    (kind == Kind::picture ? m_pictures : m_thumbnails).add(name, error, wait);
    if (isCopy && kind == Kind::thumbnail) m_copies.add(name, error, wait);
    if (m_arguments.keep.empty() || error != ImageError::damaged || m_decoder.decoderDeaths() == deaths) return;
    std::error_code ignored;
    std::filesystem::copy_file(path, m_arguments.keep / path.filename(), ignored);
  }

  const Arguments& m_arguments;
  const std::vector<std::filesystem::path> m_files;
  ProcessImageDecoder& m_decoder;
  const QTemporaryDir m_folder;
  std::atomic<std::size_t> m_next = 0;
  Results m_thumbnails;
  Results m_copies;
  Results m_pictures;
};

}  // namespace

int main(int argc, char** argv) {
  const auto arguments = parse(argc, argv);
  if (!arguments) {
    std::fputs("usage: lumagrid-bench-hostile FOLDER… [--copies N] [--seed S] [--first K] [--keep FOLDER]\n", stderr);
    return 2;
  }
  const QCoreApplication application(argc, argv);
  ProcessImageDecoder decoder(LUMAGRID_DECODER);
  Run run(*arguments, decoder);
  const int descriptors = openDescriptors();
  ProcessWatch watch;
  run.run();
  const ProcessWatch::Peaks peaks = watch.takePeaks();
  run.print();
  std::printf("decoders that ended: %llu\n", static_cast<unsigned long long>(decoder.decoderDeaths()));
  std::printf("peak memory: window %lld MB, decoders together %lld MB\n", static_cast<long long>(peaks.own / 1024),
              static_cast<long long>(peaks.descendants / 1024));
  std::printf("descriptors: %d at the begin, %d at the end\n", descriptors, openDescriptors());
  return EXIT_SUCCESS;
}
