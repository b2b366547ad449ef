#include <QApplication>
#include <QFileDialog>
#include <QLabel>
#include <QMenu>
#include <QMessageBox>
#include <QPushButton>
#include <QTest>
#include <QTimer>
#include <QToolButton>
#include <QWindow>

#include "QtAlert.h"
#include "QtFolderChooser.h"
#include "QtPopupMenu.h"
#include "TemporaryHome.h"
#include "WidgetPalette.h"

using namespace lumagrid;

namespace {

// Calls `answer` once a modal dialog is on screen.
template <typename Dialog>
void whenOpen(QTimer& timer, std::function<void(Dialog&)> answer) {
  QObject::connect(&timer, &QTimer::timeout, &timer, [&timer, answer = std::move(answer)] {
    auto* dialog = qobject_cast<Dialog*>(QApplication::activeModalWidget());
    if (!dialog || !dialog->isVisible()) return;
    timer.stop();
    answer(*dialog);
  });
  timer.start(0);
}

QMenu* openMenu() {
  return qobject_cast<QMenu*>(QApplication::activePopupWidget());
}

}  // namespace

class DialogsTest : public QObject {
  Q_OBJECT

 private Q_SLOTS:
  void initTestCase();
  void alertAnswers_data();
  void alertAnswers();
  void alertShowsItsTextsAsTheyAre();
  void chooserReturnsAnExistingFolder();
  void chooserCancels();
  void menuRunsTheChosenEntryAndThenCloses_data();
  void menuRunsTheChosenEntryAndThenCloses();
  void menuShowsItsEntriesAsTheyAre();
  void openingAMenuClosesTheOneBefore();
  void anActionMayOpenTheNextMenu();

 private:
  Appearance m_appearance{ColorScheme::light};
  WidgetPalette m_palette{m_appearance};
  QWindow m_window;
};

void DialogsTest::initTestCase() {
  m_window.resize(400, 300);
  m_window.show();
  m_window.requestActivate();
  QVERIFY(QTest::qWaitForWindowActive(&m_window));
}

void DialogsTest::alertAnswers_data() {
  QTest::addColumn<QStringList>("buttons");
  QTest::addColumn<std::function<void(QMessageBox&)>>("answer");
  QTest::addColumn<int>("index");
  const QStringList two = {QStringLiteral("Move to Trash"), QStringLiteral("Cancel")};
  const auto key = [](Qt::Key pressed) {
    return std::function<void(QMessageBox&)>([pressed](QMessageBox& box) { QTest::keyClick(&box, pressed); });
  };
  const auto click = [](const QString& title) {
    return std::function<void(QMessageBox&)>([title](QMessageBox& box) {
      for (auto* button : box.findChildren<QPushButton*>()) {
        if (button->text() == title) QTest::mouseClick(button, Qt::LeftButton);
      }
    });
  };
  QTest::newRow("Return presses the first button") << two << key(Qt::Key_Return) << 0;
  QTest::newRow("Esc presses Cancel") << two << key(Qt::Key_Escape) << 1;
  QTest::newRow("closing presses Cancel")
      << two << std::function<void(QMessageBox&)>([](QMessageBox& box) { box.close(); }) << 1;
  QTest::newRow("a click presses its button") << two << click(QStringLiteral("Cancel")) << 1;
  QTest::newRow("Cancel may stand first")
      << QStringList{QStringLiteral("Cancel"), QStringLiteral("Go")} << click(QStringLiteral("Go")) << 1;
  QTest::newRow("an ampersand in a title is shown")
      << QStringList{QStringLiteral("Keep"), QStringLiteral("A && B")} << click(QStringLiteral("A &&&& B")) << 1;
  QTest::newRow("quitting is no confirmation")
      << two << std::function<void(QMessageBox&)>([](QMessageBox& box) { box.done(-5); }) << 1;
}

