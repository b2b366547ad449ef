#include <QGuiApplication>
#include <QQuickWindow>
#include <QSignalSpy>
#include <QTest>
#include <cmath>
#include <functional>
#include <numbers>

#include "PhotoView.h"

using namespace lumagrid;

namespace {

constexpr QSize kStage(700, 500);
const QColor kBackground(10, 20, 30);

using Colour = std::function<QColor(double x, double y)>;

QImage painted(QSize size, const Colour& colour) {
  QImage image(size, QImage::Format_RGBX8888);
  for (int y = 0; y < size.height(); ++y) {
    for (int x = 0; x < size.width(); ++x) {
      image.setPixelColor(x, y, colour(x + 0.5, y + 0.5));
    }
  }
  return image;
}

// Red and green tell where a point is in the whole photo, blue where it is among its neighbours.
constexpr QSize kLarge(3001, 2003);
QColor gradient(double x, double y) {
  const double wave = std::sin((x + 2 * y) * 2 * std::numbers::pi / 300);
  return QColor::fromRgbF(static_cast<float>(x / kLarge.width()), static_cast<float>(y / kLarge.height()),
                          static_cast<float>(0.5 + 0.3 * wave));
}

int distance(const QColor& a, const QColor& b) {
  return std::max({std::abs(a.red() - b.red()), std::abs(a.green() - b.green()), std::abs(a.blue() - b.blue())});
}

// Where a pixel of the window lies in the photo, in its pixels.
QPointF inPhoto(QPoint pixel, const QRectF& placed, QSize photo) {
  return {(pixel.x() + 0.5 - placed.x()) * photo.width() / placed.width(),
          (pixel.y() + 0.5 - placed.y()) * photo.height() / placed.height()};
}

class Stage {
 public:
  Stage() {
    m_window.resize(kStage);
    m_window.setColor(kBackground);
    view.setParentItem(m_window.contentItem());
    view.setSize(QSizeF(kStage));
    m_window.show();
  }

