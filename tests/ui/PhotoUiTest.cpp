#include "PhotoView.h"
#include "UiWindow.h"

using namespace lumagrid;

namespace {

PhotoView* photoOf(const QQuickItem* parent) {
  for (QQuickItem* child : parent->childItems()) {
    if (auto* photo = qobject_cast<PhotoView*>(child)) return photo;
    if (PhotoView* photo = photoOf(child)) return photo;
  }
  return nullptr;
}

// What is on screen has come to rest there.
bool isShown(const UiWindow& window, double scale, QPointF offset) {
  const PhotoView* photo = photoOf(window.window.contentItem());
  return photo && photo->displayedScale() == scale && photo->displayedOffset() == offset;
}

// In the colour of danger, somewhere in its letters.
bool hasRedText(UiWindow& window, const QString& text) {
  const QImage image = window.grab().copy(window.rectOf(text));
  for (int y = 0; y < image.height(); ++y) {
    for (int x = 0; x < image.width(); ++x) {
      const QRgb pixel = image.pixel(x, y);
      if (qRed(pixel) - qGreen(pixel) > 80 && qRed(pixel) - qBlue(pixel) > 80) return true;
    }
  }
  return false;
}

}  // namespace

// The detail stage of a window: its buttons, keys and texts, zoom and pan.
class PhotoUiTest : public QObject {
  Q_OBJECT

 private Q_SLOTS:
  void waysLeadBackToTheGrid();
  void buttonsStepWhereThereIsAPhoto();
  void keysActWhateverHasTheFocus_data();
  void keysActWhateverHasTheFocus();
  void aHeldArrowStopsWithItsRelease();
  void aDamagedPhotoIsTold();
  void theCurrentPhotoIsMovedAfterAQuestion_data();
  void theCurrentPhotoIsMovedAfterAQuestion();
  void theLastPhotoLeavesAnEmptyGrid();
  void aPinchSetsTheScale_data();
  void aPinchSetsTheScale();
  void everyPinchStartsFromItsOwnFactor();
  void aDragPans_data();
  void aDragPans();
  void aDoubleClickResets();
  void whatResetsTheZoom_data();
  void whatResetsTheZoom();

 private:
  const Photos m_folder{4};
};

void PhotoUiTest::waysLeadBackToTheGrid() {
  UiApp app;
  UiWindow window(app, m_folder.url());
  for (const Qt::Key key : {Qt::Key_Left, Qt::Key_Right, Qt::Key_Delete, Qt::Key_Backspace}) window.press(key);
  QCOMPARE(window.library.currentIndex(), 0);  // on the grid, keys do nothing to it
  QVERIFY(app.platform.alert.asked.isEmpty());
  app.platform.chooser.answer = std::nullopt;  // cancelled
  for (const char* way : {"Grid", "Choose Folder", "Esc", "Esc with a selection"}) {
    window.openPhoto("2.jpg");
    for (const char* name : {"Grid", "Choose Folder", "3 / 4", "Showing \"2.jpg\"."})
      QVERIFY2(window.shows(name), name);
    for (const char* name : {"1.jpg", "Sort order", "16"}) QVERIFY2(!window.shows(name), name);
    if (qstrcmp(way, "Esc with a selection") == 0) {
      window.library.toggleSelection(1);
      QTRY_VERIFY(!window.shows("Choose Folder"));
      window.press(Qt::Key_Escape);  // first ends the selection
      QTRY_VERIFY(window.shows("Grid") && window.isEnabled("Choose Folder"));
    }
    if (*way == 'E') {
      window.press(Qt::Key_Escape);
    } else {
      window.click(way);
    }
    QTRY_VERIFY(window.shows("1.jpg") && window.shows("Sort order"));
    QVERIFY(!window.shows("Next photo") && !window.shows("Grid"));
  }
}

void PhotoUiTest::buttonsStepWhereThereIsAPhoto() {
  UiApp app;
  UiWindow window(app, m_folder.url());
  window.openPhoto("1.jpg");
  const auto isAt = [&window](int number) {
    return window.shows(QStringLiteral("%1 / 4").arg(number + 1)) && window.shows(photoName(number)) &&
           window.isEnabled("Previous photo") == (number > 0) && window.isEnabled("Next photo") == (number < 3) &&
           window.isEnabled("Move current photo to Trash");
  };
  for (const int number : {2, 3, 3}) {
    window.click("Next photo");
    QTRY_VERIFY(isAt(number));
  }
  for (const int number : {2, 1, 0, 0}) {
    window.click("Previous photo");
    QTRY_VERIFY(isAt(number));
  }
}

