#include <QEasingCurve>
#include <cmath>
#include <numbers>

#include "AnimationClock.h"
#include "PhotoGrid.h"
#include "PhotoView.h"
#include "UiWindow.h"

using namespace lumagrid;

namespace {

using Window = UiWindow&;

struct Movement {
  std::function<void(Window)> begin;
  std::function<double(Window)> value;
  double from;
  double to;
};

QEasingCurve bezier(QPointF first, QPointF second) {
  QEasingCurve curve(QEasingCurve::BezierSpline);
  curve.addCubicBezierSegment(first, second, {1, 1});
  return curve;
}

const QEasingCurve kEaseOut = bezier({0, 0}, {0.58, 1});
const QEasingCurve kEaseInOut = bezier({0.42, 0}, {0.58, 1});

QQuickItem* itemOf(Window window, const char* name) {
  const QAccessibleInterface* found = window.find(name);
  return found ? qobject_cast<QQuickItem*>(found->object()) : nullptr;
}

// Of the button with this title, with that of all that it is a part of; 0 for what does not show. One that leaves is no
// longer there for assistive technology.
double opacityOf(Window window, const char* title) {
  double opacity = 0;
  for (const QQuickItem* item : window.window.findChildren<QQuickItem*>()) {
    if (item->property("text") != QLatin1String(title) || !item->property("iconName").isValid()) continue;
    opacity = item->isVisible() ? 1 : 0;
    for (; item; item = item->parentItem()) opacity *= item->opacity();
    break;
  }
  return opacity;
}

double scaleOf(Window window, const char* name) {
  double scale = 1;
  for (const QQuickItem* item = itemOf(window, name); item; item = item->parentItem()) scale *= item->scale();
  return scale;
}

double displayedScale(Window window) {
  const auto* photo = window.window.findChild<PhotoView*>();
  return photo ? photo->displayedScale() : 0;
}

double contentY(Window window) {
  return window.window.findChild<PhotoGrid*>()->contentY();
}

int greenInTheMiddleOf(Window window, const char* tile) {
  return window.grab().pixelColor(window.rectOf(tile).center()).green();
}

void zoom(Window window) {
  window.openPhoto("0.jpg");
  window.pinch({3});
}

}  // namespace

// How long what moves in the window takes, and along which curve, by the clock of the animations.
class MotionUiTest : public QObject {
  Q_OBJECT

 private Q_SLOTS:
  void moves_data() {
    QTest::addColumn<Movement>("movement");
    QTest::addColumn<int>("duration");  // ms
    QTest::addColumn<QEasingCurve>("curve");
    const auto press = [](const char* name) {
      return [name](Window window) {
        QTest::mousePress(&window.window, Qt::LeftButton, {}, window.rectOf(name).center());
      };
    };
    const auto scale = [](const char* name) { return [name](Window window) { return scaleOf(window, name); }; };
    const auto check = [](Window window) { window.click("5.jpg", Qt::ControlModifier); };

    QTest::newRow("a button shrinks while it is held") << Movement{press("9"), scale("9"), 1, 0.98} << 120 << kEaseOut;
    QTest::newRow("a checked photo is dimmed")
        << Movement{check, [](Window window) { return greenInTheMiddleOf(window, "5.jpg"); }, 128, 100} << 150
        << kEaseOut;
    QTest::newRow("the control bar leaves when a selection begins")
        << Movement{check, [](Window window) { return opacityOf(window, "Choose Folder"); }, 1, 0} << 180 << kEaseInOut;
    QTest::newRow("the selection's bar comes")
        << Movement{check, [](Window window) { return opacityOf(window, "Delete"); }, 0, 1} << 180 << kEaseInOut;
    QTest::newRow("the selection's bar grows as it comes")
        << Movement{check, scale("Delete"), 0.96, 1} << 180 << kEaseInOut;
    QTest::newRow("another photo is fitted")
        << Movement{[](Window window) { window.press(Qt::Key_Right); }, displayedScale, 3, 1} << 120 << kEaseOut;
    QTest::newRow("the grid scrolls to the current photo") << Movement{[](Window window) {
                                                                         window.library.openPhoto(199);
                                                                         window.click("Choose Folder");  // cancelled
                                                                       },
                                                                       contentY, 0, 7910}
                                                           << 180 << kEaseInOut;
    QTest::newRow("the wheel scrolls by a notch")
        << Movement{[](Window window) { window.turnWheel(-120); }, contentY, 0, 120} << 120 << kEaseOut;
  }

