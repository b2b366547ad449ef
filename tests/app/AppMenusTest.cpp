#include "AppMenus.h"

#include <QTest>

#include "FakePlatform.h"
#include "NotificationCenter.h"
#include "PhotoFolder.h"
#include "RecentFolders.h"

using namespace lumagrid;

class AppMenusTest : public QObject {
  Q_OBJECT

 private Q_SLOTS:
  // … whether a folder is still there or not; of two with the same name, each posts its own.
  void theMenusActWhereTheyOpen() {
    const PhotoFolder folder;
    FakePlatform platform;
    RecentFolders recents{platform.preferences};
    NotificationCenter center;
    AppMenus menus{recents, center, platform.popupMenu, platform.alert};
    const std::vector<MenuEntry>& entries = platform.popupMenu.entries;
    QVERIFY(!menus.fileMenuHasEntries() && menus.fileMenu().empty());
    const QList<FileUrl> folders{folder.addFolder(QStringLiteral("x/a & b")), folder.url(QStringLiteral("y/a & b"))};
    for (const FileUrl& url : folders) recents.add(url);
    menus.openFileMenu(nullptr, {12, 34});
    QCOMPARE(platform.popupMenu.position, QPoint(12, 34));
    const std::vector<MenuEntry> recent = entries.front().submenu;
    QStringList titles{entries.front().title};
    for (const MenuEntry& entry : recent) titles.append(entry.title);
    QCOMPARE(titles.join(u'|'), QStringLiteral("Open Recent|a & b|a & b||Clear Recents"));

    QList<FileUrl> posted;
    connect(&center, &NotificationCenter::posted, this,
            [&posted](const QString&, const std::optional<FileUrl>& url) { posted.append(url.value_or(FileUrl())); });
    for (const int index : {0, 1}) recent[index].action();
    QCOMPARE(posted, (QList<FileUrl>{folders[1], folders[0]}));
    recent.back().action();
    QVERIFY(!menus.fileMenuHasEntries() && platform.preferences.values.isEmpty());

    menus.openApplicationMenu(nullptr, {5, 6});
    QCOMPARE(platform.popupMenu.position, QPoint(5, 6));
    QCOMPARE(entries.back().title, QStringLiteral("Quit"));
    entries.front().action();
    QCOMPARE(platform.alert.asked.size(), 1);
  }
};

QTEST_GUILESS_MAIN(AppMenusTest)
#include "AppMenusTest.moc"
