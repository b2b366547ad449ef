#include "PhotoView.h"

#include <QQuickWindow>
#include <QSignalSpy>
#include <QTest>
#include <cmath>
#include <functional>
#include <numbers>

using namespace lumagrid;

namespace {

const QColor kBackground(10, 20, 30);

using Colour = std::function<QColor(double x, double y)>;

Colour plain(QColor colour) {
  return [colour](double, double) { return colour; };
}

QImage painted(QSize size, const Colour& colour) {
  QImage image(size, QImage::Format_RGBX8888);
  for (int y = 0; y < size.height(); ++y) {
    for (int x = 0; x < size.width(); ++x) image.setPixelColor(x, y, colour(x + 0.5, y + 0.5));
  }
  return image;
}

// Red and green tell where a point is in the whole photo, blue where it is among its neighbours.
constexpr QSize kLarge(3001, 2003);
QColor gradient(double x, double y) {
  const double wave = std::sin((x + 2 * y) * 2 * std::numbers::pi / 300);
  return QColor::fromRgbF(float(x / kLarge.width()), float(y / kLarge.height()), float(0.5 + 0.3 * wave));
}

int distance(const QColor& a, const QColor& b) {
  return std::max({std::abs(a.red() - b.red()), std::abs(a.green() - b.green()), std::abs(a.blue() - b.blue())});
}

class Stage {
 public:
  Stage() {
    window.resize(700, 500);
    window.setColor(kBackground);
    view.setParentItem(window.contentItem());
    view.setSize(window.size());
    window.show();
    if (!QTest::qWaitForWindowExposed(&window)) qFatal("The window does not show");
  }

  [[nodiscard]] QImage picture() { return window.grabWindow().convertToFormat(QImage::Format_RGB32); }
  [[nodiscard]] QRectF placed() const {
    return placedRect(pixelAligned(view.fittedBox(), {}, 1), view.size(), {view.zoomScale(), view.offset()});
  }
  // Where a pixel of the window lies in the photo, in its pixels.
  [[nodiscard]] QPointF inPhoto(int x, int y) const {
    const QRectF rect = placed();
    return {(x + 0.5 - rect.x()) * view.image().width() / rect.width(),
            (y + 0.5 - rect.y()) * view.image().height() / rect.height()};
  }
  // The largest difference from `colour`, away from the photo's edges; from the background outside.
  [[nodiscard]] int worst(const Colour& colour) {
    const QImage shown = picture();
    const QRectF rect = placed();
    int worst = 0;
    for (int y = 0; y < shown.height(); ++y) {
      for (int x = 0; x < shown.width(); ++x) {
        const QRectF pixel(x, y, 1, 1);
        if (rect.adjusted(8, 8, -8, -8).contains(pixel)) {
          const QPointF at = inPhoto(x, y);
          worst = std::max(worst, distance(shown.pixelColor(x, y), colour(at.x(), at.y())));
        } else if (!rect.adjusted(-1, -1, 1, 1).intersects(pixel)) {
          worst = std::max(worst, distance(shown.pixelColor(x, y), kBackground));
        }
      }
    }
    return worst;
  }

  QQuickWindow window;
  PhotoView view;
};

}  // namespace

class PhotoViewTest : public QObject {
  Q_OBJECT

 private Q_SLOTS:
  void showsThePhotoInPlace_data() {
    QTest::addColumn<double>("scale");
    QTest::addColumn<QPointF>("offset");
    QTest::newRow("fitted") << 1.0 << QPointF();
    QTest::newRow("hardly zoomed") << 1.04 << QPointF();
    QTest::newRow("zoomed") << 2.7 << QPointF(-300, 150);
    QTest::newRow("past its pixels") << 8.0 << QPointF(900.5, 700.25);
    QTest::newRow("with an edge in sight") << 3.0 << QPointF(700, 400);
    QTest::newRow("dragged out of sight") << 2.0 << QPointF(5000, 0);
  }
  void showsThePhotoInPlace() {
    QFETCH(double, scale);
    QFETCH(QPointF, offset);
    static const QImage photo = painted(kLarge, gradient);
    Stage stage;
    stage.view.setImage(photo);
    stage.view.setZoomScale(scale);
    stage.view.setOffset(offset);
    // Coarse in the first frame, exact soon; at no time anything else, such as a seam.
    QVERIFY(stage.worst(gradient) <= 8);
    QTRY_VERIFY(stage.worst(gradient) <= 3);
  }

  void followsTheStagesSize() {
    Stage stage;
    stage.view.setImage(painted(kLarge, gradient));
    QVERIFY(stage.worst(gradient) <= 8);
    QSignalSpy boxChanged(&stage.view, &PhotoView::fittedBoxChanged);
    stage.view.setSize({500, 400});
    QVERIFY(!boxChanged.isEmpty());
    QVERIFY(stage.worst(gradient) <= 10);  // the picture in hand, scaled
    QTRY_VERIFY(stage.worst(gradient) <= 3);
  }

