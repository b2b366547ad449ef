// The real window scrolls through 1,000 photos, each of a color of its own, while every decoder is killed every 100 ms.
// Tells how many tiles stayed without their picture for 10 s or had another's, and what is left open, mapped and
// undead. The status is 1 when any of it is wrong. Usage: lumagrid-bench-kills [PHOTOS]

#include <QApplication>
#include <QElapsedTimer>
#include <QPainter>
#include <QTemporaryDir>
#include <QWheelEvent>
#include <atomic>
#include <csignal>
#include <cstdio>
#include <fstream>
#include <iterator>
#include <set>
#include <thread>

#include "DesktopPlatform.h"
#include "PhotoThumbnailTile.h"
#include "PictureStore.h"
#include "ProcessImageDecoder.h"
#include "ProcessWatch.h"
#include "QmlPlugins.h"
#include "SettingsPreferences.h"
#include "ThumbnailStore.h"
#include "ToolkitEnvironment.h"
#include "WorkerPool.h"

using namespace lumagrid;

namespace {

// Far enough from all others that rounding mixes none up.
QColor colorOf(int number) {
  return {16 + number % 10 * 24, 16 + number / 10 % 10 * 24, 16 + number / 100 % 10 * 24};
}

int numberOf(const PhotoThumbnailTile& tile) {
  return tile.name().section(u'.', 0, 0).toInt();
}

bool writePhotos(const QTemporaryDir& folder, int count) {
  std::atomic<int> written = 0;
  parallelFor(count, [&](int number) {
    QImage photo(1200, 800, QImage::Format_RGB32);
    photo.fill(colorOf(number));
    written += photo.save(folder.filePath(QString::number(number) + QStringLiteral(".png"))) ? 1 : 0;
  });
  return written == count;
}

std::ptrdiff_t mappings() {
  std::ifstream maps("/proc/self/maps");
  return std::count(std::istreambuf_iterator<char>(maps), {}, '\n');
}

// The launcher, which is this process's child, is left alone.
int killDecoders() {
  int killed = 0;
  for (const auto& [process, state] : descendants()) {
    if (state.parent != ::getpid() && !state.isZombie && ::kill(process, SIGKILL) == 0) ++killed;
  }
  return killed;
}

struct Result {
  std::set<int> seen;
  int wrong = 0;
  int empty = 0;
  qint64 longest = 0;  // ms, from a look at a screen to its last picture
};

std::vector<PhotoThumbnailTile*> tilesInView(const QQuickWindow& window) {
  std::vector<PhotoThumbnailTile*> inView;
  for (auto* tile : window.findChildren<PhotoThumbnailTile*>()) {
    const QRectF place = tile->mapRectToScene(tile->boundingRect());
    const QRectF whole(QPointF(), window.size());
    if (tile->isVisible() && !tile->name().isEmpty() && whole.contains(place)) inView.push_back(tile);
  }
  return inView;
}

// In some place: buttons float above others.
bool showsItsColor(const PhotoThumbnailTile& tile, const QImage& window) {
  const double scale = window.devicePixelRatio();
  const QColor wanted = colorOf(numberOf(tile));
  for (const double x : {0.3, 0.5, 0.7}) {
    for (const double y : {0.3, 0.5, 0.7}) {
      const QPointF place = tile.mapToScene(QPointF(tile.width() * x, tile.height() * y)) * scale;
      const QColor there = window.pixelColor(place.toPoint());
      const int distance = std::max({std::abs(there.red() - wanted.red()), std::abs(there.green() - wanted.green()),
                                     std::abs(there.blue() - wanted.blue())});
      if (distance <= 2) return true;
    }
  }
  return false;
}

// Waits until all that is in view has its picture, and compares what the window then shows.
void look(QQuickWindow& window, Result& result) {
  constexpr qint64 kLongest = 10'000;
  QElapsedTimer clock;
  clock.start();
  QCoreApplication::processEvents();
  const auto tiles = tilesInView(window);
  const auto isFilled = [](const PhotoThumbnailTile* tile) { return !tile->thumbnail().isNull(); };
  while (!std::all_of(tiles.begin(), tiles.end(), isFilled) && clock.elapsed() < kLongest) {
    QCoreApplication::processEvents(QEventLoop::AllEvents, 10);
  }
  result.longest = std::max(result.longest, clock.elapsed());
  const QImage shown = window.grabWindow();
  for (const PhotoThumbnailTile* tile : tiles) {
    result.seen.insert(numberOf(*tile));
    if (!isFilled(tile)) {
      ++result.empty;
    } else if (!showsItsColor(*tile, shown)) {
      ++result.wrong;
    }
  }
}

void turnWheel(QQuickWindow& window, int angle) {
  const QPointF middle(window.width() / 2.0, window.height() / 2.0);
  QWheelEvent wheel(middle, window.mapToGlobal(middle), {0, angle}, {0, angle}, Qt::NoButton, Qt::NoModifier,
                    Qt::NoScrollPhase, false);
  QCoreApplication::sendEvent(&window, &wheel);
  QCoreApplication::processEvents();
}

// A row or so at a time, from the top to the end.
void lookAtAll(QQuickWindow& window, int count, Result& result) {
  turnWheel(window, 1'000'000);
  for (int steps = 0; std::ssize(result.seen) < count && steps < count; ++steps) {
    look(window, result);
    turnWheel(window, -250);
  }
}

}  // namespace

