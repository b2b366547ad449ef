// Listing and sorting a large folder, in turns with what the system and ICU alone need for the same files.
//   lumagrid-bench-listing [COUNT]   (100,000 empty files in a temporary folder unless told)
#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unicode/coll.h>
#include <unistd.h>

#include <QTemporaryDir>
#include <algorithm>
#include <chrono>
#include <cstdio>
#include <functional>
#include <memory>
#include <random>
#include <string>
#include <vector>

#include "Figures.h"
#include "PhotoScan.h"

using namespace lumagrid;

namespace {

constexpr int kRuns = 7;

double timeOf(const std::function<void()>& work) {
  const auto start = std::chrono::steady_clock::now();
  work();
  return std::chrono::duration<double, std::milli>(std::chrono::steady_clock::now() - start).count();
}

struct Reference {
  const char* name;
  std::function<void()> work;
};

// Reports the medians of runs in turn, so that a machine that drifts drifts for both.
void compare(const char* name, const std::function<void()>& ours, const Reference& reference, const char* meaning) {
  std::vector<double> ourTimes;
  std::vector<double> referenceTimes;
  for (int run = 0; run < kRuns; ++run) {
    ourTimes.push_back(timeOf(ours));
    referenceTimes.push_back(timeOf(reference.work));
  }
  std::sort(ourTimes.begin(), ourTimes.end());
  std::sort(referenceTimes.begin(), referenceTimes.end());
  const double our = ourTimes[kRuns / 2];
  const double their = referenceTimes[kRuns / 2];
  report(Figure{name, milliseconds(our), std::string(reference.name) + " " + milliseconds(their), ratio(our / their),
                meaning});
}

void readFolder(const QByteArray& path) {
  DIR* folder = ::opendir(path.constData());
  while (folder && ::readdir(folder)) {
  }
  if (folder) ::closedir(folder);
}

void makeSortKeys(const std::vector<PhotoItem>& photos) {
  UErrorCode status = U_ZERO_ERROR;
  const std::unique_ptr<icu::Collator> collator(icu::Collator::createInstance(icu::Locale::getRoot(), status));
  if (U_FAILURE(status)) return;
  collator->setAttribute(UCOL_NUMERIC_COLLATION, UCOL_ON, status);
  uint8_t key[512];
  for (const PhotoItem& photo : photos) {
    const QByteArrayView name = photo.url.lastPathComponent();
    collator->getSortKey(icu::UnicodeString::fromUTF8({name.data(), static_cast<int32_t>(name.size())}), key,
                         sizeof key);
  }
}

void readDates(const std::vector<PhotoItem>& photos) {
  for (const PhotoItem& photo : photos) {
    struct stat status = {};
    (void)::lstat(photo.url.path().constData(), &status);
  }
}

}  // namespace

int main(int argc, char* argv[]) {
  const int count = argc > 1 ? std::atoi(argv[1]) : 100'000;
  const QTemporaryDir folder;
  const QByteArray path = folder.path().toLocal8Bit();
  std::vector<int> numbers(static_cast<std::size_t>(count));
  for (int i = 0; i < count; ++i) numbers[static_cast<std::size_t>(i)] = i;
  std::shuffle(numbers.begin(), numbers.end(), std::mt19937(1));
  for (const int number : numbers) {
    const QByteArray file = path + "/IMG_" + QByteArray::number(number) + ".jpg";
    ::close(::open(file.constData(), O_CREAT | O_WRONLY | O_CLOEXEC, 0644));
  }

  const FileUrl url = FileUrl::fromPath(path);
  const auto scan = photoItems(url);
  const auto& photos = std::get<std::vector<PhotoItem>>(scan);
  std::printf("%zu files\n", photos.size());
  compare(
      "list", [&] { (void)photoItems(url); }, {"readdir alone", [&] { readFolder(path); }},
      "1: nothing beyond the system's own work");
  compare(
      "sort by name", [&] { (void)sortedPositions(photos, SortOrder::nameAscending); },
      {"ICU sort keys, one thread", [&] { makeSortKeys(photos); }},
      "the sort itself comes on top; cores side by side make it less");
  compare(
      "sort by date", [&] { (void)sortedPositions(photos, SortOrder::dateNewest); },
      {"lstat, one thread", [&] { readDates(photos); }}, "below 1: cores side by side");
}