void PhotoUiTest::keysActWhateverHasTheFocus_data() {
  QTest::addColumn<Qt::Key>("key");
  QTest::addColumn<Qt::KeyboardModifiers>("modifiers");
  QTest::addColumn<int>("shown");
  QTest::addColumn<int>("questions");
  const auto row = [](const char* name, Qt::Key key, Qt::KeyboardModifiers modifiers, int shown, int questions = 0) {
    QTest::newRow(name) << key << modifiers << shown << questions;
  };
  row("the right arrow steps on", Qt::Key_Right, {}, 2);
  row("the left arrow of the number pad steps back", Qt::Key_Left, Qt::KeypadModifier, 0);
  row("Delete asks", Qt::Key_Delete, {}, 1, 1);
  row("Backspace asks", Qt::Key_Backspace, {}, 1, 1);
  row("no arrow with Ctrl", Qt::Key_Right, Qt::ControlModifier, 1);
  row("no arrow with Alt", Qt::Key_Left, Qt::AltModifier, 1);
  row("no Delete with Shift", Qt::Key_Delete, Qt::ShiftModifier, 1);
}

void PhotoUiTest::keysActWhateverHasTheFocus() {
  QFETCH(Qt::Key, key);
  QFETCH(Qt::KeyboardModifiers, modifiers);
  QFETCH(int, shown);
  QFETCH(int, questions);
  UiApp app;
  app.platform.alert.answer = 1;
  UiWindow window(app, m_folder.url());
  for (const char* focused : {"", "Grid", "Choose Folder", "Next photo", "Lumagrid"}) {
    app.platform.alert.asked.clear();
    window.openPhoto("1.jpg");
    for (int tabs = 0; *focused && !window.find(focused)->state().focused; ++tabs) {
      QVERIFY(tabs < 10);
      window.press(Qt::Key_Tab);
    }
    window.press(key, modifiers);
    QCOMPARE(window.library.currentIndex(), shown);
    QCOMPARE(int(app.platform.alert.asked.size()), questions);
    window.press(Qt::Key_Escape);
    QTRY_VERIFY(window.shows("1.jpg") && window.shows("Sort order"));
  }
}

void PhotoUiTest::aHeldArrowStopsWithItsRelease() {
  const Photos many(60);
  UiApp app;
  UiWindow window(app, many.url());
  window.openPhoto("0.jpg");
  const auto send = [&window](QEvent::Type type, bool isRepeat) {
    QKeyEvent event(type, Qt::Key_Right, {}, {}, isRepeat);
    QCoreApplication::sendEvent(&window.window, &event);
  };
  send(QEvent::KeyPress, false);
  QCOMPARE(window.library.currentIndex(), 1);
  send(QEvent::KeyRelease, true);
  send(QEvent::KeyPress, true);
  QTRY_COMPARE(window.library.currentIndex(), 2);
  // More than the window can keep up with, and the release among them.
  for (int repeat = 0; repeat < 30; ++repeat) {
    send(QEvent::KeyRelease, true);
    send(QEvent::KeyPress, true);
  }
  send(QEvent::KeyRelease, false);
  QTRY_VERIFY(window.shows("3 / 60"));
  QCoreApplication::processEvents();
  QCOMPARE(window.library.currentIndex(), 2);
}

void PhotoUiTest::aDamagedPhotoIsTold() {
  UiApp app;
  app.platform.decoder.damaged = {photoName(1)};
  UiWindow window(app, m_folder.url());
  window.openPhoto("1.jpg");
  const QString status = QStringLiteral("Could not open \"1.jpg\".");
  QTRY_VERIFY(window.shows(status) && window.shows("No photo selected"));
  QVERIFY(window.shows("1.jpg") && window.shows("2 / 4") && hasRedText(window, status));
  for (const char* name : {"Previous photo", "Next photo", "Move current photo to Trash"}) {
    QVERIFY2(window.isEnabled(name), name);
  }
  window.click("Next photo");
  const QString next = QStringLiteral("Showing \"2.jpg\".");
  QTRY_VERIFY(window.shows(next) && window.shows("3 / 4") && !window.shows("No photo selected"));
  QVERIFY(!hasRedText(window, next));
}