int main(int argc, char* argv[]) {
  setToolkitEnvironment();
  QApplication application(argc, argv);
  const int count = argc > 1 ? std::atoi(argv[1]) : 1000;
  const QTemporaryDir folder;
  if (count < 1 || count > 1000 || !writePhotos(folder, count)) return 2;
  ProcessImageDecoder decoder(LUMAGRID_DECODER);
  ThumbnailStore::setDecoder(decoder);
  PictureStore pictures(decoder);
  SettingsPreferences preferences;
  const Appearance appearance(ColorScheme::light);
  DesktopPlatform desktop(pictures, preferences, appearance);
  LumagridApp app(desktop.platform());
  QQuickWindow* window = app.makeWindow();
  if (window == nullptr) return 2;
  app.contentView(window)->openPath(FileUrl::fromPath(folder.path()));
  window->show();
  Result calm;
  look(*window, calm);
  const auto descriptorsBefore = openDescriptors();
  const auto mappingsBefore = mappings();

  std::atomic<int> kills = 0;
  Result result;
  {
    const std::jthread killer([&kills](const std::stop_token& isOver) {
      while (!isOver.stop_requested()) {
        kills += killDecoders();
        std::this_thread::sleep_for(std::chrono::milliseconds(100));
      }
    });
    lookAtAll(*window, count, result);
  }
  // Whoever was killed is reaped when his place is taken.
  for (int each = 0; each <= 2 * coreCount(); ++each) {
    const auto photo = FileUrl::fromPath(folder.filePath(QString::number(each % count) + QStringLiteral(".png")));
    if (decoder.decode(photo).pixels.isNull() || decoder.decodeBounded(photo, 50).pixels.isNull()) ++result.empty;
  }
  const auto left = descendants();
  const auto zombies = std::count_if(left.begin(), left.end(), [](const auto& each) { return each.second.isZombie; });
  const auto moreDescriptors = openDescriptors() - descriptorsBefore;
  const auto moreMappings = mappings() - mappingsBefore;
  std::printf("photos seen      %zu of %d\nkills            %d\nwithout picture  %d\nof another       %d\n",
              result.seen.size(), count, kills.load(), result.empty, result.wrong);
  std::printf("longest wait     %lld ms\ndescriptors      %d, %+d\nmappings         %td, %+td\nzombies          %td\n",
              static_cast<long long>(result.longest), descriptorsBefore, moreDescriptors, mappingsBefore, moreMappings,
              zombies);
  const bool isRight = std::ssize(result.seen) == count && result.empty == 0 && result.wrong == 0 && zombies == 0 &&
                       moreDescriptors < 16 && moreMappings < 64;
  return isRight ? EXIT_SUCCESS : EXIT_FAILURE;
}
