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

const TemporaryHome kHome;

// Calls `answer` once a modal dialog is on screen.
template <typename Dialog>
void whenOpen(QTimer& timer, std::function<void(Dialog&)> answer) {
  timer.disconnect();
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

 private:
  Appearance m_appearance{ColorScheme::light};
  WidgetPalette m_palette{m_appearance};
  QWindow m_window;
  QTimer m_timer;
  QtPopupMenu m_menu{m_palette};
  QByteArrayList m_happened;  // in menus

  MenuEntry entry(const char* title) {
    return {.title = QString::fromLatin1(title),
            .action = [this, title] { m_happened.append(openMenu() ? "still open" : title); }};
  }
  void open(std::vector<MenuEntry> entries, const char* closed) {
    m_menu.open(&m_window, QPoint(10, 10), std::move(entries), [this, closed] { m_happened.append(closed); });
  }

 private Q_SLOTS:
  void initTestCase() {
    m_window.resize(400, 300);
    m_window.show();
    m_window.requestActivate();
    QVERIFY(QTest::qWaitForWindowActive(&m_window));
  }

  void init() { m_happened.clear(); }

  void alertAnswers_data() {
    QTest::addColumn<QStringList>("buttons");
    QTest::addColumn<std::function<void(QMessageBox&)>>("answer");
    QTest::addColumn<int>("index");
    const auto row = [](const char* sentence, const char* first, const char* second, int index,
                        std::function<void(QMessageBox&)> answer) {
      QTest::newRow(sentence) << QStringList{QLatin1String(first), QLatin1String(second)} << answer << index;
    };
    const auto key = [](Qt::Key pressed) { return [pressed](QMessageBox& box) { QTest::keyClick(&box, pressed); }; };
    const auto click = [](const char* title) {
      return [title](QMessageBox& box) {
        for (auto* button : box.findChildren<QPushButton*>()) {
          if (button->text() == QLatin1String(title)) QTest::mouseClick(button, Qt::LeftButton);
        }
      };
    };
    row("Return presses the first button", "Move to Trash", "Cancel", 0, key(Qt::Key_Return));
    row("Esc presses Cancel", "Move to Trash", "Cancel", 1, key(Qt::Key_Escape));
    row("closing presses Cancel", "Move to Trash", "Cancel", 1, [](QMessageBox& box) { box.close(); });
    row("quitting is no confirmation", "Move to Trash", "Cancel", 1, [](QMessageBox& box) { box.done(-5); });
    row("Cancel may stand first", "Cancel", "Go", 1, click("Go"));
    row("an ampersand in a title is shown", "Keep", "A && B", 1, click("A &&&& B"));
  }

  void alertAnswers() {
    QFETCH(QStringList, buttons);
    QFETCH(std::function<void(QMessageBox&)>, answer);
    const QString message = QStringLiteral("<b>x</b> & y &amp;");
    const QString informative = QStringLiteral("\"<img src=x>&lt;\n<i>.jpg\" will be moved.");
    QMap<QString, Qt::TextFormat> shown;
    bool isAboveTheWindow = false;
    whenOpen<QMessageBox>(m_timer, [&](QMessageBox& box) {
      isAboveTheWindow = box.windowHandle()->transientParent() == &m_window && box.isModal();
      for (const QLabel* label : box.findChildren<QLabel*>()) {
        if (label->isVisible() && !label->text().isEmpty()) shown[label->text()] = label->textFormat();
      }
      answer(box);
    });
    QTEST(QtAlert(m_palette).runModal({message, informative, buttons}), "index");
    QVERIFY(isAboveTheWindow);
    QCOMPARE(shown, (QMap<QString, Qt::TextFormat>{{message, Qt::PlainText}, {informative, Qt::PlainText}}));
  }

  void chooserReturnsAnExistingFolder() {
    const QByteArray folder = kHome.path() + "/Photos & <b>more";
    QCOMPARE(::mkdir(folder.constData(), 0755), 0);
    bool isFit = false;
    whenOpen<QFileDialog>(m_timer, [&](QFileDialog& dialog) {
      const auto* newFolder = dialog.findChild<QToolButton*>(QStringLiteral("newFolderButton"));
      isFit = dialog.fileMode() == QFileDialog::Directory && dialog.windowTitle() == QStringLiteral("Title") &&
              dialog.labelText(QFileDialog::Accept) == QStringLiteral("Choose") &&
              dialog.windowHandle()->transientParent() == &m_window && newFolder &&
              !(newFolder->isVisible() && newFolder->isEnabled());
      dialog.setDirectory(QFile::decodeName(folder));
      QMetaObject::invokeMethod(&dialog, "accept");
    });
    const auto choose = [this] {
      return QtFolderChooser(m_palette).chooseFolder(QStringLiteral("Title"), QStringLiteral("Choose"));
    };
    QCOMPARE(choose(), FileUrl::fromPath(folder));
    QVERIFY(isFit);
    whenOpen<QFileDialog>(m_timer, [](QFileDialog& dialog) { QTest::keyClick(&dialog, Qt::Key_Escape); });
    QCOMPARE(choose(), std::nullopt);
  }

  void menuRunsTheChosenEntryAndThenCloses_data() {
    QTest::addColumn<QList<QKeyCombination>>("keys");
    QTest::addColumn<QByteArrayList>("events");
    const auto row = [](const char* sentence, const QList<QKeyCombination>& keys, const QByteArrayList& events) {
      QTest::newRow(sentence) << keys << events;
    };
    row("a separator is stepped over", {Qt::Key_Down, Qt::Key_Down, Qt::Key_Return}, {"second", "closed"});
    row("an entry of a submenu", {Qt::Key_Up, Qt::Key_Right, Qt::Key_Return}, {"inner", "closed"});
    row("Esc only closes", {Qt::Key_Down, Qt::Key_Escape}, {"closed"});
    row("a shortcut is shown, and heard by nobody", {Qt::CTRL | Qt::Key_Q, Qt::Key_Escape}, {"closed"});
  }

  void menuRunsTheChosenEntryAndThenCloses() {
    QFETCH(QList<QKeyCombination>, keys);
    MenuEntry first = entry("Tom & Jerry\tfoo");
    first.mark = MenuEntry::Mark::check;
    MenuEntry second = entry("second");
    second.shortcut = QStringLiteral("Ctrl+Q");
    open({first, {}, second, {.title = QStringLiteral("More"), .submenu = {entry("inner")}}}, "closed");
    QVERIFY(openMenu());
    QCOMPARE(openMenu()->windowHandle()->transientParent(), &m_window);
    const QList<QAction*> actions = openMenu()->actions();
    QCOMPARE(actions[0]->text(), QStringLiteral("Tom && Jerry foo"));
    QVERIFY(actions[0]->isChecked());
    QCOMPARE(actions[2]->text(), QStringLiteral("second\tCtrl+Q"));
    QVERIFY(!actions[2]->isCheckable());
    for (const QKeyCombination key : keys) QTest::keyClick(openMenu(), key.key(), key.keyboardModifiers());
    QTRY_VERIFY(m_happened.contains("closed"));
    QTEST(m_happened, "events");
    QVERIFY(!openMenu());
  }

  void oneMenuIsOpenAtATime() {
    MenuEntry second = entry("second");
    second.action = [this] { open({entry("third")}, "third closed"); };
    open({entry("first")}, "first closed");
    open({second}, "second closed");
    QCOMPARE(m_happened, QByteArrayList{"first closed"});
    QCoreApplication::processEvents();
    QVERIFY(openMenu());
    QTest::keyClick(openMenu(), Qt::Key_Down);
    QTest::keyClick(openMenu(), Qt::Key_Return);
    QTRY_COMPARE(m_happened, (QByteArrayList{"first closed", "second closed"}));
    QVERIFY(openMenu());
    QCOMPARE(openMenu()->actions().first()->text(), QStringLiteral("third"));
    QTest::keyClick(openMenu(), Qt::Key_Escape);
    QTRY_COMPARE(m_happened, (QByteArrayList{"first closed", "second closed", "third closed"}));
  }
};

QTEST_MAIN(DialogsTest)
#include "DialogsTest.moc"
