#include <QByteArray>
#include <QCoreApplication>
#include <QElapsedTimer>
#include <QFile>
#include <charconv>
#include <cstdio>
#include <memory>
#include <optional>
#include <string_view>
#include <vector>

#include "FileImageDecoder.h"
#include "ProcessImageDecoder.h"

namespace {

constexpr char kUsage[] =
    "Usage: lumagrid-decode [--thumbnail N] [--png OUT] [--in-process] FILE...\n"
    "Opens pictures as the browser does and prints one line for each: its size, the time it took, its path.\n"
    "  --thumbnail N  scaled down so that the longer side has N pixels\n"
    "  --png OUT      also writes the picture (of a single FILE) to OUT\n"
    "  --in-process   decodes without a process of its own around the codecs\n"
    "  --help         prints this text\n"
    "Exits with 0 when all of them opened, 1 when one did not, 2 when it was called wrongly.\n";

struct Arguments {
  std::int64_t thumbnailPixels = 0;  // 0: the whole picture
  QByteArray pngPath;
  bool isInProcess = false;
  std::vector<QByteArray> files;  // bytes as given: a path need not be UTF-8
};

std::optional<Arguments> parse(int argc, char* argv[]) {
  Arguments arguments;
  bool hasOptions = true;
  for (int index = 1; index < argc; ++index) {
    const std::string_view argument = argv[index];
    if (hasOptions && argument == "--") {
      hasOptions = false;
    } else if (hasOptions && argument == "--thumbnail" && index + 1 < argc) {
      const std::string_view number = argv[++index];
      const auto [end, error] =
          std::from_chars(number.data(), number.data() + number.size(), arguments.thumbnailPixels);
      if (error != std::errc() || end != number.data() + number.size() || arguments.thumbnailPixels < 1) return {};
    } else if (hasOptions && argument == "--png" && index + 1 < argc) {
      arguments.pngPath = argv[++index];
    } else if (hasOptions && argument == "--in-process") {
      arguments.isInProcess = true;
    } else if (hasOptions && argument.substr(0, 2) == "--") {
      return {};
    } else {
      arguments.files.emplace_back(argv[index]);
    }
  }
  if (arguments.files.empty() || (!arguments.pngPath.isEmpty() && arguments.files.size() != 1)) return {};
  return arguments;
}

bool writePng(const QImage& pixels, const QByteArray& path) {
  std::FILE* const target = std::fopen(path.constData(), "wb");
  if (target == nullptr) return false;
  QFile file;
  const bool isWritten = file.open(target, QIODevice::WriteOnly) && pixels.save(&file, "png");
  file.close();
  return std::fclose(target) == 0 && isWritten;
}

}  // namespace

int main(int argc, char* argv[]) {
  for (int index = 1; index < argc; ++index) {
    if (std::string_view(argv[index]) == "--help") return std::fputs(kUsage, stdout), 0;
  }
  const auto arguments = parse(argc, argv);
  if (!arguments) return std::fputs(kUsage, stderr), 2;

  const QCoreApplication application(argc, argv);  // finds the plugins of the image formats
  const auto made = arguments->isInProcess
                        ? std::unique_ptr<lumagrid::ImageDecoder>(std::make_unique<lumagrid::FileImageDecoder>())
                        : std::make_unique<lumagrid::ProcessImageDecoder>(LUMAGRID_DECODER);
  lumagrid::ImageDecoder& decoder = *made;
  int status = 0;
  for (const QByteArray& path : arguments->files) {
    const auto file = lumagrid::FileUrl::fromPath(path);
    QElapsedTimer timer;
    timer.start();
    const auto picture =
        arguments->thumbnailPixels > 0 ? decoder.decodeBounded(file, arguments->thumbnailPixels) : decoder.decode(file);
    const qint64 milliseconds = timer.elapsed();
    if (picture.error != lumagrid::ImageError::none) {
      std::printf("none %s\n", path.constData());
      status = 1;
      continue;
    }
    std::printf("ok %dx%d %lld ms %s\n", picture.pixels.width(), picture.pixels.height(),
                static_cast<long long>(milliseconds), path.constData());
    if (!arguments->pngPath.isEmpty() && !writePng(picture.pixels, arguments->pngPath)) {
      std::fprintf(stderr, "Cannot write %s\n", arguments->pngPath.constData());
      status = 1;
    }
  }
  return status;
}
