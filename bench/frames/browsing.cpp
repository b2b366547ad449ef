// The real window on a folder of photos: what frames cost while the grid scrolls at full speed and thumbnails load, how
// long a click or an arrow key takes to the photo on screen, beyond its decode, and what memory that leaves behind.
// Usage: lumagrid-bench-browsing FOLDER

#include <QApplication>
#include <QFile>
#include <QKeyEvent>
#include <QWheelEvent>

#include "DesktopPlatform.h"
#include "FrameTimes.h"
#include "MemoryBudget.h"
#include "PictureStore.h"
#include "ProcessImageDecoder.h"
#include "QmlPlugins.h"
#include "SettingsPreferences.h"
#include "ThumbnailStore.h"
#include "ToolkitEnvironment.h"

using namespace lumagrid;

namespace {

constexpr int kScrolledFrames = 600;
constexpr int kPointsPerFrame = 120;
constexpr int kPhotos = 20;

double elapsed(const QElapsedTimer& clock) {
  return static_cast<double>(clock.nsecsElapsed()) / 1e6;
}

// What the process takes, memory that others use too counted in parts.
void reportMemory(const char* name) {
  QFile file(QStringLiteral("/proc/self/smaps_rollup"));
  if (!file.open(QIODevice::ReadOnly)) return;
  for (const QByteArray& line : file.readAll().split('\n')) {
    if (!line.startsWith("Pss:")) continue;
    const long megabytes = line.mid(4).trimmed().split(' ').front().toLong() / 1024;
    const auto kept = static_cast<long>(keptBytes() >> 20);
    report(Figure{name, std::to_string(megabytes) + " MB", "kept pictures, at most " + std::to_string(kept) + " MB",
                  std::to_string(megabytes - kept) + " MB more",
                  "memory of the process beyond what is kept on purpose"});
  }
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

// Into memory that was used before, as when photos are stepped through.
double decodeTime(ImageDecoder& decoder, const FileUrl& file) {
  (void)decoder.decode(file);
  QElapsedTimer clock;
  clock.start();
  (void)decoder.decode(file);
  return elapsed(clock);
}

// The rest of the photo is uploaded, or the grid is back.
void settle() {
  QElapsedTimer clock;
  clock.start();
  waitUntil(clock, 500);
}

// From the click on a tile of the grid to the end of the frame with the photo.
double open(QQuickWindow& window, ContentView& view, std::int64_t index) {
  QElapsedTimer clock;
  clock.start();
  view.handleTileClick(index, Qt::NoModifier);
  nextFrame(window);
  const double time = elapsed(clock);
  settle();
  return time;
}

// From the key's press to the end of the frame with the photo.
double stepTo(QQuickWindow& window, Qt::Key key) {
  QElapsedTimer clock;
  clock.start();
  QKeyEvent press(QEvent::KeyPress, key, Qt::NoModifier);
  QCoreApplication::sendEvent(&window, &press);
  nextFrame(window);
  const double time = elapsed(clock);
  QKeyEvent release(QEvent::KeyRelease, key, Qt::NoModifier);
  QCoreApplication::sendEvent(&window, &release);
  settle();
  return time;
}

void lookAtPhotos(QQuickWindow& window, ContentView& view, ImageDecoder& decoder) {
  std::vector<double> click;
  std::vector<double> next;
  std::vector<double> back;
  std::vector<double> beyondDecode;
  for (int photo = kPhotos - 1; photo >= 0; --photo) {
    const double time = open(window, view, photo);
    click.push_back(time - decodeTime(decoder, view.library()->currentPhoto()->url));
    if (photo == 0) break;
    view.exitDetailMode();
    settle();
  }
  for (int photo = 1; photo < kPhotos; ++photo) {
    next.push_back(stepTo(window, Qt::Key_Right));
    beyondDecode.push_back(next.back() - decodeTime(decoder, view.library()->currentPhoto()->url));
    back.push_back(stepTo(window, Qt::Key_Left));
    (void)stepTo(window, Qt::Key_Right);
  }
  report("click, beyond its decode", "what a click takes to the photo on screen, its decode apart", click);
  report("next photo", "what an arrow key takes to the photo on screen", next);
  report("next photo, beyond its decode", "the same, its decode apart", beyondDecode);
  report("back to the photo left", "the same for a photo that is kept in memory", back);
}

}  // namespace

int main(int argc, char* argv[]) {
  setToolkitEnvironment();
  QApplication application(argc, argv);
  if (argc != 2) {
    std::fprintf(stderr, "usage: lumagrid-bench-browsing FOLDER\n");
    return 2;
  }
  ProcessImageDecoder decoder(LUMAGRID_DECODER);
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

  lookAtPhotos(*window, view, decoder);
  reportMemory("memory with a photo");
  return 0;
}
