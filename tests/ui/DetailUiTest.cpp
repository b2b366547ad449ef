#include "UiWindow.h"

using namespace lumagrid;

// The detail stage of a window: its buttons, its keys and its texts.
class DetailUiTest : public QObject {
  Q_OBJECT

 private Q_SLOTS:
  void init();
  void cleanup();
  void buttonsStepWhereThereIsAPhoto_data();
  void buttonsStepWhereThereIsAPhoto();
  void keysActWhateverHasTheFocus_data();
  void keysActWhateverHasTheFocus();
  void keysDoNothingOnTheGrid();
  void aHeldArrowStopsWithItsRelease();
  void theInfoBarTellsOfThePhoto_data();
  void theInfoBarTellsOfThePhoto();
  void theCurrentPhotoIsMovedAfterAQuestion_data();
  void theCurrentPhotoIsMovedAfterAQuestion();
  void theLastPhotoLeavesAnEmptyGrid();
  void escEndsTheSelectionFirst();

 private:
  void open(int number);
  [[nodiscard]] bool hasRedText(const QString& text);

  const Photos m_folder{4};
  std::unique_ptr<UiApp> m_app;
  std::unique_ptr<UiWindow> m_window;
};

void DetailUiTest::init() {
  m_app = std::make_unique<UiApp>();
  m_window = std::make_unique<UiWindow>(m_app->app);
  choose(*m_app, *m_window, m_folder.url());
  QTRY_VERIFY(m_window->shows(photoName(3)));
}

void DetailUiTest::cleanup() {
  QTRY_COMPARE(m_app->app.thumbnailQueue().pendingCount(), 0);
  m_window.reset();
  m_app.reset();
}

void DetailUiTest::open(int number) {
  m_window->click(photoName(number));
  QTRY_VERIFY(m_window->shows("Next photo"));
}

// In the colour of danger, somewhere in its letters.
bool DetailUiTest::hasRedText(const QString& text) {
  const QImage image = m_window->grab().copy(m_window->rectOf(text));
  for (int y = 0; y < image.height(); ++y) {
    for (int x = 0; x < image.width(); ++x) {
      const QRgb pixel = image.pixel(x, y);
      if (qRed(pixel) - qGreen(pixel) > 80 && qRed(pixel) - qBlue(pixel) > 80) return true;
    }
  }
  return false;
}

void DetailUiTest::buttonsStepWhereThereIsAPhoto_data() {
  QTest::addColumn<int>("opened");
  QTest::addColumn<QString>("button");
  QTest::addColumn<int>("shown");
  const QString previous = QStringLiteral("Previous photo");
  const QString next = QStringLiteral("Next photo");
  QTest::newRow("forward from the first") << 0 << next << 1;
  QTest::newRow("not back from the first") << 0 << previous << 0;
  QTest::newRow("back from the second") << 1 << previous << 0;
  QTest::newRow("forward to the last") << 2 << next << 3;
  QTest::newRow("not forward from the last") << 3 << next << 3;
}

void DetailUiTest::buttonsStepWhereThereIsAPhoto() {
  QFETCH(int, opened);
  QFETCH(QString, button);
  QFETCH(int, shown);
  open(opened);
  QCOMPARE(m_window->isEnabled(button), shown != opened);
  m_window->click(button);
  QTRY_VERIFY(m_window->shows(QStringLiteral("%1 / 4").arg(shown + 1)));
  QCOMPARE(m_window->isEnabled("Previous photo"), shown > 0);
  QCOMPARE(m_window->isEnabled("Next photo"), shown < 3);
  QVERIFY(m_window->isEnabled("Move current photo to Trash"));
}

