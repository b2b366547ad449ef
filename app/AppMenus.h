#pragma once

#include <QtQml/qqmlregistration.h>
#include <QObject>
#include <QPointF>
#include <QWindow>
#include <functional>
#include <vector>

#include "PopupMenu.h"

namespace lumagrid {

class Alert;
class NotificationCenter;
class OpenDialogs;
class RecentFolders;

// The menus of the menu bar: the application's own, and "File" with the recent folders. One for all windows; menus are
// made when they open. Main thread.
class AppMenus : public QObject {
  Q_OBJECT
  QML_ELEMENT
  QML_UNCREATABLE("made by the application")
  Q_PROPERTY(bool fileMenuHasEntries READ fileMenuHasEntries NOTIFY fileMenuChanged)

 public:
  // All outlive this. `knownLimits` gives a sentence for About, or nothing.
  AppMenus(RecentFolders& recentFolders, NotificationCenter& notificationCenter, PopupMenu& popupMenu, Alert& alert,
           OpenDialogs& dialogs, std::function<QString()> knownLimits, QObject* parent = nullptr);

  [[nodiscard]] bool fileMenuHasEntries() const;
  [[nodiscard]] std::vector<MenuEntry> fileMenu();
  [[nodiscard]] std::vector<MenuEntry> applicationMenu();

  // The menu's top left is `position`, in screen points.
  Q_INVOKABLE void openFileMenu(QWindow* window, QPointF position);
  Q_INVOKABLE void openApplicationMenu(QWindow* window, QPointF position);
  // Ends the application; not while a dialog waits for its answer.
  Q_INVOKABLE void quit();

 Q_SIGNALS:
  void fileMenuChanged();

 private:
  RecentFolders& m_recentFolders;
  NotificationCenter& m_notificationCenter;
  PopupMenu& m_popupMenu;
  Alert& m_alert;
  OpenDialogs& m_dialogs;
  const std::function<QString()> m_knownLimits;
};

}  // namespace lumagrid