void DialogsTest::alertAnswers() {
  QFETCH(QStringList, buttons);
  QFETCH(std::function<void(QMessageBox&)>, answer);
  QFETCH(int, index);
  QTimer timer;
  bool isAboveTheWindow = false;
  whenOpen<QMessageBox>(timer, [&](QMessageBox& box) {
    isAboveTheWindow = box.windowHandle()->transientParent() == &m_window && box.isModal();
    answer(box);
  });
  QCOMPARE(QtAlert(m_palette).runModal({QStringLiteral("Question?"), QStringLiteral("Details."), buttons}), index);
  QVERIFY(isAboveTheWindow);
}

void DialogsTest::alertShowsItsTextsAsTheyAre() {
  const QString message = QStringLiteral("<b>x</b> & y &amp;");
  const QString informative = QStringLiteral("\"<img src=x>&lt;\n<i>.jpg\" will be moved.");
  QTimer timer;
  QMap<QString, Qt::TextFormat> shown;
  whenOpen<QMessageBox>(timer, [&shown](QMessageBox& box) {
    for (const QLabel* label : box.findChildren<QLabel*>()) {
      if (label->isVisible() && !label->text().isEmpty()) shown[label->text()] = label->textFormat();
    }
    QTest::keyClick(&box, Qt::Key_Escape);
  });
  QCOMPARE(QtAlert(m_palette).runModal({message, informative, {QStringLiteral("Cancel")}}), 0);
  const QMap<QString, Qt::TextFormat> expected = {{message, Qt::PlainText}, {informative, Qt::PlainText}};
  QCOMPARE(shown, expected);
}

void DialogsTest::chooserReturnsAnExistingFolder() {
  const QByteArray folder = qgetenv("HOME") + "/Photos & <b>more";
  QCOMPARE(::mkdir(folder.constData(), 0755), 0);
  QTimer timer;
  bool isFit = false;
  whenOpen<QFileDialog>(timer, [&](QFileDialog& dialog) {
    const auto* newFolder = dialog.findChild<QToolButton*>(QStringLiteral("newFolderButton"));
    isFit = dialog.fileMode() == QFileDialog::Directory && dialog.windowTitle() == QStringLiteral("Choose a folder") &&
            dialog.labelText(QFileDialog::Accept) == QStringLiteral("Choose") &&
            dialog.windowHandle()->transientParent() == &m_window && newFolder &&
            !(newFolder->isVisible() && newFolder->isEnabled());
    dialog.setDirectory(QFile::decodeName(folder));
    QMetaObject::invokeMethod(&dialog, "accept");
  });
  const auto chosen =
      QtFolderChooser(m_palette).chooseFolder(QStringLiteral("Choose a folder"), QStringLiteral("Choose"));
  QVERIFY(isFit);
  QVERIFY(chosen.has_value());
  QCOMPARE(chosen->path(), folder);
}

void DialogsTest::chooserCancels() {
  QTimer timer;
  whenOpen<QFileDialog>(timer, [](QFileDialog& dialog) { QTest::keyClick(&dialog, Qt::Key_Escape); });
  QVERIFY(!QtFolderChooser(m_palette).chooseFolder(QStringLiteral("Choose"), QStringLiteral("Choose")));
}

void DialogsTest::menuRunsTheChosenEntryAndThenCloses_data() {
  QTest::addColumn<QList<Qt::Key>>("keys");
  QTest::addColumn<QByteArrayList>("events");
  QTest::newRow("Return takes the entry") << QList{Qt::Key_Down, Qt::Key_Return} << QByteArrayList{"first", "closed"};
  QTest::newRow("a separator is stepped over")
      << QList{Qt::Key_Down, Qt::Key_Down, Qt::Key_Return} << QByteArrayList{"second", "closed"};
  QTest::newRow("an entry of a submenu") << QList{Qt::Key_Up, Qt::Key_Right, Qt::Key_Return}
                                         << QByteArrayList{"inner", "closed"};
  QTest::newRow("Esc only closes") << QList{Qt::Key_Down, Qt::Key_Escape} << QByteArrayList{"closed"};
}

