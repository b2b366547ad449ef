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
  void initTestCase() { m_window.show(); }

  void alertAnswers() {
    const auto ask = [this](const std::function<void(QMessageBox&)>& answer) {
      whenOpen(answer);
      return QtAlert(m_palette).runModal({QStringLiteral("<b>x</b> &amp;"),
                                          QStringLiteral("\"<img src=x>\n<i>.jpg\" will be moved."),
                                          {QStringLiteral("Move && Go"), QStringLiteral("Cancel")}});
    };
    QCOMPARE(ask([](QMessageBox& box) { QTest::keyClick(&box, Qt::Key_Return); }), 0);
    QCOMPARE(ask([](QMessageBox& box) { QTest::keyClick(&box, Qt::Key_Escape); }), 1);
    QStringList shown;
    const auto read = [this, &shown](QMessageBox& box) {
      shown.append(box.defaultButton()->text());
      for (const QLabel* label : box.findChildren<QLabel*>()) {
        if (label->isVisible() && label->textFormat() == Qt::PlainText) shown.append(label->text());
      }
      if (box.windowHandle()->transientParent() != &m_window || !box.isModal()) shown.append(QStringLiteral("astray"));
      box.done(-5);
    };
    QCOMPARE(ask(read), 1);  // it went unanswered
    shown.removeAll(QString());
    shown.sort();
    QCOMPARE(shown, (QStringList{QStringLiteral("\"<img src=x>\n<i>.jpg\" will be moved."),
                                 QStringLiteral("<b>x</b> &amp;"), QStringLiteral("Move &&&& Go")}));
  }

  void chooserReturnsAnExistingFolder() {
    const QString folder = QFile::decodeName(kHome.path() + "/Photos & <b>more");
    QVERIFY(QDir().mkpath(folder));
    bool isFit = false;
    whenOpen<QFileDialog>([&](QFileDialog& dialog) {
      const auto* newFolder = dialog.findChild<QToolButton*>(QStringLiteral("newFolderButton"));
      isFit = dialog.fileMode() == QFileDialog::Directory && dialog.windowTitle() == QStringLiteral("Title") &&
              dialog.labelText(QFileDialog::Accept) == QStringLiteral("Choose") &&
              dialog.windowHandle()->transientParent() == &m_window && newFolder && !newFolder->isEnabled();
      dialog.setDirectory(folder);
      QMetaObject::invokeMethod(&dialog, "accept");
    });
    QtFolderChooser chooser(m_palette);
    QCOMPARE(chooser.chooseFolder(QStringLiteral("Title"), QStringLiteral("Choose")), FileUrl::fromPath(folder));
    QVERIFY(isFit);
    whenOpen<QFileDialog>([](QFileDialog& dialog) { dialog.reject(); });
    QCOMPARE(chooser.chooseFolder(QString(), QString()), std::nullopt);
  }

  void menuRunsTheChosenEntryOnceItHasGone() {
    MenuEntry first = entry("Tom & Jerry\tfoo");
    first.mark = MenuEntry::Mark::check;
    MenuEntry second = entry("second");
    second.shortcut = QStringLiteral("Ctrl+Q");
    const std::vector<MenuEntry> entries = {
        first, {}, second, {.title = QStringLiteral("More"), .submenu = {entry("inner")}}};
    const auto choose = [&](const QList<QKeyCombination>& keys) {
      m_ran.clear();
      open(entries);
      for (const QKeyCombination key : keys) QTest::keyClick(openMenu(), key.key(), key.keyboardModifiers());
      QCoreApplication::processEvents();
      return m_ran;
    };
    QCOMPARE(choose({Qt::Key_Down, Qt::Key_Down, Qt::Key_Return}), QByteArray("second"));  // over the separator
    QCOMPARE(choose({Qt::Key_Up, Qt::Key_Right, Qt::Key_Return}), QByteArray("inner"));
    QCOMPARE(choose({Qt::CTRL | Qt::Key_Q, Qt::Key_Escape}), QByteArray());
    QVERIFY(!openMenu());
    open(entries);
    QCOMPARE(openMenu()->windowHandle()->transientParent(), &m_window);
    const QList<QAction*> actions = openMenu()->actions();
    QCOMPARE(actions[0]->text(), QStringLiteral("Tom && Jerry foo"));
    QCOMPARE(actions[2]->text(), QStringLiteral("second\tCtrl+Q"));
    QVERIFY(actions[0]->isChecked() && !actions[2]->isCheckable());
  }

  void oneMenuIsOpenAtATime() {
    MenuEntry second = entry("second");
    second.action = [this] { open({entry("third")}); };
    open({second});  // the one that was open goes
    QCoreApplication::processEvents();
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