  void moves() {
    QFETCH(const Movement, movement);
    QFETCH(const int, duration);
    QFETCH(const QEasingCurve, curve);
    m_clock.run();
    OnlyWindow window(m_folder.url());
    window.platform.chooser.answer = std::nullopt;
    if (movement.from == 3) zoom(window);
    m_clock.hold();
    rest(window);
    movement.begin(window);
    rest(window);
    const double way = movement.to - movement.from;
    for (const double progress : {0.25, 0.5, 0.75}) {
      m_clock.pass(duration / 4);
      rest(window);
      const double done = (movement.value(window) - movement.from) / way;
      const double expected = curve.valueForProgress(progress);
      QVERIFY2(std::abs(done - expected) < kTolerance, qPrintable(QStringLiteral("%1 not %2").arg(done).arg(expected)));
    }
    m_clock.pass(duration - 3 * (duration / 4));
    rest(window);
    QCOMPARE(movement.value(window), movement.to);
  }

  // A spring with a response of 0.3 s and a damping fraction of 0.8, in closed form.
  void aDoubleClickSpringsBack() {
    m_clock.run();
    OnlyWindow window(m_folder.url());
    zoom(window);
    m_clock.hold();
    rest(window);
    QTest::mouseDClick(&window.window, Qt::LeftButton, {}, window.middle());
    rest(window);
    const double frequency = 2 * std::numbers::pi / 0.3;
    const double damped = frequency * std::sqrt(1 - 0.8 * 0.8);
    for (int time = 0; time < 800; time += 50) {
      const double angle = damped * time / 1000;
      const double left =
          std::exp(-0.8 * frequency * time / 1000) * (std::cos(angle) + 0.8 * frequency / damped * std::sin(angle));
      QVERIFY(std::abs(displayedScale(window) - (1 + 2 * left)) < 0.001);
      m_clock.pass(50);
      rest(window);
    }
    QCOMPARE(displayedScale(window), 1.0);
  }

  void aSelectionThatBeginsJumpsNowhere() {
    m_clock.run();
    OnlyWindow window(m_folder.url());
    QTRY_COMPARE(window.app.thumbnailQueue().pendingCount(), 0);
    window.view.shown()->dismissNewStatus();
    window.pointTo(window.rectOf("0.jpg").center());
    const QRect tile = window.rectOf("0.jpg");
    const auto border = [&] { return window.grab().pixelColor(tile.left(), tile.center().y()); };
    const QColor accent(31, 111, 95);
    QTRY_COMPARE(border(), accent);  // of the current photo
    m_clock.hold();
    rest(window);
    const QImage before = window.grab();
    window.click("0.jpg", Qt::ControlModifier);
    m_clock.pass(0);
    QCOMPARE(window.grab(), before);
    QVERIFY(!window.shows("Choose Folder") && !window.shows("Sort order"));  // they leave, and do nothing any more
    for (int time = 0; time < 200; time += 20) {
      QCOMPARE(border(), accent);
      m_clock.pass(20);
    }
    QVERIFY(window.grab() != before && window.shows("Clear"));
  }

 private:
  // Frames, in which what began begins to move, and no time.
  void rest(Window window) {
    for (int frame = 0; frame < 2; ++frame) {
      m_clock.pass(0);
      (void)window.grab();
    }
  }

  static constexpr double kTolerance = 0.07;

  const Photos m_folder{200};
  AnimationClock m_clock;
};

LUMAGRID_UI_TEST_MAIN(MotionUiTest)
#include "MotionUiTest.moc"
