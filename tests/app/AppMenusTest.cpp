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
  void listsTheRecentFolders();
  void foldersOfTheSameNamePostTheirOwn();
  void clearsTheRecentFolders();
  void opensAtThePosition();

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

void AppMenusTest::listsTheRecentFolders() {
  QSignalSpy changes(&m_menus, &AppMenus::fileMenuChanged);
  QVERIFY(!m_menus.fileMenuHasEntries());
  QVERIFY(m_menus.fileMenu().empty());
  m_recents.add(m_folder.url(QStringLiteral("a & b")));
  m_recents.add(m_folder.url(QStringLiteral("c")));
  QCOMPARE(changes.count(), 2);
  QVERIFY(m_menus.fileMenuHasEntries());
  const std::vector<MenuEntry> menu = m_menus.fileMenu();
  QCOMPARE(titles(menu), QStringList{QStringLiteral("Open Recent")});
  QCOMPARE(titles(menu.front().submenu),
           (QStringList{QStringLiteral("c"), QStringLiteral("a & b"), QString(), QStringLiteral("Clear Recents")}));
  for (const MenuEntry& entry : menu.front().submenu) QVERIFY(entry.shortcut.isEmpty());
}

// … whether the folder is still there or not, and without a change of the list.
void AppMenusTest::foldersOfTheSameNamePostTheirOwn() {
  m_recents.clear();
  const QList<FileUrl> folders{m_folder.addFolder(QStringLiteral("x/holiday")),
                               m_folder.url(QStringLiteral("y/holiday"))};
  for (const FileUrl& folder : folders) m_recents.add(folder);
  QList<FileUrl> posted;
  connect(&m_center, &NotificationCenter::posted, this, [&](const QString& name, const std::optional<FileUrl>& object) {
    if (name == QStringLiteral("openRecentFolder")) posted.append(object.value_or(FileUrl()));
  });
  const std::vector<MenuEntry> entries = m_menus.fileMenu().front().submenu;
  QCOMPARE(titles(entries).mid(0, 2), (QStringList{QStringLiteral("holiday"), QStringLiteral("holiday")}));
  entries[0].action();
  entries[1].action();
  QCOMPARE(posted, (QList<FileUrl>{folders[1], folders[0]}));
  QCOMPARE(m_recents.urls().front(), folders[1]);
}

void AppMenusTest::clearsTheRecentFolders() {
  m_recents.add(m_folder.url());
  QSignalSpy changes(&m_menus, &AppMenus::fileMenuChanged);
  m_menus.fileMenu().front().submenu.back().action();
  QCOMPARE(changes.count(), 1);
  QVERIFY(!m_menus.fileMenuHasEntries());
  QVERIFY(m_platform.preferences.values.isEmpty());
}

void AppMenusTest::opensAtThePosition() {
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
