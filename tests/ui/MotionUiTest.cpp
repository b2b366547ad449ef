#include "AnimationClock.h"
#include "PhotoGrid.h"
#include "PhotoView.h"
#include "UiWindow.h"

using namespace lumagrid;

namespace {

constexpr double kEaseOut = 0.684;    // of the way, at half of the time
constexpr double kEaseInOut = 0.129;  // at a quarter

struct Motion {
  int milliseconds;
  double time;  // of its time, at which it has gone …
  double way;   // … this part of its way
};

}  // namespace

// What moves in a window, by the clock of its animations.
class MotionUiTest : public QObject {
  Q_OBJECT

 private Q_SLOTS:
  void everythingMovesInItsTimeAlongItsCurve() {
    OnlyWindow window(m_folder.url());
    window.view.shown()->dismissNewStatus();
    const auto moves = [&window](const Motion& motion, const std::function<double()>& value, const auto& start) {
      AnimationClock clock;
      const double first = value();
      start();
      QCoreApplication::processEvents();
      (void)window.grab();  // some of it begins with a frame
      clock.pass(0);
      const bool jumps = value() != first;
      const int part = int(motion.milliseconds * motion.time);
      clock.pass(part);
      const double between = value();
      clock.pass(motion.milliseconds - part);
      const double last = value();
      clock.pass(1000);
      const double way = (between - first) / (last - first);
      const bool isRight = !jumps && last == value() && std::abs(way - motion.way) < 0.02;
      if (!isRight) qInfo() << motion.milliseconds << "ms:" << jumps << first << between << last << value() << way;
      return isRight;
    };
    const auto itemOf = [&](const char* name) { return qobject_cast<QQuickItem*>(window.find(name)->object()); };

    const QQuickItem* preset = itemOf("16");
    const QPoint press = window.rectOf("16").center();
    QVERIFY(moves(
        {120, 0.5, kEaseOut}, [=] { return preset->scale(); }, [&] { window.pointTo(press, Qt::LeftButton); }));
    window.pointTo(press);
    const QQuickItem* chooseFolder = itemOf("Choose Folder");
    const auto opacity = [=] { return chooseFolder->opacity(); };
    QVERIFY(moves({180, 0.25, kEaseInOut}, opacity, [&] { window.library.toggleSelection(1); }));
    QTRY_COMPARE(window.app.thumbnailQueue().pendingCount(), 0);
    const auto colorOfTile = [&] { return window.grab().pixelColor(window.rectOf("5.jpg").center()).green(); };
    QVERIFY(moves({150, 0.5, kEaseOut}, colorOfTile, [&] { window.library.toggleSelection(5); }));
    const auto* grid = window.window.findChild<PhotoGrid*>();
    QVERIFY(moves(
        {180, 0.25, kEaseInOut}, [=] { return grid->contentY(); },
        [&] {
          window.library.openPhoto(100);
          window.view.setGridDimension(4);
        }));
    QTRY_VERIFY(window.shows("100.jpg"));
    window.openPhoto("100.jpg");
    window.pinch({3});
    const auto* photo = window.window.findChild<PhotoView*>();
    QTRY_COMPARE(photo->displayedScale(), 3.0);
    QVERIFY(moves(
        {120, 0.5, kEaseOut}, [=] { return photo->displayedScale(); }, [&] { window.library.showNext(); }));
  }

  void aSelectionThatBeginsJumpsNowhere() {
    OnlyWindow window(m_folder.url());
    QTRY_COMPARE(window.app.thumbnailQueue().pendingCount(), 0);
    window.view.shown()->dismissNewStatus();
    window.pointTo(window.rectOf("0.jpg").center());
    const QRect tile = window.rectOf("0.jpg");
    const auto border = [&] { return window.grab().pixelColor(tile.left(), tile.center().y()); };
    const QColor accent(31, 111, 95);
    QTRY_COMPARE(border(), accent);  // of the current photo
    AnimationClock clock;
    const QImage before = window.grab();
    window.click("0.jpg", Qt::ControlModifier);
    clock.pass(0);
    QCOMPARE(window.grab(), before);
    QVERIFY(!window.shows("Choose Folder") && !window.shows("Sort order"));  // they leave, and do nothing any more
    for (int time = 0; time < 200; time += 20) {
      QCOMPARE(border(), accent);
      clock.pass(20);
    }
    QVERIFY(window.grab() != before && window.shows("Clear"));
  }

 private:
  const Photos m_folder{200};
};

LUMAGRID_UI_TEST_MAIN(MotionUiTest)
#include "MotionUiTest.moc"