void DialogsTest::menuRunsTheChosenEntryAndThenCloses() {
  QFETCH(QList<Qt::Key>, keys);
  QFETCH(QByteArrayList, events);
  QByteArrayList happened;
  const auto entry = [&happened](const QString& title, const QByteArray& event) {
    return MenuEntry{.title = title,
                     .action = [&happened, event] { happened.append(openMenu() ? "still open" : event); }};
  };
  QtPopupMenu menu(m_palette);
  menu.open(&m_window, QPoint(10, 10),
            {entry(QStringLiteral("First"), "first"),
             {},
             entry(QStringLiteral("Second"), "second"),
             {.title = QStringLiteral("More"), .submenu = {entry(QStringLiteral("Inner"), "inner")}}},
            [&happened] { happened.append("closed"); });
  QVERIFY(openMenu());
  QCOMPARE(openMenu()->windowHandle()->transientParent(), &m_window);
  for (const Qt::Key key : keys) QTest::keyClick(openMenu(), key);
  QTRY_COMPARE(happened, events);
  QVERIFY(!openMenu());
}

void DialogsTest::menuShowsItsEntriesAsTheyAre() {
  QtPopupMenu menu(m_palette);
  int fired = 0;
  menu.open(&m_window, QPoint(10, 10),
            {{.title = QStringLiteral("Tom & Jerry\tfoo"), .mark = MenuEntry::Mark::check, .action = [] {}},
             {.title = QStringLiteral("Quit"), .shortcut = QStringLiteral("Ctrl+Q"), .action = [&fired] { ++fired; }}},
            [] {});
  QVERIFY(openMenu());
  const QList<QAction*> actions = openMenu()->actions();
  QCOMPARE(actions.size(), 2);
  QCOMPARE(actions[0]->text(), QStringLiteral("Tom && Jerry foo"));
  QVERIFY(actions[0]->isChecked());
  QCOMPARE(actions[1]->text(), QStringLiteral("Quit\tCtrl+Q"));
  QVERIFY(!actions[1]->isCheckable());
  QTest::keyClick(openMenu(), Qt::Key_Q, Qt::ControlModifier);
  QTest::keyClick(&m_window, Qt::Key_Q, Qt::ControlModifier);
  QCoreApplication::processEvents();
  QCOMPARE(fired, 0);
}

void DialogsTest::openingAMenuClosesTheOneBefore() {
  QByteArrayList happened;
  QtPopupMenu menu(m_palette);
  const MenuEntry entry = {.title = QStringLiteral("x"), .action = [] {}};
  menu.open(&m_window, QPoint(10, 10), {entry}, [&happened] { happened.append("first closed"); });
  menu.open(&m_window, QPoint(20, 20), {entry}, [&happened] { happened.append("second closed"); });
  QCOMPARE(happened, QByteArrayList{"first closed"});
  QCoreApplication::processEvents();
  QVERIFY(openMenu());
  QTest::keyClick(openMenu(), Qt::Key_Escape);
  QTRY_COMPARE(happened, (QByteArrayList{"first closed", "second closed"}));
}

void DialogsTest::anActionMayOpenTheNextMenu() {
  int closed = 0;
  QtPopupMenu menu(m_palette);
  const MenuEntry inner = {.title = QStringLiteral("inner"), .action = [] {}};
  const auto openNext = [&] { menu.open(&m_window, QPoint(20, 20), {inner}, [&closed] { ++closed; }); };
  menu.open(&m_window, QPoint(10, 10), {{.title = QStringLiteral("outer"), .action = openNext}},
            [&closed] { ++closed; });
  QTest::keyClick(openMenu(), Qt::Key_Down);
  QTest::keyClick(openMenu(), Qt::Key_Return);
  QTRY_COMPARE(closed, 1);
  QVERIFY(openMenu());
  QCOMPARE(openMenu()->actions().first()->text(), QStringLiteral("inner"));
  QTest::keyClick(openMenu(), Qt::Key_Escape);
  QTRY_COMPARE(closed, 2);
}

int main(int argc, char** argv) {
  const TemporaryHome home;
  QApplication application(argc, argv);
  DialogsTest test;
  return QTest::qExec(&test, argc, argv);
}

#include "DialogsTest.moc"