void DetailUiTest::keysActWhateverHasTheFocus_data() {
  QTest::addColumn<Qt::Key>("key");
  QTest::addColumn<Qt::KeyboardModifiers>("modifiers");
  QTest::addColumn<int>("opened");
  QTest::addColumn<int>("shown");
  QTest::addColumn<int>("questions");
  const auto row = [](const char* name, Qt::Key key, Qt::KeyboardModifiers modifiers, int opened, int shown,
                      int questions = 0) { QTest::newRow(name) << key << modifiers << opened << shown << questions; };
  row("the right arrow steps on", Qt::Key_Right, {}, 1, 2);
  row("the left arrow steps back", Qt::Key_Left, {}, 1, 0);
  row("the arrow of the number pad is one too", Qt::Key_Right, Qt::KeypadModifier, 1, 2);
  row("no further than the last", Qt::Key_Right, {}, 3, 3);
  row("no further than the first", Qt::Key_Left, {}, 0, 0);
  row("Delete asks", Qt::Key_Delete, {}, 1, 1, 1);
  row("Backspace asks", Qt::Key_Backspace, {}, 1, 1, 1);
  row("not with Ctrl", Qt::Key_Right, Qt::ControlModifier, 1, 1);
  row("not with Alt", Qt::Key_Left, Qt::AltModifier, 1, 1);
  row("not with Shift", Qt::Key_Right, Qt::ShiftModifier, 1, 1);
  row("no Delete with Shift", Qt::Key_Delete, Qt::ShiftModifier, 1, 1);
  row("no Backspace with Ctrl", Qt::Key_Backspace, Qt::ControlModifier, 1, 1);
}

void DetailUiTest::keysActWhateverHasTheFocus() {
  QFETCH(Qt::Key, key);
  QFETCH(Qt::KeyboardModifiers, modifiers);
  QFETCH(int, opened);
  QFETCH(int, shown);
  m_app->platform.alert.answer = 1;
  for (const char* focused : {"", "Grid", "Choose Folder", "Next photo", "Lumagrid"}) {
    m_app->platform.alert.asked.clear();
    open(opened);
    for (int tabs = 0; *focused && !m_window->find(focused)->state().focused; ++tabs) {
      QVERIFY(tabs < 10);
      m_window->press(Qt::Key_Tab);
      if (!m_window->isEnabled(focused)) break;  // takes no focus: the next in turn has it
    }
    m_window->press(key, modifiers);
    QCOMPARE(m_window->library.currentIndex(), shown);
    QTEST(int(m_app->platform.alert.asked.size()), "questions");
    m_window->press(Qt::Key_Escape);
    QTRY_VERIFY(m_window->shows(photoName(opened)) && m_window->shows("Sort order"));
  }
}

void DetailUiTest::keysDoNothingOnTheGrid() {
  for (const Qt::Key key : {Qt::Key_Left, Qt::Key_Right, Qt::Key_Delete, Qt::Key_Backspace}) m_window->press(key);
  QCOMPARE(m_window->library.currentIndex(), 0);
  QVERIFY(m_app->platform.alert.asked.isEmpty());
  QVERIFY(m_window->shows("Sort order"));
}

void DetailUiTest::aHeldArrowStopsWithItsRelease() {
  const Photos many(60);
  choose(*m_app, *m_window, many.url());
  QTRY_VERIFY(m_window->shows(photoName(5)));
  open(0);
  const auto send = [this](QEvent::Type type, bool isRepeat) {
    QKeyEvent event(type, Qt::Key_Right, {}, {}, isRepeat);
    QCoreApplication::sendEvent(&m_window->window, &event);
  };
  send(QEvent::KeyPress, false);
  QCOMPARE(m_window->library.currentIndex(), 1);
  send(QEvent::KeyRelease, true);
  send(QEvent::KeyPress, true);
  QTRY_COMPARE(m_window->library.currentIndex(), 2);
  // More than the window can keep up with, and the release among them.
  for (int repeat = 0; repeat < 30; ++repeat) {
    send(QEvent::KeyRelease, true);
    send(QEvent::KeyPress, true);
  }
  send(QEvent::KeyRelease, false);
  QCOMPARE(m_window->library.currentIndex(), 2);
  QTRY_VERIFY(m_window->shows("3 / 60"));
  QCoreApplication::processEvents();
  QCOMPARE(m_window->library.currentIndex(), 2);
}

void DetailUiTest::theInfoBarTellsOfThePhoto_data() {
  QTest::addColumn<bool>("damaged");
  QTest::addColumn<QString>("status");
  QTest::newRow("a photo") << false << "Showing \"1.jpg\".";
  QTest::newRow("a damaged one") << true << "Could not open \"1.jpg\".";
}