  [[nodiscard]] bool isExposed() { return QTest::qWaitForWindowExposed(&m_window); }
  [[nodiscard]] QQuickWindow& window() { return m_window; }
  [[nodiscard]] QImage picture() { return m_window.grabWindow().convertToFormat(QImage::Format_RGB32); }
  [[nodiscard]] QRectF placed() const {
    return placedRect(pixelAligned(view.fittedBox(), {}, 1), view.size(), {view.zoomScale(), view.offset()});
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
          const QPointF at = inPhoto({x, y}, rect, view.image().size());
          worst = std::max(worst, distance(shown.pixelColor(x, y), colour(at.x(), at.y())));
        } else if (!rect.adjusted(-1, -1, 1, 1).intersects(pixel)) {
          worst = std::max(worst, distance(shown.pixelColor(x, y), kBackground));
        }
      }
    }
    return worst;
  }

 private:
  QQuickWindow m_window;

 public:
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
    QTest::newRow("zoomed a little") << 1.3 << QPointF(37.3, -21.7);
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
    QVERIFY(stage.isExposed());
    stage.view.setImage(photo);
    stage.view.setZoomScale(scale);
    stage.view.setOffset(offset);
    // Coarse in the first frame, exact soon; at no time anything else, such as a seam.
    QVERIFY2(stage.worst(gradient) <= 8, qPrintable(QString::number(stage.worst(gradient))));
    QTRY_VERIFY(stage.worst(gradient) <= 3);
  }

  // The fitted picture has lost these columns to grey: only the photo's own pixels have them.
  void refinesToThePhotosPixels() {
    const auto columns = [](double x, double) { return QColor(static_cast<int>(x) % 2 ? Qt::white : Qt::black); };
    Stage stage;
    QVERIFY(stage.isExposed());
    stage.view.setImage(painted({2200, 900}, columns));
    stage.view.setZoomScale(2200 * 8 / stage.view.fittedBox().width());  // eight points for a pixel
    const auto strangers = [&stage, &columns] {
      const QImage shown = stage.picture();
      int count = 0;
      for (int x = 0; x < shown.width(); ++x) {
        const QPointF at = inPhoto({x, 250}, stage.placed(), stage.view.image().size());
        if (std::abs(at.x() - std::floor(at.x()) - 0.5) > 0.1) {
          continue;  // between two columns
        }
        if (distance(shown.pixelColor(x, 250), columns(at.x(), 0)) > 40) {
          ++count;
        }
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
    QVERIFY(stage.isExposed());
    QImage photo(6000, 3000, QImage::Format_RGBX8888);
    photo.fill(Qt::green);
    stage.view.setImage(photo);
    stage.view.setZoomScale(5.6);
    stage.view.setOffset({1100, 0});
    for (int frame = 0; frame < 10; ++frame) {
      QCOMPARE(stage.worst([](double, double) { return QColor(Qt::green); }), 0);
    }
    const QSignalSpy frames(&stage.window(), &QQuickWindow::frameSwapped);
    stage.view.setOffset({-1100, 0});
    QTRY_VERIFY(frames.size() >= 5);
  }

  // Translucent pixels drawn twice would be denser, and it would show at the tiles' edges.
  void drawsTranslucentPixelsOnce() {
    QImage photo(2100, 1300, QImage::Format_RGBA8888_Premultiplied);
    photo.fill(QColor(255, 255, 255, 128));
    Stage stage;
    QVERIFY(stage.isExposed());
    const auto veil = [](double, double) { return QColor(133, 138, 143); };
    stage.view.setImage(photo);
    for (const double scale : {1.0, 1.7, 3.0, 9.0, 2.0}) {
      stage.view.setZoomScale(scale);
      for (int frame = 0; frame < 4; ++frame) {
        QVERIFY(stage.worst(veil) <= 2);
      }
    }
  }

  void fittedPhotoIsDrawnPixelByPixel() {
    // As large as its box, so that each of its pixels is one of the window's.
    const auto checks = [](double x, double y) {
      return QColor((static_cast<int>(x) + static_cast<int>(y)) % 2 ? Qt::white : Qt::black);
    };
    Stage stage;
    QVERIFY(stage.isExposed());
    stage.view.setImage(painted({550, 384}, checks));
    QCOMPARE(stage.view.fittedBox(), QRectF(75, 58, 550, 384));
    QCOMPARE(stage.worst(checks), 0);
  }

  void smallPhotoIsScaledUp() {
    Stage stage;
    QVERIFY(stage.isExposed());
    stage.view.setImage(painted({2, 2}, [](double, double) { return QColor(Qt::red); }));
    QCOMPARE(stage.worst([](double, double) { return QColor(Qt::red); }), 0);
  }

  void replacesAndRemovesThePhoto() {
    const auto plain = [](const QColor& colour) { return [colour](double, double) { return colour; }; };
    Stage stage;
    QVERIFY(stage.isExposed());
    for (const QColor& colour : {QColor(Qt::red), QColor(Qt::green)}) {
      stage.view.setImage(painted({1500, 1200}, plain(colour)));
      stage.view.setZoomScale(2.5);
      QCOMPARE(stage.worst(plain(colour)), 0);
    }
    stage.view.setImage({});
    QCOMPARE(stage.view.fittedBox(), QRectF());
    QCOMPARE(distance(stage.picture().pixelColor(350, 250), kBackground), 0);
  }

  void followsTheStagesSize() {
    Stage stage;
    QVERIFY(stage.isExposed());
    QSignalSpy boxChanged(&stage.view, &PhotoView::fittedBoxChanged);
    stage.view.setImage(painted(kLarge, gradient));
    QVERIFY(stage.worst(gradient) <= 8);
    boxChanged.clear();
    stage.view.setSize({500, 400});
    QVERIFY(!boxChanged.isEmpty());
    QVERIFY(stage.worst(gradient) <= 10);  // the picture in hand, scaled
    QTRY_VERIFY(stage.worst(gradient) <= 3);
  }

  void changesAtOnceUnlessAsked() {
    Stage stage;
    QVERIFY(stage.isExposed());
    stage.view.setZoomScale(3);
    stage.view.setOffset({40, -25});
    QTRY_COMPARE(stage.view.displayedScale(), 3.0);
    QCOMPARE(stage.view.displayedOffset(), QPointF(40, -25));
  }

  void animatesWhenAsked_data() {
    QTest::addColumn<PhotoView::Curve>("curve");
    QTest::addColumn<bool>("askedFirst");
    QTest::newRow("spring, asked before the change") << PhotoView::Curve::Spring << true;
    QTest::newRow("spring, asked after the change") << PhotoView::Curve::Spring << false;
    QTest::newRow("ease-out") << PhotoView::Curve::EaseOut << true;
  }
  void animatesWhenAsked() {
    QFETCH(PhotoView::Curve, curve);
    QFETCH(bool, askedFirst);
    Stage stage;
    QVERIFY(stage.isExposed());
    stage.view.setZoomScale(3);
    QTRY_COMPARE(stage.view.displayedScale(), 3.0);
    QList<double> shown;
    connect(&stage.view, &PhotoView::displayedChanged, this, [&] { shown.append(stage.view.displayedScale()); });
    if (askedFirst) {
      stage.view.animate(curve);
    }
    stage.view.setZoomScale(1);
    if (!askedFirst) {
      stage.view.animate(curve);
    }
    QCOMPARE(stage.view.zoomScale(), 1.0);  // the state itself does not wait
    QTRY_COMPARE(stage.view.displayedScale(), 1.0);
    QVERIFY(shown.size() > 2);
    QVERIFY(std::any_of(shown.begin(), shown.end(), [](double scale) { return scale > 1.2 && scale < 2.9; }));
  }

  void gestureEndsTheMovement() {
    Stage stage;
    QVERIFY(stage.isExposed());
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
      QVERIFY(stage.isExposed());
      stage.view.setImage(photo);
      stage.view.setZoomScale(4);
      (void)stage.picture();
      stage.view.setSize({400, 300});
    }
  }
};

int main(int argc, char* argv[]) {
  QGuiApplication app(argc, argv);
  // No graphics without a screen.
  if (QGuiApplication::platformName() == QLatin1String("offscreen")) {
    QQuickWindow::setGraphicsApi(QSGRendererInterface::Software);
  }
  PhotoViewTest test;
  return QTest::qExec(&test, argc, argv);
}
#include "PhotoViewTest.moc"
