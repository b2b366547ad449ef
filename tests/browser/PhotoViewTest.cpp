#include "PhotoView.h"

#include <QQuickWindow>
#include <QSignalSpy>
#include <QTest>
#include <cmath>

#include "PhotoViewGeometry.h"

using namespace lumagrid;

namespace {

const QColor kBackground(10, 20, 30);

using Color = std::function<QColor(double x, double y)>;

Color plain(QColor color) {
  return [color](double, double) { return color; };
}

// Red and green tell where a point is in the whole photo, blue where it is among its neighbors.
constexpr QSize kLarge(3001, 2003);
QColor gradient(double x, double y) {
  const double wave = std::sin((x + 2 * y) / 48);
  return QColor::fromRgbF(float(x / kLarge.width()), float(y / kLarge.height()), float(0.5 + 0.3 * wave));
}

// Black and white pixels by turns, and what lies between their centers.
QColor checks(double x, double y) {
  const double column = std::abs(std::remainder(x - 0.5, 2));
  const double row = std::abs(std::remainder(y - 0.5, 2));
  return QColor::fromHsvF(0, 0, float(column * (1 - row) + row * (1 - column)));
}

QImage painted(QSize size, const Color& color) {
  QImage image(size, QImage::Format_RGBX8888);
  for (int y = 0; y < size.height(); ++y) {
    for (int x = 0; x < size.width(); ++x) image.setPixelColor(x, y, color(x + 0.5, y + 0.5));
  }
  return image;
}

}  // namespace

class PhotoViewTest : public QObject {
  Q_OBJECT

 private Q_SLOTS:
  void init() {
    m_view = std::make_unique<PhotoView>();
    m_window = std::make_unique<QQuickWindow>();
    m_window->resize(700, 500);
    m_window->setColor(kBackground);
    m_view->setParentItem(m_window->contentItem());
    m_view->setSize(m_window->size());
    m_window->show();
    QVERIFY(QTest::qWaitForWindowExposed(m_window.get()));
  }

  // Coarse in the first frame, exact soon; at no time anything else, such as a seam.
  void showsThePhotoInPlace() {
    m_view->setImage(painted(kLarge, gradient));
    for (const auto& [scale, offset] :
         {std::pair(1.04, QPointF()), {8.0, {900.5, 700.25}}, {3.0, {700, 400}}, {2.0, {5000, 0}}, {1.0, {}}}) {
      m_view->setZoomScale(scale);
      m_view->setOffset(offset);
      QVERIFY(worst(gradient) <= 8);
      QTRY_VERIFY(worst(gradient) <= 3);
    }
    m_view->setSize({500, 400});
    QVERIFY(worst(gradient) <= 10);     // the picture in hand, scaled
    QTRY_VERIFY(worst(gradient) <= 4);  // the toolkit shrinks with an error of 1.4
  }

  // The fitted picture has lost them to gray: only the photo's own pixels have them.
  void refinesToThePhotosPixels() {
    m_view->setImage(painted({550, 384}, checks));  // as large as its box
    QCOMPARE(worst(checks), 0);
    m_view->setImage(painted({2200, 900}, checks));
    m_view->setZoomScale(2200 * 8 / m_view->fittedBox().width());  // eight points for a pixel
    QTRY_VERIFY(worst(checks) <= 40);
    m_view->setOffset({-3001, 0});  // across blocks that were not in sight
    QTRY_VERIFY(worst(checks) <= 40);
  }

  // Translucent pixels drawn twice would be denser, and it would show at the blocks' edges.
  void drawsEveryPixelOnce() {
    QImage photo(6000, 3000, QImage::Format_RGBA8888_Premultiplied);
    photo.fill(QColor(255, 255, 255, 128));
    m_view->setImage(photo);
    m_view->setOffset({1100, 0});
    for (const double scale : {1.0, 1.7, 3.0, 9.0, 5.6}) {
      m_view->setZoomScale(scale);
      for (int frame = 0; frame < 5; ++frame) QVERIFY(worst(plain({133, 138, 143})) <= 2);
    }
    // Nobody else asks for the frames that upload the dozen blocks that come into sight.
    const QSignalSpy frames(m_window.get(), &QQuickWindow::frameSwapped);
    m_view->setOffset({-1100, 0});
    QTRY_VERIFY(frames.size() >= 5);
  }

  void replacesAndRemovesThePhoto() {
    m_view->setZoomScale(2.5);
    for (const auto& [side, color] : {std::pair(1500, Qt::red), {1500, Qt::green}, {2, Qt::blue}}) {
      m_view->setImage(painted({side, side}, plain(color)));
      QCOMPARE(worst(plain(color)), 0);
    }
    m_view->setImage({});
    QCOMPARE(worst(plain(kBackground)), 0);
  }

  void movesUntilAGestureComes() {
    m_view->animate(PhotoView::Curve::Spring);  // before or after the change is the same
    m_view->setZoomScale(5);
    QTRY_VERIFY(m_view->displayedScale() > 1.05);
    m_view->setZoomScale(2);
    QTRY_COMPARE(m_view->displayedScale(), 2.0);
    m_view->setOffset({7, 0});
    QTRY_COMPARE(m_view->displayedOffset(), QPointF(7, 0));
    QCOMPARE(m_view->displayedScale(), 2.0);
  }

  // Threads that work for the photo must neither outlive the view nor touch it afterwards.
  void goesAwayWhileItWorks() {
    const QImage photo = painted(kLarge, plain(Qt::red));
    for (int time = 0; time < 10; ++time) {
      init();
      m_view->setImage(photo);
      m_view->setZoomScale(4);
      (void)m_window->grabWindow();
      m_view->setSize({400, 300});
    }
  }

 private:
  // The largest difference from `color`, away from the photo's edges; from the background outside.
  [[nodiscard]] int worst(const Color& color) const {
    const QImage shown = m_window->grabWindow().convertToFormat(QImage::Format_RGB32);
    const QRectF rect =
        zoomedRect(pixelAligned(m_view->fittedBox(), {}, 1), m_view->size(), {m_view->zoomScale(), m_view->offset()});
    const double across = m_view->image().width() / rect.width();
    const double down = m_view->image().height() / rect.height();
    int worst = 0;
    for (int y = 0; y < shown.height(); ++y) {
      for (int x = 0; x < shown.width(); ++x) {
        const QRectF pixel(x, y, 1, 1);
        const QPointF at = pixel.center() - rect.topLeft();
        const bool isInside = rect.adjusted(8, 8, -8, -8).contains(pixel);
        if (!isInside && rect.adjusted(-1, -1, 1, 1).intersects(pixel)) continue;
        const QColor right = isInside ? color(at.x() * across, at.y() * down) : kBackground;
        const QColor seen = shown.pixelColor(x, y);
        worst = std::max({worst, std::abs(seen.red() - right.red()), std::abs(seen.green() - right.green()),
                          std::abs(seen.blue() - right.blue())});
      }
    }
    return worst;
  }

  std::unique_ptr<QQuickWindow> m_window;
  std::unique_ptr<PhotoView> m_view;
};

QTEST_MAIN(PhotoViewTest)
#include "PhotoViewTest.moc"
