#include <QPainter>
#include <cmath>

#include "UiWindow.h"

using namespace lumagrid;

namespace {

const QColor kAccent(31, 111, 95);
const QColor kPhoto(0, 128, 128);

// `over` at `opacity` over `under`.
QColor blend(const QColor& under, const QColor& over, double opacity) {
  const auto mix = [opacity](int from, int to) { return int(std::lround(from + (to - from) * opacity)); };
  return {mix(under.red(), over.red()), mix(under.green(), over.green()), mix(under.blue(), over.blue())};
}

bool isNear(const QColor& actual, const QColor& expected, int tolerance = 2) {
  const int difference = std::max({std::abs(actual.red() - expected.red()), std::abs(actual.green() - expected.green()),
                                   std::abs(actual.blue() - expected.blue())});
  if (difference > tolerance) qInfo() << actual.name() << "where" << expected.name() << "was expected";
  return difference <= tolerance;
}

struct Look {
  ColorScheme scheme;
  QSize content;
  QColor top, bottom;  // of the backdrop
  double warm, teal;   // opacities of its discs
  QColor first, second;
  double firstOpacity, secondOpacity;  // of the card
};

const Look kLight{ColorScheme::light, {1100, 760}, 0xfbf6ee, 0xf1e0c5, 0.24, 0.18, 0xffffff, 0xeee2d0, 0.86, 0.96};
const Look kDark{ColorScheme::dark, {2560, 1440}, 0x1a1714, 0x241f1a, 0.12, 0.22, 0x2c2824, 0x231f1b, 0.92, 0.98};

}  // namespace

// Pictures of a window, light and dark, at the least size and large.
class PixelUiTest : public QObject {
  Q_OBJECT

 private Q_SLOTS:
  void lightAtTheLeastSize() { isDrawn(kLight); }
  void darkAndLarge() { isDrawn(kDark); }

 private:
  void isDrawn(const Look& look) {
    UiApp app(look.scheme);
    UiWindow window(app);
    window.window.resize(look.content + QSize(0, window.menuBarHeight()));
    QTRY_COMPARE(window.rectOf("Choose Folder").right(), look.content.width() - 23);
    QTRY_COMPARE(window.grab().size(), window.window.size());
    const QSize size = window.window.size();
    const QRect stage = QRect({}, size).adjusted(18, window.menuBarHeight() + 18, -18, -18);

    // Where no edge of a disc is.
    const auto backdropAt = [&](QPoint point) {
      QColor color = blend(look.top, look.bottom, (point.y() + 0.5) / size.height());
      const auto isWithin = [point](QPoint center, double radius) {
        return std::hypot(point.x() - center.x(), point.y() - center.y()) < radius;
      };
      if (isWithin({110, 80}, 150)) color = blend(color, {228, 179, 107}, look.warm);
      if (isWithin({size.width() - 90, size.height() - 60}, 130)) color = blend(color, kAccent, look.teal);
      return color;
    };
    const auto showsBackdropInCorners = [&](const QRect& rect) {
      const QImage image = window.grab();
      const QList<QPoint> corners{rect.topLeft(), rect.topRight(), rect.bottomLeft(), rect.bottomRight()};
      return std::all_of(corners.begin(), corners.end(),
                         [&](QPoint corner) { return isNear(image.pixelColor(corner), backdropAt(corner)); });
    };
    const QRect within = stage.adjusted(3, 3, -3, -3);
    for (const QRect& rect : {QRect({}, size), stage, within}) QTRY_VERIFY(showsBackdropInCorners(rect));
    QImage image = window.grab();
    for (const double progress : {0.2, 0.3, 0.7, 0.75}) {
      const QPoint point = stage.topLeft() + QPoint(int(stage.width() * progress), int(stage.height() * progress));
      const QColor card = blend(look.first, look.second, progress);
      const double opacity = look.firstOpacity + (look.secondOpacity - look.firstOpacity) * progress;
      QVERIFY(isNear(image.pixelColor(point), blend(backdropAt(point), card, opacity), 5));
    }
    // The border, in the middle of an edge: half of its line lies within the card.
    const QPoint edge(stage.left(), stage.center().y());
    for (const int step : {-1, 1}) QVERIFY(image.pixelColor(edge) != image.pixelColor(edge + QPoint(step, 0)));

    const auto tile = [&window](int index) { return window.rectOf(photoName(index)); };
    const auto leftEdge = [&](int index) { return QPoint(tile(index).left(), tile(index).center().y()); };
    window.open(m_folder.url());
    // The threads that make thumbnails stand back on a busy machine.
    QTRY_COMPARE_WITH_TIMEOUT(app.app.thumbnailQueue().pendingCount(), 0, 60'000);
    QTRY_COMPARE(window.grab().pixelColor(leftEdge(0)), kAccent);
    QTRY_COMPARE(window.grab().pixelColor(tile(14).center()), kPhoto);
    image = window.grab();
    for (const int index : {1, 4, 9, 14}) {  // not the current one, which is marked
      const QRect rect = tile(index);
      const QPoint left = leftEdge(index) + QPoint(0, rect.height() / 4);  // clear of the bar above the first row
      const QPoint right = left + QPoint(rect.width() - 1, 0);
      for (const QPoint point : {rect.center(), left + QPoint(1, 0), right - QPoint(1, 0), rect.bottomLeft()}) {
        QVERIFY(isNear(image.pixelColor(point), kPhoto));  // the picture's corners stay square
      }
      for (const QPoint point : {left - QPoint(2, 0), right + QPoint(2, 0)}) {
        QVERIFY(image.pixelColor(point).red() > kPhoto.red() + 20);
      }
    }

    const auto frame = [&] {
      QImage image = window.grab();
      QPainter(&image).fillRect(stage, Qt::black);
      return image;
    };
    const QImage untouched = frame();
    window.click(photoName(9), Qt::ControlModifier);
    QTRY_COMPARE(window.grab().pixelColor(leftEdge(9)), kAccent);
    const QColor dimmed = blend(kPhoto, Qt::black, 0.22);
    QTRY_VERIFY(isNear(window.grab().pixelColor(tile(9).center()), dimmed));
    const QPoint badge = tile(9).topLeft() + QPoint(7, 7);
    QTRY_VERIFY(isNear(window.grab().pixelColor(badge + QPoint(2, 13)), kAccent));
    image = window.grab();
    QVERIFY(isNear(image.pixelColor(badge + QPoint(-2, 13)), dimmed));
    QVERIFY(isNear(image.pixelColor(badge + QPoint(28, 13)), dimmed));
    QVERIFY(image.pixelColor(leftEdge(0)) != kAccent);  // while one is checked, no other is marked
    QVERIFY(isNear(image.pixelColor(tile(10).center()), kPhoto));

    // Nothing is drawn outside of the card.
    window.press(Qt::Key_Escape);
    const int top = tile(4).top();
    window.turnWheel(-120);
    QTRY_COMPARE(tile(4).top(), top - 120);
    QTRY_COMPARE(frame(), untouched);
    QVERIFY(showsBackdropInCorners(within));
    window.openPhoto(photoName(9));
    const QImage fitted = frame();
    window.pinch({30});  // it covers the card
    QTRY_COMPARE(window.grab().pixelColor(stage.center().x(), stage.top() + 4), QColor(Qt::white));
    QTRY_COMPARE(frame(), fitted);
    QVERIFY(showsBackdropInCorners(within));
  }

  const Photos m_folder{200};
};

LUMAGRID_UI_TEST_MAIN(PixelUiTest)
#include "PixelUiTest.moc"
