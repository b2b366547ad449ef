#include "AppMenus.h"

#include <QCoreApplication>

#include "Alert.h"
#include "NotificationCenter.h"
#include "OpenDialogs.h"
#include "RecentFolders.h"

namespace lumagrid {

AppMenus::AppMenus(RecentFolders& recentFolders, NotificationCenter& notificationCenter, PopupMenu& popupMenu,
                   Alert& alert, OpenDialogs& dialogs, std::function<QString()> knownLimits, QObject* parent)
    : QObject(parent),
      m_recentFolders(recentFolders),
      m_notificationCenter(notificationCenter),
      m_popupMenu(popupMenu),
      m_alert(alert),
      m_dialogs(dialogs),
      m_knownLimits(std::move(knownLimits)) {
  connect(&m_recentFolders, &RecentFolders::urlsChanged, this, &AppMenus::fileMenuChanged);
}

bool AppMenus::fileMenuHasEntries() const {
  return !m_recentFolders.urls().empty();
}

std::vector<MenuEntry> AppMenus::fileMenu() {
  if (!fileMenuHasEntries()) return {};
  MenuEntry openRecent;
  openRecent.title = tr("Open Recent");
  for (const FileUrl& url : m_recentFolders.urls()) {
    MenuEntry folder;
    folder.title = url.nameInSentence();
    folder.action = [this, url] { m_notificationCenter.post(openRecentFolder, url); };
    openRecent.submenu.push_back(std::move(folder));
  }
  openRecent.submenu.emplace_back();
  MenuEntry clear;
  clear.title = tr("Clear Recents");
  clear.action = [this] { m_recentFolders.clear(); };
  openRecent.submenu.push_back(std::move(clear));
  return {std::move(openRecent)};
}

std::vector<MenuEntry> AppMenus::applicationMenu() {
  MenuEntry about;
  about.title = tr("About Lumagrid");
  about.action = [this] {
    m_dialogs.run([this] {
      QString text = tr("A photo browser: a folder of pictures as a grid.");
      if (const QString limits = m_knownLimits ? m_knownLimits() : QString(); !limits.isEmpty()) {
        text += QStringLiteral("\n\n") + limits;
      }
      (void)m_alert.runModal({QStringLiteral("Lumagrid %1").arg(QCoreApplication::applicationVersion()),
                              text,
                              {{tr("Close"), AlertRole::accept}},
                              AlertRequest::Style::information});
    });
  };
  MenuEntry quit;
  quit.title = tr("Quit");
  quit.shortcut = QStringLiteral("Ctrl+Q");
  quit.action = [this] { this->quit(); };
  return {std::move(about), {}, std::move(quit)};
}

void AppMenus::openFileMenu(QWindow* window, QPointF position) {
  m_popupMenu.open(window, position.toPoint(), fileMenu());
}

void AppMenus::openApplicationMenu(QWindow* window, QPointF position) {
  m_popupMenu.open(window, position.toPoint(), applicationMenu());
}

void AppMenus::quit() {
  if (!m_dialogs.any()) QCoreApplication::quit();
}

}  // namespace lumagrid
