// The real window on a folder of photos: what frames cost while the grid scrolls at full speed and thumbnails load; how
// many tiles show a spinner at the pace of somebody who looks at them; how long a click or an arrow takes to the photo
// on screen, when it was made ready and while the arrow is held; and what memory that takes and leaves behind.
// Usage: lumagrid-bench-browsing FOLDER

#include <QApplication>
#include <QDir>
#include <QFile>
#include <QKeyEvent>
#include <QSet>
#include <QTemporaryDir>
#include <QWheelEvent>
#include <tuple>

#include "DesktopPlatform.h"
#include "FrameTimes.h"
#include "MemoryBudget.h"
#include "PictureStore.h"
#include "ProcessImageDecoder.h"
#include "QmlPlugins.h"
#include "SettingsPreferences.h"
#include "ThumbnailStore.h"
#include "ToolkitEnvironment.h"
#include "WindowWatch.h"
#include "WorkerPool.h"

using namespace lumagrid;

namespace {

constexpr int kScrolledFrames = 600;
constexpr int kPointsPerFrame = 120;
constexpr int kPhotos = 20;

double elapsed(const QElapsedTimer& clock) {
  return static_cast<double>(clock.nsecsElapsed()) / 1e6;
}

void reportMemory(const char* name) {
  const long megabytes = proportionalMemory();
  const auto kept = static_cast<long>(keptBytes() >> 20);
  report(Figure{name, std::to_string(megabytes) + " MB", "kept pictures, at most " + std::to_string(kept) + " MB",
                std::to_string(megabytes - kept) + " MB more",
                "memory of the window and its decoders beyond what is kept on purpose"});
}

void scroll(QQuickWindow& window) {
  const QPointF middle(window.width() / 2.0, window.height() / 2.0);
  QElapsedTimer clock;
  for (int frame = 0; frame < kScrolledFrames; ++frame) {
    clock.start();
    QWheelEvent wheel(middle, window.mapToGlobal(middle), {0, -kPointsPerFrame}, {0, -kPointsPerFrame}, Qt::NoButton,
                      Qt::NoModifier, Qt::NoScrollPhase, false);
    QCoreApplication::sendEvent(&window, &wheel);
    nextFrame(window);
    waitUntil(clock, 16);
  }
}

// The rest of the photo is uploaded, the neighbors are ready, or the grid is back.
void settle(int milliseconds = 300) {
  QElapsedTimer clock;
  clock.start();
  waitUntil(clock, milliseconds);
}

void send(QQuickWindow& window, QEvent::Type type, Qt::Key key, bool isRepeat = false) {
  QKeyEvent event(type, key, Qt::NoModifier, QString(), isRepeat);
  QCoreApplication::sendEvent(&window, &event);
}

// From the key's press to the end of the frame with the photo.
double stepTo(QQuickWindow& window, Qt::Key key) {
  QElapsedTimer clock;
  clock.start();
  send(window, QEvent::KeyPress, key);
  nextFrame(window);
  const double time = elapsed(clock);
  send(window, QEvent::KeyRelease, key);
  return time;
}

// One decode by itself, into memory that was used before: the median.
double decodeTime(ImageDecoder& decoder, const PhotoLibrary& library) {
  std::vector<double> times;
  for (std::size_t photo = 0; photo < 12; ++photo) {
    QElapsedTimer clock;
    clock.start();
    (void)decoder.decode(library.photos()[photo].url);
    times.push_back(elapsed(clock));
  }
  std::nth_element(times.begin(), times.begin() + 6, times.end());
  return times[6];
}

void stepThroughPhotos(QQuickWindow& window) {
  std::vector<double> next;
  std::vector<double> back;
  settle();
  for (int photo = 1; photo < kPhotos; ++photo) {
    next.push_back(stepTo(window, Qt::Key_Right));
    settle();
    back.push_back(stepTo(window, Qt::Key_Left));
    settle();
    (void)stepTo(window, Qt::Key_Right);
    settle();
  }
  report("next photo after 300 ms", "what an arrow key takes to the photo on screen, when that was made ready", next);
  report("back to the photo left", "the same for the photo that was just left", back);
}

// The arrow is held from the first photo to the last; and until shortly before, to see where it stops.
void holdArrow(QQuickWindow& window, ContentView& view, double decode) {
  constexpr int kRepeatMs = 40;
  const auto& library = *view.library();
  const auto hold = [&](std::int64_t last) {
    view.library()->openPhoto(0);
    settle(1000);
    std::int64_t shown = 0;
    bool isWhole = true;
    // While the main thread waits: what this frame shows.
    const auto look = QObject::connect(&window, &QQuickWindow::afterSynchronizing, [&] {
      isWhole = isWhole && library.currentIndex() - shown <= 1 && !library.currentImage().isNull();
      shown = library.currentIndex();
    });
    send(window, QEvent::KeyPress, Qt::Key_Right);
    settle();
    QElapsedTimer clock;
    clock.start();
    const std::int64_t first = library.currentIndex();
    for (qint64 due = 0; shown < last; due += kRepeatMs) {
      waitUntil(clock, due);
      send(window, QEvent::KeyPress, Qt::Key_Right, true);
    }
    const double time = elapsed(clock);
    send(window, QEvent::KeyRelease, Qt::Key_Right);
    QElapsedTimer released;
    released.start();
    double rest = 0;
    const std::int64_t atRelease = shown;
    const auto wait =
        QObject::connect(&window, &QQuickWindow::frameSwapped, &window, [&] { rest = elapsed(released); });
    settle();
    QObject::disconnect(look);
    QObject::disconnect(wait);
    return std::tuple(time, static_cast<double>(shown - first), isWhole, shown == atRelease ? 0 : rest);
  };
  const std::int64_t last = library.photoCount() - 1;
  const auto [time, photos, isWhole, unused] = hold(last);
  const double pace = photos / time * 1000;
  const double possible = coreCount() / decode * 1000;
  report(Figure{"held arrow", ratio(pace) + " photos/s", "all cores decoding, " + ratio(possible) + "/s",
                ratio(pace / possible) + (isWhole ? "" : ", NOT EVERY PHOTO WAS SHOWN"),
                "how fast a held arrow passes photos, each of them shown"});
  std::vector<double> rests;
  for (std::int64_t index = 6; index <= last - 2 && index < 26; index += 2) rests.push_back(std::get<3>(hold(index)));
  report("from letting go to rest", "whether a held arrow stops at once", rests);
}

// From the click on a tile of the grid to the end of the frame with the photo.
void clickAndReturn(QQuickWindow& window, ContentView& view, double decode) {
  std::vector<double> times;
  int spinners = 0;
  for (int click = 0; click < kPhotos; ++click) {
    QElapsedTimer clock;
    clock.start();
    view.handleTileClick(click * 7 % kPhotos, Qt::NoModifier);  // no neighbors
    nextFrame(window);
    times.push_back(elapsed(clock) - decode);
    settle();
    view.exitDetailMode();
    nextFrame(window);
    spinners += static_cast<int>(spinnersIn(window).size());
    settle();
  }
  report("click, beyond one decode", "what a click takes to the photo on screen, a decode apart", times);
  report(Figure{"tiles empty on return", std::to_string(spinners), "clicks and returns, " + std::to_string(kPhotos),
                ratio(spinners / static_cast<double>(kPhotos)), "whether the grid is back in the first frame"});
}

// A thousand photos, a screen a second, in steps of the wheel.
void scrollAtLeisure(QQuickWindow& window, ContentView& view, const QByteArray& folder, double thumbnail) {
  constexpr int kScreens = 20;
  const QDir source(QFile::decodeName(folder));
  const QTemporaryDir many(source.filePath(QStringLiteral("../lumagrid-bench-XXXXXX")));  // on the same disk
  const QStringList names = source.entryList({QStringLiteral("*.jp*g")}, QDir::Files);
  for (int photo = 0; photo < 1000; ++photo) {
    const QByteArray from = QFile::encodeName(source.filePath(names[photo % names.size()]));
    if (::link(from, QFile::encodeName(many.filePath(QStringLiteral("%1.jpg").arg(photo)))) != 0) return;
  }
  view.openPath(FileUrl::fromPath(QFile::encodeName(many.path())));
  settle(1500);
  const QPointF middle(window.width() / 2.0, window.height() / 2.0);
  const double screen = window.height() - 2 * ContentView::kStageMargin;
  const int wheels = static_cast<int>(screen / kPointsPerFrame) + 1;
  QSet<QByteArray> seen;
  QSet<QByteArray> waited;
  FrameTimes times(&window);
  const auto look = QObject::connect(&window, &QQuickWindow::frameSwapped, &window, [&] {
    for (const PhotoThumbnailTile* tile : tilesIn(window)) seen.insert(tile->photo().id());
    for (const QByteArray& path : spinnersIn(window)) waited.insert(path);
  });
  QElapsedTimer clock;
  clock.start();
  for (int wheel = 0; wheel < kScreens * wheels; ++wheel) {
    QWheelEvent event(middle, window.mapToGlobal(middle), {}, {0, -kPointsPerFrame}, Qt::NoButton, Qt::NoModifier,
                      Qt::NoScrollPhase, false);
    QCoreApplication::sendEvent(&window, &event);
    waitUntil(clock, (wheel + 1) * 1000 / wheels);
  }
  QObject::disconnect(look);
  report("frames at a screen a second", "a frame while somebody looks through a large folder", times.take());
  const double perSecond = static_cast<double>(seen.size()) / kScreens;
  report(Figure{"tiles with a spinner", ratio(100.0 * waited.size() / std::max<qsizetype>(seen.size(), 1)) + " %",
                "tiles shown, " + std::to_string(seen.size()),
                "decoding allows " + ratio(coreCount() / thumbnail * 1000 / perSecond) + " times the pace",
                "whether thumbnails are there before they are looked at"});

  settle(1500);
  qsizetype without = 0;
  qsizetype known = 0;
  for (const int columns : {3, 2, 3, 4, 5, 6, 5, 4}) {
    view.setGridDimension(columns);
    nextFrame(window);
    for (const PhotoThumbnailTile* tile : tilesIn(window)) {
      if (!seen.contains(tile->photo().id())) continue;
      ++known;
      without += tile->thumbnail().isNull() ? 1 : 0;
    }
    settle(600);
  }
  report(Figure{"spinners after a step in columns", std::to_string(without),
                "tiles seen before, " + std::to_string(known), ratio(without / static_cast<double>(known)),
                "whether a thumbnail of another size stands in"});
}

}  // namespace

