// Frame times of the photo on the detail stage: what each frame costs this process, from the moment the window is asked
// to draw until its buffers are swapped, while a photo is pinched, dragged, springs back and is stepped.
// Usage: lumagrid-bench-frames IMAGE IMAGE [IMAGE...]

#include <QGuiApplication>
#include <QImageReader>
#include <algorithm>
#include <cmath>
#include <functional>
#include <numbers>

#include "FrameTimes.h"
#include "PhotoView.h"
#include "ToolkitEnvironment.h"

namespace {

using lumagrid::PhotoView;

// Draws `frames` frames, each after one step of the gesture, at most one every 16 ms.
void gesture(QQuickWindow& window, int frames, const std::function<void(double)>& step) {
  QElapsedTimer clock;
  for (int i = 0; i <= frames; ++i) {
    clock.start();
    step(static_cast<double>(i) / frames);
    nextFrame(window);
    waitUntil(clock, 16);
  }
}

QImage load(const QString& file) {
  QImageReader reader(file);
  return reader.read().convertToFormat(QImage::Format_RGBX8888);
}

}  // namespace

int main(int argc, char* argv[]) {
  lumagrid::setToolkitEnvironment();
  QGuiApplication app(argc, argv);
  QImageReader::setAllocationLimit(0);
  std::vector<QImage> photos;
  for (const QString& file : app.arguments().mid(1)) {
    photos.push_back(load(file));
  }
  if (photos.size() < 2 ||
      std::any_of(photos.begin(), photos.end(), [](const QImage& photo) { return photo.isNull(); })) {
    std::fprintf(stderr, "usage: lumagrid-bench-frames IMAGE IMAGE [IMAGE...]\n");
    return 2;
  }

  QQuickWindow window;
  window.resize(1100, 760);
  PhotoView view(window.contentItem());
  view.setSize(window.size());
  window.show();
  nextFrame(window);
  FrameTimes times(&window);

  std::vector<double> steps;
  gesture(window, 20, [&, i = std::size_t{0}](double) mutable {
    QElapsedTimer clock;
    clock.start();
    view.setImage(photos[++i % photos.size()]);
    nextFrame(window);
    steps.push_back(static_cast<double>(clock.nsecsElapsed()) / 1e6);
  });
  report("new photo to its frame", "what a step shows the photo after, its decode apart", steps);
  (void)times.take();

  const auto pinch = [&view](double t) { view.setZoomScale(1 + 1.5 * (1 - std::cos(2 * std::numbers::pi * t))); };
  gesture(window, 240, pinch);
  report("first pinch 1-4-1", "a frame while the photo is zoomed and uploaded", times.take());
  gesture(window, 240, pinch);
  report("second pinch 1-4-1", "a frame while the photo is zoomed", times.take());
  view.setZoomScale(4);
  gesture(window, 30, [](double) {});
  (void)times.take();
  gesture(window, 240, [&view](double t) {
    view.setOffset({1500 * std::sin(2 * std::numbers::pi * t), 900 * std::sin(4 * std::numbers::pi * t)});
  });
  report("drag at 4", "a frame while the photo is panned", times.take());
  std::vector<double> springs;
  for (int i = 0; i < 4; ++i) {
    view.setZoomScale(4);
    view.setOffset({300, 200});
    do {
      nextFrame(window);
    } while (view.displayedScale() != 4);
    (void)times.take();
    view.animate(PhotoView::Curve::Spring);
    view.setZoomScale(1);
    view.setOffset({});
    do {
      nextFrame(window);
    } while (view.displayedScale() != 1);
    const std::vector<double> spring = times.take();
    springs.insert(springs.end(), spring.begin(), spring.end());
  }
  report("four springs 4-1", "a frame while the photo springs back", springs);
  return 0;
}
