#include "PhotoView.h"
#include "UiWindow.h"

using namespace lumagrid;

namespace {

// The window's state, at which what is on screen has come to rest.
bool isZoomed(const UiWindow& window, double scale, QPointF offset = {}) {
  const auto* photo = window.window.findChild<PhotoView*>();
  return window.view.zoom() == ZoomState{scale, offset} && photo && photo->displayedScale() == scale &&
         photo->displayedOffset() == offset;
}

}  // namespace

// The detail stage of a window: its buttons, keys and texts, zoom and pan.
class PhotoUiTest : public QObject {
  Q_OBJECT

 private Q_SLOTS:
  void waysLeadBackToTheGrid() {
    OnlyWindow window(m_folder.url());
    window.platform.chooser.answer = std::nullopt;  // canceled
    for (const char* way : {"Grid", "Choose Folder"}) {
      window.openPhoto("2.jpg");
      QVERIFY(!window.shows("1.jpg") && !window.shows("Sort order") && !window.shows("16"));
      window.library.toggleSelection(1);
      window.press(Qt::Key_Escape);  // ends the selection alone
      QTRY_VERIFY(window.shows("Grid") && window.isEnabled("Choose Folder"));
      window.click(way);
      QTRY_VERIFY(window.shows("1.jpg") && window.shows("Sort order") && !window.shows("Next photo"));
    }
  }

  void buttonsAndArrowsStep() {
    OnlyWindow window(m_folder.url());
    window.openPhoto("0.jpg");
    const auto isAt = [&window](int number) {
      return window.shows(QStringLiteral("%1 / 4").arg(number + 1)) && window.shows(photoName(number)) &&
             window.shows(window.library.statusMessage()) && window.isEnabled("Previous photo") == (number > 0) &&
             window.isEnabled("Next photo") == (number < 3) && window.isEnabled("Move current photo to Trash");
    };
    for (const int number : {1, 2, 3, 3, -2, -1, 0, 0}) {
      window.click(number > 0 ? "Next photo" : "Previous photo");
      QTRY_VERIFY(isAt(std::abs(number)));
    }
    const auto send = [&window](QEvent::Type type, bool isRepeat) {
      QKeyEvent event(type, Qt::Key_Right, {}, {}, isRepeat);
      QCoreApplication::sendEvent(&window.window, &event);
    };
    // Held from its first repeat on, it goes on by itself.
    send(QEvent::KeyPress, false);
    QCOMPARE(window.library.currentIndex(), 1);
    send(QEvent::KeyRelease, true);
    send(QEvent::KeyPress, true);
    QTRY_VERIFY(isAt(3));
    send(QEvent::KeyRelease, false);
    // Held for longer than the window can keep up with, and released: it stops there.
    window.library.openPhoto(1);
    for (int event = 0; event < 60; ++event) send(event % 2 ? QEvent::KeyPress : QEvent::KeyRelease, true);
    send(QEvent::KeyRelease, false);
    for (int turn = 0; turn < 5; ++turn) QCoreApplication::processEvents();
    QTRY_VERIFY(isAt(1));
    window.library.openPhoto(2);
    QTRY_VERIFY(isAt(2));
    // Held while the next photo is still being made: it waits, and goes on with it.
    window.platform.decoder.preparesInTime = false;
    window.library.openPhoto(0);
    for (const bool isRepeat : {true, true}) send(QEvent::KeyPress, isRepeat);
    QTest::qWait(60);
    QCOMPARE(window.library.currentIndex(), 0);
    window.platform.decoder.ready(m_folder.url(photoName(1)), {});
    QTRY_VERIFY(isAt(1));
    QTest::qWait(60);
    QCOMPARE(window.library.currentIndex(), 1);
    send(QEvent::KeyRelease, false);
    window.platform.decoder.preparesInTime = true;
    window.library.openPhoto(2);
    QTRY_VERIFY(isAt(2));
    window.window.hide();  // no frame comes
    for (const Qt::Key key : {Qt::Key_Right, Qt::Key_Left}) window.press(key);
    QTRY_COMPARE(window.library.currentIndex(), 2);
  }