int main(int argc, char* argv[]) {
  setToolkitEnvironment();
  ProcessImageDecoder decoder(LUMAGRID_DECODER);
  QApplication application(argc, argv);
  if (argc != 2) {
    std::fprintf(stderr, "usage: lumagrid-bench-browsing FOLDER\n");
    return 2;
  }
  ThumbnailStore::setDecoder(decoder);
  PictureStore pictures(decoder);
  SettingsPreferences preferences;
  const Appearance appearance(ColorScheme::light);
  DesktopPlatform desktop(pictures, preferences, appearance);
  LumagridApp app(desktop.platform());
  QQuickWindow* window = app.makeWindow();
  if (!window) return EXIT_FAILURE;
  ContentView& view = *app.contentView(window);
  view.openPath(FileUrl::fromPath(QByteArray(argv[1])));
  if (view.library()->photoCount() < kPhotos) {
    std::fprintf(stderr, "lumagrid-bench-browsing: at least %d photos are needed\n", kPhotos);
    return 2;
  }
  window->show();
  nextFrame(*window);
  reportMemory("memory with the grid");

  FrameTimes times(window);
  scroll(*window);
  report("scrolled while loading", "a frame while the grid scrolls and thumbnails load", times.take());
  QElapsedTimer rest;
  rest.start();
  while (app.thumbnailQueue().pendingCount() > 0) waitUntil(rest, rest.elapsed() + 50);
  reportMemory("memory after scrolling");

  const double decode = decodeTime(decoder, *view.library());
  rest.start();
  (void)decoder.decodeBounded(view.library()->photos().front().url, 480);
  const double thumbnail = elapsed(rest);
  clickAndReturn(*window, view, decode);
  view.handleTileClick(0, Qt::NoModifier);
  stepThroughPhotos(*window);
  (void)times.take();
  holdArrow(*window, view, decode);
  report("frames while photos pass", "a frame while an arrow is held", times.take());
  reportMemory("memory with a photo");
  view.exitDetailMode();
  settle(10'000);
  reportMemory("memory 10 s after a photo");
  scrollAtLeisure(*window, view, argv[1], thumbnail);
  reportMemory("memory in the end");
  return 0;
}