void DetailUiTest::theInfoBarTellsOfThePhoto() {
  QFETCH(bool, damaged);
  QFETCH(QString, status);
  if (damaged) m_app->platform.decoder.damaged = {photoName(1)};
  open(1);
  QTRY_VERIFY(m_window->shows(status));
  QVERIFY(m_window->shows(photoName(1)) && m_window->shows("2 / 4"));
  QCOMPARE(m_window->shows("No photo selected"), damaged);
  QCOMPARE(m_window->shows("Go back to the grid and choose a photo to start browsing."), damaged);
  QCOMPARE(hasRedText(status), damaged);
  for (const char* name : {"Previous photo", "Next photo", "Move current photo to Trash"}) {
    QVERIFY2(m_window->isEnabled(name), name);
  }
  m_window->click("Next photo");
  QTRY_VERIFY(m_window->shows("3 / 4") && !m_window->shows("No photo selected"));
  QVERIFY(!hasRedText(QStringLiteral("Showing \"2.jpg\".")));
}

void DetailUiTest::theCurrentPhotoIsMovedAfterAQuestion_data() {
  QTest::addColumn<int>("opened");
  QTest::addColumn<int>("answer");
  QTest::addColumn<bool>("sticks");
  QTest::addColumn<QString>("status");
  QTest::addColumn<QString>("counter");
  QTest::addColumn<QString>("shown");
  QTest::newRow("the next one follows") << 1 << 0 << false << "Moved \"1.jpg\" to the Trash."
                                        << "2 / 3"
                                        << "2.jpg";
  QTest::newRow("the one before follows the last") << 3 << 0 << false << "Moved \"3.jpg\" to the Trash."
                                                   << "3 / 3"
                                                   << "2.jpg";
  QTest::newRow("nothing happens when cancelled") << 1 << 1 << false << "Showing \"1.jpg\"."
                                                  << "2 / 4"
                                                  << "1.jpg";
  QTest::newRow("what sticks stays") << 1 << 0 << true << "Delete failed: It sticks"
                                     << "2 / 4"
                                     << "1.jpg";
}

void DetailUiTest::theCurrentPhotoIsMovedAfterAQuestion() {
  QFETCH(int, opened);
  QFETCH(bool, sticks);
  QFETCH(int, answer);
  QFETCH(QString, status);
  m_app->platform.alert.answer = answer;
  if (sticks) m_app->platform.trash.stuck = {photoName(opened)};
  open(opened);
  m_window->click("Move current photo to Trash");
  QCOMPARE(m_app->platform.alert.asked,
           QList<QStringList>{(QStringList{QStringLiteral("Move this photo to Trash?"),
                                           QStringLiteral("\"%1\" will be moved to the Trash.").arg(photoName(opened)),
                                           QStringLiteral("Move to Trash"), QStringLiteral("Cancel")})});
  QCOMPARE(m_app->platform.trash.moved, answer == 0 && !sticks ? QStringList{photoName(opened)} : QStringList{});
  QTRY_VERIFY(m_window->shows(status));
  QFETCH(QString, counter);
  QFETCH(QString, shown);
  QVERIFY(m_window->shows(counter) && m_window->shows(shown));
  QCOMPARE(hasRedText(status), sticks);
}

void DetailUiTest::theLastPhotoLeavesAnEmptyGrid() {
  open(0);
  for (int count = 4; count > 0; --count) {
    QTRY_VERIFY(m_window->shows(QStringLiteral("1 / %1").arg(count)));
    m_window->press(Qt::Key_Delete);
  }
  QTRY_VERIFY(m_window->shows("Choose a folder to start browsing."));
  QVERIFY(m_window->shows("Sort order") && !m_window->shows("Next photo"));
  QVERIFY(m_window->find(QStringLiteral("Moved \"3.jpg\" to the Trash."), QAccessible::AlertMessage));
}

void DetailUiTest::escEndsTheSelectionFirst() {
  open(1);
  m_window->library.toggleSelection(2);
  QTRY_VERIFY(m_window->shows("Grid") && !m_window->shows("Choose Folder"));
  m_window->press(Qt::Key_Escape);
  QTRY_VERIFY(m_window->shows("Grid") && m_window->shows("Choose Folder"));
  m_window->press(Qt::Key_Escape);
  QTRY_VERIFY(m_window->shows("Sort order") && !m_window->shows("Grid"));
}

LUMAGRID_UI_TEST_MAIN(DetailUiTest)
#include "DetailUiTest.moc"