  void keysActWhateverHasTheFocus() {
    OnlyWindow window(m_folder.url());
    window.platform.alert.answer = AlertRole::cancel;
    // From the second photo: the index, and how many questions were asked.
    using Effect = std::pair<int, int>;
    const auto leadsTo = [&](const Effect& effect, Qt::Key key, Qt::KeyboardModifiers modifiers = {}) {
      window.library.openPhoto(1);
      window.platform.alert.asked.clear();
      window.press(key, modifiers);
      QTRY_COMPARE(Effect(window.library.currentIndex(), window.platform.alert.asked.size()), effect);
    };
    for (const Qt::Key key : {Qt::Key_Left, Qt::Key_Delete}) leadsTo({1, 0}, key);  // on the grid
    window.openPhoto("1.jpg");
    for (const char* focused : {"", "Grid", "Choose Folder", "Next photo", "Lumagrid"}) {
      for (int tabs = 0; *focused && !window.find(focused)->state().focused; ++tabs) {
        QVERIFY(tabs < 10);
        window.press(Qt::Key_Tab);
      }
      leadsTo({2, 0}, Qt::Key_Right);
      leadsTo({0, 0}, Qt::Key_Left, Qt::KeypadModifier);
      leadsTo({1, 1}, Qt::Key_Delete);
      leadsTo({1, 1}, Qt::Key_Backspace);
      leadsTo({1, 0}, Qt::Key_Right, Qt::ControlModifier);
      leadsTo({1, 0}, Qt::Key_Delete, Qt::ShiftModifier);
    }
  }

  void everyPressIsShownBeforeTheNext() {
    OnlyWindow window(m_folder.url());
    window.openPhoto("0.jpg");
    QList<qint64> shown;  // by frames, each photo once
    connect(&window.window, &QQuickWindow::frameSwapped, &window.window, [&] {
      const qint64 index = window.library.currentIndex();
      if (shown.isEmpty() || shown.last() != index) shown.append(index);
    });
    window.platform.alert.answer = AlertRole::cancel;
    window.platform.alert.whileOpen = [&] {
      QVERIFY(!shown.isEmpty() && shown.last() == 3);  // what is asked about was seen
      window.press(Qt::Key_Left);
    };
    for (const Qt::Key key : {Qt::Key_Right, Qt::Key_Right, Qt::Key_Right, Qt::Key_Delete, Qt::Key_Left}) {
      window.press(key);
    }
    QTRY_COMPARE(window.platform.alert.asked.size(), 1);
    QCOMPARE(shown.mid(std::max<qsizetype>(0, shown.size() - 3)), (QList<qint64>{1, 2, 3}));
    QCOMPARE(window.library.currentIndex(), 3);
    for (const Qt::Key key : {Qt::Key_Left, Qt::Key_Left, Qt::Key_Left}) window.press(key);
    QTest::mousePress(&window.window, Qt::LeftButton, {}, window.middle());  // goes before what waits
    window.press(Qt::Key_Right);
    QTRY_COMPARE(window.library.currentIndex(), 3);
    for (const Qt::Key key : {Qt::Key_Left, Qt::Key_Left, Qt::Key_Escape}) window.press(key);
    QTRY_VERIFY(window.shows("Sort order"));
    QVERIFY(window.library.currentIndex() >= 2);
  }

  void nothingStepsUnderAQuestion() {
    OnlyWindow window(m_folder.url());
    window.openPhoto("1.jpg");
    QKeyEvent repeat(QEvent::KeyPress, Qt::Key_Right, {}, {}, true);
    QCoreApplication::sendEvent(&window.window, &repeat);  // a step is due
    window.platform.alert.whileOpen = [&] {
      window.view.openSortMenu(nullptr, {});
      window.platform.popupMenu.entries[1].action();
      for (int turn = 0; turn < 5; ++turn) QCoreApplication::processEvents();
      for (const Qt::Key key : {Qt::Key_Left, Qt::Key_Delete, Qt::Key_Escape}) window.press(key);
      QVERIFY(window.shows("2 / 4") && window.platform.alert.asked.size() == 1);
    };
    window.view.deleteCurrentPhoto();
    QCOMPARE(window.platform.trash.moved, QStringList{photoName(1)});
    QCOMPARE(window.library.sortOrder(), SortOrder::nameDescending);  // chosen before, and put off
  }