void PhotoUiTest::theCurrentPhotoIsMovedAfterAQuestion_data() {
  QTest::addColumn<int>("opened");
  QTest::addColumn<int>("answer");
  QTest::addColumn<bool>("sticks");
  QTest::addColumn<QStringList>("shown");  // the status first
  const auto row = [](const char* name, int opened, int answer, bool sticks, const char* status, const char* counter,
                      const char* photo) {
    QTest::newRow(name) << opened << answer << sticks
                        << QStringList{QLatin1String(status), QLatin1String(counter), QLatin1String(photo)};
  };
  row("the next one follows", 1, 0, false, "Moved \"1.jpg\" to the Trash.", "2 / 3", "2.jpg");
  row("the one before follows the last", 3, 0, false, "Moved \"3.jpg\" to the Trash.", "3 / 3", "2.jpg");
  row("nothing happens when cancelled", 1, 1, false, "Showing \"1.jpg\".", "2 / 4", "1.jpg");
  row("what sticks stays", 1, 0, true, "Delete failed: It sticks", "2 / 4", "1.jpg");
}

void PhotoUiTest::theCurrentPhotoIsMovedAfterAQuestion() {
  QFETCH(int, opened);
  QFETCH(int, answer);
  QFETCH(bool, sticks);
  QFETCH(QStringList, shown);
  const QString name = photoName(opened);
  UiApp app;
  app.platform.alert.answer = answer;
  if (sticks) app.platform.trash.stuck = {name};
  UiWindow window(app, m_folder.url());
  window.openPhoto(name);
  window.click("Move current photo to Trash");
  QCOMPARE(app.platform.alert.asked,
           QList<QStringList>{(QStringList{QStringLiteral("Move this photo to Trash?"),
                                           QStringLiteral("\"%1\" will be moved to the Trash.").arg(name),
                                           QStringLiteral("Move to Trash"), QStringLiteral("Cancel")})});
  QCOMPARE(app.platform.trash.moved, answer == 0 && !sticks ? QStringList{name} : QStringList{});
  for (const QString& text : shown) QTRY_VERIFY2(window.shows(text), qPrintable(text));
  QCOMPARE(hasRedText(window, shown.first()), sticks);
}

void PhotoUiTest::theLastPhotoLeavesAnEmptyGrid() {
  UiApp app;
  UiWindow window(app, m_folder.url());
  window.openPhoto("0.jpg");
  for (int count = 4; count > 0; --count) {
    QTRY_VERIFY(window.shows(QStringLiteral("1 / %1").arg(count)));
    window.press(Qt::Key_Delete);
  }
  QTRY_VERIFY(window.find("Moved \"3.jpg\" to the Trash.", QAccessible::AlertMessage));
  QVERIFY(window.shows("Choose a folder to start browsing."));
  QVERIFY(window.shows("Sort order") && !window.shows("Next photo"));
}

void PhotoUiTest::aPinchSetsTheScale_data() {
  QTest::addColumn<double>("magnification");
  QTest::addColumn<double>("during");
  QTest::addColumn<double>("afterwards");
  QTest::newRow("together stays fitted") << 0.6 << 1.0 << 1.0;
  QTest::newRow("a little apart springs back") << 1.04 << 1.04 << 1.0;
  QTest::newRow("further apart stays") << 1.06 << 1.06 << 1.06;
}

void PhotoUiTest::aPinchSetsTheScale() {
  QFETCH(double, magnification);
  QFETCH(double, during);
  QFETCH(double, afterwards);
  UiApp app;
  UiWindow window(app, m_folder.url());
  window.openPhoto("1.jpg");
  window.beginPinch();
  window.changePinch(magnification);
  QCOMPARE(window.view.zoom(), (ZoomState{during, {0, 0}}));
  QTRY_VERIFY(isShown(window, during, {}));
  window.endPinch();
  QCOMPARE(window.view.zoom(), (ZoomState{afterwards, {0, 0}}));
  QTRY_VERIFY(isShown(window, afterwards, {}));
}

