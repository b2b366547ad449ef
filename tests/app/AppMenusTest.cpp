#include "AppMenus.h"

#include <QSignalSpy>
#include <QTest>

#include "FakePlatform.h"
#include "NotificationCenter.h"
#include "PhotoFolder.h"
#include "RecentFolders.h"

using namespace lumagrid;

class AppMenusTest : public QObject {
  Q_OBJECT

 private Q_SLOTS:
  void theFileMenuFollowsTheRecentFolders();
  void menusOpenAtThePosition();

 private:
  [[nodiscard]] static QStringList titles(const std::vector<MenuEntry>& entries) {
    QStringList titles;
    for (const MenuEntry& entry : entries) titles.append(entry.title);
    return titles;
  }

  PhotoFolder m_folder;
  FakePlatform m_platform;
  RecentFolders m_recents{m_platform.preferences};
  NotificationCenter m_center;
  AppMenus m_menus{m_recents, m_center, m_platform.popupMenu, m_platform.alert};
};

// … whether a folder is still there or not; of two with the same name, each posts its own.
void AppMenusTest::theFileMenuFollowsTheRecentFolders() {
  QSignalSpy changes(&m_menus, &AppMenus::fileMenuChanged);
  QVERIFY(!m_menus.fileMenuHasEntries() && m_menus.fileMenu().empty());
  const QList<FileUrl> folders{m_folder.addFolder(QStringLiteral("x/a & b")), m_folder.url(QStringLiteral("y/a & b"))};
  for (const FileUrl& folder : folders) m_recents.add(folder);
  QCOMPARE(changes.count(), 2);
  QVERIFY(m_menus.fileMenuHasEntries());
  const std::vector<MenuEntry> menu = m_menus.fileMenu();
  QCOMPARE(titles(menu), QStringList{QStringLiteral("Open Recent")});
  const std::vector<MenuEntry>& recent = menu.front().submenu;
  QCOMPARE(titles(recent),
           (QStringList{QStringLiteral("a & b"), QStringLiteral("a & b"), QString(), QStringLiteral("Clear Recents")}));

  QList<FileUrl> posted;
  connect(&m_center, &NotificationCenter::posted, this, [&](const QString& name, const std::optional<FileUrl>& object) {
    if (name == openRecentFolder) posted.append(object.value_or(FileUrl()));
  });
  recent[0].action();
  recent[1].action();
  QCOMPARE(posted, (QList<FileUrl>{folders[1], folders[0]}));
  QCOMPARE(m_recents.urls().front(), folders[1]);
  recent.back().action();
  QCOMPARE(changes.count(), 3);
  QVERIFY(!m_menus.fileMenuHasEntries() && m_platform.preferences.values.isEmpty());
}

void AppMenusTest::menusOpenAtThePosition() {
  m_recents.add(m_folder.url());
  m_menus.openFileMenu(nullptr, {12, 34});
  QCOMPARE(m_platform.popupMenu.position, QPoint(12, 34));
  QCOMPARE(titles(m_platform.popupMenu.entries), QStringList{QStringLiteral("Open Recent")});
  m_menus.openApplicationMenu(nullptr, {5, 6});
  QCOMPARE(m_platform.popupMenu.position, QPoint(5, 6));
  QCOMPARE(titles(m_platform.popupMenu.entries).last(), QStringLiteral("Quit"));
  m_platform.popupMenu.entries.front().action();
  QCOMPARE(m_platform.alert.asked.size(), 1);
}

QTEST_GUILESS_MAIN(AppMenusTest)
#include "AppMenusTest.moc"
