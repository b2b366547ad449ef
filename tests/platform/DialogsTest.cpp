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

// Calls `answer` from the event loop of the modal dialog that opens next.
template <typename Dialog>
void whenOpen(std::function<void(Dialog&)> answer) {
  QTimer::singleShot(0, [answer = std::move(answer)] {
    auto* dialog = qobject_cast<Dialog*>(QApplication::activeModalWidget());
    if (!dialog) qFatal("No dialog has opened");
    answer(*dialog);
  });
}

QMenu* openMenu() {
  return qobject_cast<QMenu*>(QApplication::activePopupWidget());
}

}  // namespace

class DialogsTest : public QObject {
  Q_OBJECT

 private:
  MenuEntry entry(const char* title) {
    return {.title = QString::fromLatin1(title), .action = [this, title] { m_ran = openMenu() ? "too early" : title; }};
  }
  void open(std::vector<MenuEntry> entries) { m_menu.open(&m_window, QPoint(10, 10), std::move(entries)); }

  Appearance m_appearance{ColorScheme::light};
  WidgetPalette m_palette{m_appearance};
  QWindow m_window;
  QtPopupMenu m_menu{m_palette};
  QByteArray m_ran;  // the menu entry

 private Q_SLOTS:
  void initTestCase() {
    m_window.show();
    m_window.requestActivate();
    QVERIFY(QTest::qWaitForWindowActive(&m_window));
  }

  void alertAnswers_data() {
    QTest::addColumn<QString>("second");
    QTest::addColumn<int>("key");
    QTest::addColumn<int>("index");
    const QString cancel = QStringLiteral("Cancel");
    QTest::newRow("Return presses the first button") << cancel << int(Qt::Key_Return) << 0;
    QTest::newRow("Esc presses Cancel") << cancel << int(Qt::Key_Escape) << 1;
    QTest::newRow("quitting is no confirmation") << cancel << 0 << 1;
    QTest::newRow("an ampersand in a title is shown") << QStringLiteral("A && B") << int(Qt::Key_Space) << 1;
  }

  void alertAnswers() {
    QFETCH(QString, second);
    QFETCH(int, key);
    const QString message = QStringLiteral("<b>x</b> & y &amp;");
    const QString informative = QStringLiteral("\"<img src=x>&lt;\n<i>.jpg\" will be moved.");
    QMap<QString, Qt::TextFormat> shown;
    bool isAboveTheWindow = false;
    whenOpen<QMessageBox>([&](QMessageBox& box) {
      isAboveTheWindow = box.windowHandle()->transientParent() == &m_window && box.isModal();
      for (const QLabel* label : box.findChildren<QLabel*>()) {
        if (label->isVisible() && !label->text().isEmpty()) shown[label->text()] = label->textFormat();
      }
      if (key == Qt::Key_Space) {
        for (auto* button : box.findChildren<QPushButton*>()) {
          if (button->text() == QStringLiteral("A &&&& B")) QTest::keyClick(button, Qt::Key_Space);
        }
      } else if (key != 0) {
        QTest::keyClick(&box, Qt::Key(key));
      }
      box.done(-5);
    });
    QTEST(QtAlert(m_palette).runModal({message, informative, {QStringLiteral("Move to Trash"), second}}), "index");
    QVERIFY(isAboveTheWindow);
    QCOMPARE(shown, (QMap<QString, Qt::TextFormat>{{message, Qt::PlainText}, {informative, Qt::PlainText}}));
  }

  void chooserReturnsAnExistingFolder() {
    const QByteArray folder = kHome.path() + "/Photos & <b>more";
    QCOMPARE(::mkdir(folder.constData(), 0755), 0);
    bool isFit = false;
    whenOpen<QFileDialog>([&](QFileDialog& dialog) {
      const auto* newFolder = dialog.findChild<QToolButton*>(QStringLiteral("newFolderButton"));
      isFit = dialog.fileMode() == QFileDialog::Directory && dialog.windowTitle() == QStringLiteral("Title") &&
              dialog.labelText(QFileDialog::Accept) == QStringLiteral("Choose") &&
              dialog.windowHandle()->transientParent() == &m_window && newFolder && !newFolder->isEnabled();
      dialog.setDirectory(QFile::decodeName(folder));
      QMetaObject::invokeMethod(&dialog, "accept");
    });
    const auto choose = [this] {
      return QtFolderChooser(m_palette).chooseFolder(QStringLiteral("Title"), QStringLiteral("Choose"));
    };
    QCOMPARE(choose(), FileUrl::fromPath(folder));
    QVERIFY(isFit);
    whenOpen<QFileDialog>([](QFileDialog& dialog) { dialog.reject(); });
    QCOMPARE(choose(), std::nullopt);
  }

  void menuRunsTheChosenEntryOnceItHasGone_data() {
    QTest::addColumn<QList<QKeyCombination>>("keys");
    QTest::addColumn<QByteArray>("ran");
    const auto row = [](const char* sentence, const QList<QKeyCombination>& keys, const char* ran) {
      QTest::newRow(sentence) << keys << QByteArray(ran);
    };
    row("a separator is stepped over", {Qt::Key_Down, Qt::Key_Down, Qt::Key_Return}, "second");
    row("an entry of a submenu", {Qt::Key_Up, Qt::Key_Right, Qt::Key_Return}, "inner");
    row("a shortcut is heard by nobody, and Esc only closes", {Qt::CTRL | Qt::Key_Q, Qt::Key_Escape}, "");
  }

  void menuRunsTheChosenEntryOnceItHasGone() {
    QFETCH(QList<QKeyCombination>, keys);
    MenuEntry first = entry("Tom & Jerry\tfoo");
    first.mark = MenuEntry::Mark::check;
    MenuEntry second = entry("second");
    second.shortcut = QStringLiteral("Ctrl+Q");
    m_ran.clear();
    open({first, {}, second, {.title = QStringLiteral("More"), .submenu = {entry("inner")}}});
    QCOMPARE(openMenu()->windowHandle()->transientParent(), &m_window);
    const QList<QAction*> actions = openMenu()->actions();
    QCOMPARE(actions[0]->text(), QStringLiteral("Tom && Jerry foo"));
    QCOMPARE(actions[2]->text(), QStringLiteral("second\tCtrl+Q"));
    QVERIFY(actions[0]->isChecked() && !actions[2]->isCheckable());
    for (const QKeyCombination key : keys) QTest::keyClick(openMenu(), key.key(), key.keyboardModifiers());
    QTRY_VERIFY(!openMenu());
    QCoreApplication::processEvents();
    QTEST(m_ran, "ran");
  }

  void oneMenuIsOpenAtATime() {
    open({entry("first")});
    MenuEntry second = entry("second");
    second.action = [this] { open({entry("third")}); };
    open({second});
    QCoreApplication::processEvents();  // the first one's end
    QVERIFY(openMenu());
    QTest::keyClick(openMenu(), Qt::Key_Down);
    QTest::keyClick(openMenu(), Qt::Key_Return);
    QTRY_VERIFY(openMenu());
    QCOMPARE(openMenu()->actions().first()->text(), QStringLiteral("third"));
    openMenu()->close();
  }
};

QTEST_MAIN(DialogsTest)
#include "DialogsTest.moc"