  // The fitted picture has lost these columns to grey: only the photo's own pixels have them.
  void refinesToThePhotosPixels() {
    const auto columns = [](double x, double) { return QColor(int(x) % 2 ? Qt::white : Qt::black); };
    Stage stage;
    stage.view.setImage(painted({2200, 900}, columns));
    stage.view.setZoomScale(2200 * 8 / stage.view.fittedBox().width());  // eight points for a pixel
    const auto strangers = [&] {
      const QImage shown = stage.picture();
      int count = 0;
      for (int x = 0; x < shown.width(); ++x) {
        const double at = stage.inPhoto(x, 250).x();
        const bool isWithinColumn = std::abs(at - std::floor(at) - 0.5) <= 0.1;
        if (isWithinColumn && distance(shown.pixelColor(x, 250), columns(at, 0)) > 40) ++count;
      }
      return count;
    };
    QTRY_COMPARE(strangers(), 0);
    stage.view.setOffset({-3001, 0});  // across tiles that were not in sight
    QTRY_COMPARE(strangers(), 0);
  }

  // One change brings a dozen tiles into sight, more than a frame may upload: nobody else asks for the frames that
  // follow.
  void asksForFramesUntilItIsSharp() {
    Stage stage;
    QImage photo(6000, 3000, QImage::Format_RGBX8888);
    photo.fill(Qt::green);
    stage.view.setImage(photo);
    stage.view.setZoomScale(5.6);
    stage.view.setOffset({1100, 0});
    for (int frame = 0; frame < 10; ++frame) QCOMPARE(stage.worst(plain(Qt::green)), 0);
    const QSignalSpy frames(&stage.window, &QQuickWindow::frameSwapped);
    stage.view.setOffset({-1100, 0});
    QTRY_VERIFY(frames.size() >= 5);
  }

  // Translucent pixels drawn twice would be denser, and it would show at the tiles' edges.
  void drawsTranslucentPixelsOnce() {
    QImage photo(2100, 1300, QImage::Format_RGBA8888_Premultiplied);
    photo.fill(QColor(255, 255, 255, 128));
    Stage stage;
    stage.view.setImage(photo);
    for (const double scale : {1.0, 1.7, 3.0, 9.0, 2.0}) {
      stage.view.setZoomScale(scale);
      for (int frame = 0; frame < 4; ++frame) QVERIFY(stage.worst(plain({133, 138, 143})) <= 2);
    }
  }

  void fittedPhotoIsDrawnPixelByPixel() {
    const auto checks = [](double x, double y) { return QColor((int(x) + int(y)) % 2 ? Qt::white : Qt::black); };
    Stage stage;
    stage.view.setImage(painted({550, 384}, checks));  // as large as its box
    QCOMPARE(stage.worst(checks), 0);
  }

  void replacesAndRemovesThePhoto() {
    Stage stage;
    for (const auto& [size, colour] :
         {std::pair(QSize(1500, 1200), Qt::red), {{1500, 1200}, Qt::green}, {{2, 2}, Qt::blue}}) {
      stage.view.setImage(painted(size, plain(colour)));
      stage.view.setZoomScale(2.5);
      QCOMPARE(stage.worst(plain(colour)), 0);
    }
    stage.view.setImage({});
    QCOMPARE(stage.view.fittedBox(), QRectF());
    QCOMPARE(stage.picture().pixelColor(350, 250), kBackground);
  }

  void animatesWhenAsked_data() {
    QTest::addColumn<bool>("askedFirst");
    QTest::newRow("before the change") << true;
    QTest::newRow("after the change") << false;
  }
  void animatesWhenAsked() {
    QFETCH(bool, askedFirst);
    Stage stage;
    QList<double> shown;
    connect(&stage.view, &PhotoView::displayedChanged, this, [&] { shown.append(stage.view.displayedScale()); });
    stage.view.setZoomScale(3);
    QTRY_COMPARE(shown, QList<double>{3});  // nobody asked
    if (askedFirst) stage.view.animate(PhotoView::Curve::Spring);
    stage.view.setZoomScale(1);
    if (!askedFirst) stage.view.animate(PhotoView::Curve::EaseOut);
    QCOMPARE(stage.view.zoomScale(), 1.0);  // the state itself does not wait
    QTRY_COMPARE(stage.view.displayedScale(), 1.0);
    QVERIFY(std::any_of(shown.begin(), shown.end(), [](double scale) { return scale > 1.2 && scale < 2.9; }));
  }

  void gestureEndsTheMovement() {
    Stage stage;
    stage.view.animate(PhotoView::Curve::Spring);
    stage.view.setZoomScale(5);
    QTRY_VERIFY(stage.view.displayedScale() > 1.05);
    stage.view.setZoomScale(2);
    QTRY_COMPARE(stage.view.displayedScale(), 2.0);
    stage.view.setOffset({7, 0});
    QTRY_COMPARE(stage.view.displayedOffset(), QPointF(7, 0));
    QCOMPARE(stage.view.displayedScale(), 2.0);
  }

  // Threads that work for the photo must neither outlive the view nor touch it afterwards.
  void goesAwayWhileItWorks() {
    const QImage photo = painted(kLarge, gradient);
    for (int i = 0; i < 10; ++i) {
      Stage stage;
      stage.view.setImage(photo);
      stage.view.setZoomScale(4);
      (void)stage.picture();
      stage.view.setSize({400, 300});
    }
  }
};

QTEST_MAIN(PhotoViewTest)
#include "PhotoViewTest.moc"
