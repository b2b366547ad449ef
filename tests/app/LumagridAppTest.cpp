#include "LumagridApp.h"

#include <QTest>

#include "FakePlatform.h"
#include "PhotoFolder.h"
#include "QmlPlugins.h"

using namespace lumagrid;

class LumagridAppTest : public QObject {
  Q_OBJECT

 private Q_SLOTS:
  void windowsShareTheRecentFoldersAlone();
  void theMenuFollowsTheRecentFolders();
  void aWindowHasALeastSize();

 private:
  Appearance m_appearance{ColorScheme::light};
  FakePlatform m_platform;
};

void LumagridAppTest::windowsShareTheRecentFoldersAlone() {
  const PhotoFolder a({QStringLiteral("a.jpg")});
  const PhotoFolder b({QStringLiteral("b.jpg")});
  const PhotoFolder c({QStringLiteral("c.jpg")});
  LumagridApp app({m_platform.services(), m_platform.preferences, m_platform.popupMenu, m_appearance});
  QQuickWindow* first = app.makeWindow();
  QQuickWindow* second = app.makeWindow();
  QVERIFY(first && second && first != second);
  for (QQuickWindow* window : {first, second}) {
    window->show();
    QVERIFY(QTest::qWaitForWindowExposed(window));
  }
  QCOMPARE(app.contentView(nullptr), nullptr);
  ContentView& left = *app.contentView(first);
  ContentView& right = *app.contentView(second);

  left.library()->openFolder(a.url());
  right.library()->openFolder(b.url());
  right.handleTileClick(0, Qt::NoModifier);
  QTRY_COMPARE(app.recentFolders().urls(), (std::vector<FileUrl>{b.url(), a.url()}));
  QCOMPARE(left.library()->folderURL(), a.url());
  QVERIFY(left.showsGrid());

  // A choice from the menu is heard by all.
  app.recentFolders().add(c.url());
  app.menus().fileMenu().front().submenu.front().action();
  for (ContentView* view : {&left, &right}) {
    QCOMPARE(view->library()->folderURL(), c.url());
    QVERIFY(view->showsGrid());
  }
  QTRY_COMPARE(app.thumbnailQueue().pendingCount(), 0);
}

void LumagridAppTest::theMenuFollowsTheRecentFolders() {
  m_platform.preferences.values = {};
  LumagridApp app({m_platform.services(), m_platform.preferences, m_platform.popupMenu, m_appearance});
  const PhotoFolder folder;
  QVERIFY(!app.menus().fileMenuHasEntries());
  ContentView& view = *app.contentView(app.makeWindow());
  view.library()->openFolder(folder.url());
  QTRY_VERIFY(app.menus().fileMenuHasEntries());
  QCOMPARE(m_platform.preferences.values.first(), QStringList{QFile::decodeName(folder.url().path())});
}

void LumagridAppTest::aWindowHasALeastSize() {
  LumagridApp app({m_platform.services(), m_platform.preferences, m_platform.popupMenu, m_appearance});
  const QQuickWindow* window = app.makeWindow();
  QVERIFY(window);
  QCOMPARE(window->minimumWidth(), 1100);
  QVERIFY(window->minimumHeight() >= 760);  // and the menu bar
  QVERIFY(!window->isVisible());
}

QTEST_MAIN(LumagridAppTest)
#include "LumagridAppTest.moc"
