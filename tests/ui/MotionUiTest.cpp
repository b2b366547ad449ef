#include <QEasingCurve>
#include <cmath>
#include <numbers>

#include "AnimationClock.h"
#include "PhotoGrid.h"
#include "PhotoView.h"
#include "Table.h"
#include "UiWindow.h"

using namespace lumagrid;

namespace {

using Window = UiWindow&;

struct Movement {
  std::function<void(Window)> begin;
  std::function<double(Window)> value;
  double from;
  double to;
  int duration;  // ms
  QEasingCurve curve;
};

QEasingCurve bezier(QPointF first, QPointF second) {
  QEasingCurve curve(QEasingCurve::BezierSpline);
  curve.addCubicBezierSegment(first, second, {1, 1});
  return curve;
}

const QEasingCurve kEaseOut = bezier({0, 0}, {0.58, 1});
const QEasingCurve kEaseInOut = bezier({0.42, 0}, {0.58, 1});

// What the button with this title and all that it is a part of come to; 0 for what does not show. A button that leaves
// is no longer there for assistive technology.
double productOf(Window window, const char* title, double (QQuickItem::*factor)() const) {
  for (const QQuickItem* item : window.window.findChildren<QQuickItem*>()) {
    if (item->property("text") != QLatin1String(title) || !item->property("iconName").isValid()) continue;
    double product = item->isVisible() ? 1 : 0;
    for (; item; item = item->parentItem()) product *= (item->*factor)();
    return product;
  }
  return 0;
}

double displayedScale(Window window) {
  const auto* photo = window.window.findChild<PhotoView*>();
  return photo ? photo->displayedScale() : 0;
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
    const auto press = [](const char* name) {
      return [name](Window window) { window.pointTo(window.rectOf(name).center(), Qt::LeftButton); };
    };
    const auto scale = [](const char* title) {
      return [title](Window window) { return productOf(window, title, &QQuickItem::scale); };
    };
    const auto opacity = [](const char* title) {
      return [title](Window window) { return productOf(window, title, &QQuickItem::opacity); };
    };
    const auto green = [](Window window) { return window.grab().pixelColor(window.rectOf("5.jpg").center()).green(); };
    const auto contentY = [](Window window) { return window.window.findChild<PhotoGrid*>()->contentY(); };
    const auto check = [](Window window) { window.click("5.jpg", Qt::ControlModifier); };
    const auto next = [](Window window) { window.press(Qt::Key_Right); };
    const auto scroll = [](Window window) {
      window.library.openPhoto(199);
      window.click("Choose Folder");  // canceled
    };
    const auto turn = [](Window window) { window.turnWheel(-120); };
    addRows<Movement>({
        {"a button shrinks while it is held",
         {press("Choose Folder"), scale("Choose Folder"), 1, 0.985, 120, kEaseOut}},
        {"a checked photo is dimmed", {check, green, 128, 100, 150, kEaseOut}},
        {"the control bar leaves when a selection begins", {check, opacity("Choose Folder"), 1, 0, 180, kEaseInOut}},
        {"the selection's bar comes", {check, opacity("Delete"), 0, 1, 180, kEaseInOut}},
        {"the selection's bar grows as it comes", {check, scale("Delete"), 0.96, 1, 180, kEaseInOut}},
        {"another photo is fitted", {next, displayedScale, 3, 1, 120, kEaseOut}},
        {"the grid scrolls to the current photo", {scroll, contentY, 0, 7910, 180, kEaseInOut}},
        {"the wheel scrolls by a notch", {turn, contentY, 0, 120, 120, kEaseOut}},
    });
  }

  void moves() {
    QFETCH(const Movement, row);
    m_clock.run();
    OnlyWindow window(m_folder.url());
    window.platform.chooser.answer = std::nullopt;
    if (row.from == 3) zoom(window);
    m_clock.hold();
    rest(window);
    row.begin(window);
    rest(window);
    const double way = row.to - row.from;
    for (const double progress : {0.25, 0.5, 0.75}) {
      m_clock.pass(row.duration / 4);
      rest(window);
      const double done = (row.value(window) - row.from) / way;
      const double expected = row.curve.valueForProgress(progress);
      QVERIFY2(std::abs(done - expected) < kTolerance, qPrintable(QStringLiteral("%1 not %2").arg(done).arg(expected)));
    }
    m_clock.pass(row.duration - 3 * (row.duration / 4));
    rest(window);
    QCOMPARE(row.value(window), row.to);
  }

  // … at once where the user wants no motion.
  void jumps_data() { moves_data(); }
  void jumps() {
    QFETCH(const Movement, row);
    m_clock.run();
    OnlyWindow window(m_folder.url());
    window.platform.chooser.answer = std::nullopt;
    if (row.from == 3) zoom(window);
    m_clock.hold();
    rest(window);
    window.appearance.setMotion(Appearance::Motion::reduced);
    row.begin(window);
    rest(window);
    QCOMPARE(row.value(window), row.to);
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
    window.appearance.setMotion(Appearance::Motion::reduced);
    window.pinch({3});
    QTest::mouseDClick(&window.window, Qt::LeftButton, {}, window.middle());
    rest(window);
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