  void theLastPhotoThatIsMovedLeavesTheGrid() {
    OnlyWindow window(m_folder.url());
    window.openPhoto("2.jpg");
    for (const char* counter : {"3 / 3", "2 / 2", "1 / 1", "Choose a folder to start browsing."}) {
      window.press(Qt::Key_Delete);
      QTRY_VERIFY(window.shows(counter));
    }
    QTRY_VERIFY(window.find("Moved \"0.jpg\" to the Trash.", QAccessible::AlertMessage));
    QVERIFY(!window.shows("Next photo"));
  }

  void pinchesAndDragsMoveThePhoto() {
    OnlyWindow window(m_folder.url());
    window.openPhoto("1.jpg");
    const auto drag = [&window](QPoint way) {
      const QPoint start = window.middle() - QPoint(250, 150);
      QTest::mousePress(&window.window, Qt::LeftButton, {}, start);
      for (const int part : {4, 2, 1}) QTest::mouseMove(&window.window, start + way / part);
      QTest::mouseRelease(&window.window, Qt::LeftButton, {}, start + way);
    };
    drag({40, -25});
    window.pinch({1.04});
    QTRY_VERIFY(isZoomed(window, 1));  // too little to stay
    window.pinch({1.5, 3});
    QTRY_VERIFY(isZoomed(window, 3));
    window.pinch({1.1, 2});  // from its own start
    QTRY_VERIFY(isZoomed(window, 2));
    // The wheel goes on from the scale in force, and up from the smallest at once.
    const auto turn = [&window](int notches) {
      for (int notch = 0; notch < std::abs(notches); ++notch) {
        window.turnWheel(notches < 0 ? -120 : 120, Qt::ControlModifier);
      }
      return qRound(window.view.zoom().scale * 1e6);
    };
    QCOMPARE(turn(7), 4'000'000);
    QCOMPARE(turn(-30), 1'000'000);
    QCOMPARE(turn(7), 2'000'000);
    window.turnWheel(120);
    window.turnWheel(0, Qt::ControlModifier);  // sideways
    QCOMPARE(turn(0), 2'000'000);
    QTRY_COMPARE(window.view.lastMagnification(), 1.0);  // it has come to rest
    // Two fingers on a screen.
    const std::unique_ptr<QPointingDevice> screen(QTest::createTouchDevice());
    const QPoint left = window.middle() - QPoint(100, 0);
    auto touch = QTest::touchEvent(&window.window, screen.get(), false);
    touch.press(0, left).commit();
    touch.stationary(0).press(1, left + QPoint(100, 0)).commit();
    for (const int distance : {75, 150}) touch.stationary(0).move(1, left + QPoint(distance, 0)).commit();
    touch.release(0, left).release(1, left + QPoint(150, 0)).commit();
    QTRY_VERIFY(isZoomed(window, 1.5));
    window.pinch({3});
    drag({40, -25});
    drag({10, 10});
    QTRY_VERIFY(isZoomed(window, 3, {50, -15}));
    const QPoint start = window.middle();
    for (const auto button : {Qt::RightButton, Qt::MiddleButton, Qt::BackButton}) {
      QTest::mouseDClick(&window.window, button, {}, start);
      window.pointTo(start, button);
      for (const QPoint end : {QPoint(20, 20), QPoint(50, 50)}) window.pointTo(start + end, button);
      window.pointTo(start + QPoint(50, 50));
      QVERIFY(isZoomed(window, 3, {50, -15}));
    }
    for (const auto& [right, buttons] : {std::pair(0, 1U), {20, 3U}, {40, 1U}, {60, 1U}, {60, 0U}}) {
      window.pointTo(start + QPoint(right, 0), Qt::MouseButtons(int(buttons)));  // left, for a while both
    }
    QTRY_VERIFY(isZoomed(window, 3, {110, -15}));
    for (int time = 0; time < 2; ++time) {  // it is no toggle
      QTest::mouseDClick(&window.window, Qt::LeftButton, {}, window.middle());
      QTRY_VERIFY(isZoomed(window, 1));
    }
    window.pinch({3});
    drag({30, 40});
    window.click("Move current photo to Trash");
    QTRY_VERIFY(window.shows("2 / 3") && isZoomed(window, 3, {30, 40}));
    window.click("Next photo");
    QTRY_VERIFY(isZoomed(window, 1));
  }

 private:
  const Photos m_folder{4};
};

LUMAGRID_UI_TEST_MAIN(PhotoUiTest)
#include "PhotoUiTest.moc"