void PhotoUiTest::everyPinchStartsFromItsOwnFactor() {
  UiApp app;
  UiWindow window(app, m_folder.url());
  window.openPhoto("1.jpg");
  const auto& scale = window.view.zoom().scale;
  window.pinch({1.5, 3.0});
  QCOMPARE(scale, 3.0);
  window.beginPinch();
  window.changePinch(1.1);
  QCOMPARE(scale, 1.1);
  window.changePinch(2.0);
  window.endPinch();
  QCOMPARE(scale, 2.0);
  // The wheel goes on from the scale in force: seven notches double it.
  for (int notch = 0; notch < 7; ++notch) window.turnWheel(120, Qt::ControlModifier);
  QVERIFY(std::abs(scale - 4) < 1e-6);
  window.turnWheel(120);
  QVERIFY(std::abs(scale - 4) < 1e-6);

  // Two fingers on a screen.
  const std::unique_ptr<QPointingDevice> screen(QTest::createTouchDevice());
  const auto fingers = [&] { return QTest::touchEvent(&window.window, screen.get(), false); };
  const auto send = [](QTest::QTouchEventSequence sequence) { sequence.commit(); };
  const auto at = [&window](int x) { return window.middle() + QPoint(x, 0); };
  send(fingers().press(0, at(-50), &window.window).press(1, at(50), &window.window));
  send(fingers().move(0, at(-125), &window.window).move(1, at(125), &window.window));
  QCOMPARE(scale, 2.5);
  send(fingers().release(0, at(-125), &window.window).release(1, at(125), &window.window));
  QCOMPARE(scale, 2.5);
}

void PhotoUiTest::aDragPans_data() {
  QTest::addColumn<double>("zoom");
  QTest::addColumn<QList<QPoint>>("drags");
  QTest::addColumn<QSizeF>("offset");
  QTest::newRow("not the fitted photo") << 1.0 << QList<QPoint>{{40, -25}} << QSizeF(0, 0);
  QTest::newRow("again from where it is") << 3.0 << QList<QPoint>{{40, -25}, {10, 10}} << QSizeF(50, -15);
  QTest::newRow("not within ten points") << 3.0 << QList<QPoint>{{7, 7}} << QSizeF(0, 0);
  QTest::newRow("out of sight") << 2.0 << QList<QPoint>{{500, 300}, {500, 300}, {500, 300}} << QSizeF(1500, 900);
}

void PhotoUiTest::aDragPans() {
  QFETCH(double, zoom);
  QFETCH(QList<QPoint>, drags);
  QFETCH(QSizeF, offset);
  UiApp app;
  UiWindow window(app, m_folder.url());
  window.openPhoto("1.jpg");
  window.pinch({zoom});
  for (const QPoint& way : drags) {
    window.drag(window.middle() - QPoint(250, 150), {way / 4, way / 2, way});
    QCOMPARE(window.view.dragOffset(), QSizeF(0, 0));
  }
  QCOMPARE(window.view.zoom(), (ZoomState{zoom, offset}));
  QTRY_VERIFY(isShown(window, zoom, {offset.width(), offset.height()}));
}

void PhotoUiTest::aDoubleClickResets() {
  UiApp app;
  UiWindow window(app, m_folder.url());
  window.openPhoto("1.jpg");
  window.pinch({3.0});
  window.drag(window.middle(), {{20, 20}, {300, 200}});
  QTRY_VERIFY(isShown(window, 3, {300, 200}));
  for (int time = 0; time < 2; ++time) {  // it is no toggle
    QTest::mouseDClick(&window.window, Qt::LeftButton, {}, window.middle());
    QCOMPARE(window.view.zoom(), ZoomState{});
    QTRY_VERIFY(isShown(window, 1, {}));
  }
}

void PhotoUiTest::whatResetsTheZoom_data() {
  QTest::addColumn<QString>("action");
  QTest::addColumn<bool>("resets");
  QTest::newRow("the next photo") << "Next photo" << true;
  QTest::newRow("the grid") << "Grid" << true;
  QTest::newRow("not the photo that follows a moved one") << "Move current photo to Trash" << false;
  QTest::newRow("not the same folder, dropped") << "drop" << false;
}

void PhotoUiTest::whatResetsTheZoom() {
  QFETCH(QString, action);
  QFETCH(bool, resets);
  UiApp app;
  UiWindow window(app, m_folder.url());
  // A folder opened again starts at what the system lists first.
  window.openPhoto(action == QStringLiteral("drop") ? m_folder.listed().first() : photoName(1));
  window.pinch({3.0});
  window.drag(window.middle(), {{20, 20}, {30, 40}});
  const ZoomState zoomed{3, {30, 40}};
  QCOMPARE(window.view.zoom(), zoomed);
  if (action == QStringLiteral("drop")) {
    QVERIFY(window.drop({toUrl(m_folder.url())}));
    QTRY_VERIFY(window.shows("Sort order"));
  } else {
    window.click(action);
  }
  QTRY_COMPARE(window.view.zoom(), resets ? ZoomState{} : zoomed);
  QCoreApplication::processEvents();  // of observers, too
  QCOMPARE(window.view.zoom(), resets ? ZoomState{} : zoomed);
}

LUMAGRID_UI_TEST_MAIN(PhotoUiTest)
#include "PhotoUiTest.moc"
