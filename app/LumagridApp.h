#pragma once

#include <QObject>
#include <QQmlEngine>
#include <QQuickWindow>
#include <functional>
#include <memory>
#include <vector>

#include "AppMenus.h"
#include "Appearance.h"
#include "BackgroundQueue.h"
#include "ContentView.h"
#include "NotificationCenter.h"
#include "OpenDialogs.h"
#include "PhotoLibrary.h"
#include "PopupMenu.h"
#include "Preferences.h"
#include "RecentFolders.h"

namespace lumagrid {

// The application: the recent folders, the menus and the windows, each with a library of its own. Main thread.
class LumagridApp : public QObject {
  Q_OBJECT

 public:
  // What the system gives; each outlives the application.
  struct Platform {
    PhotoLibrary::Services services;
    Preferences& preferences;
    PopupMenu& popupMenu;
    const Appearance& appearance;
    // What this system does not give, in a sentence, or nothing; shown by About.
    std::function<QString()> knownLimits = {};
  };

  explicit LumagridApp(const Platform& platform, QObject* parent = nullptr);
  ~LumagridApp() override;

  // A window, not yet shown; null when its interface cannot be loaded. The application owns it.
  [[nodiscard]] QQuickWindow* makeWindow();
  // Shows what a later start asks for (see ContentView::openPaths(); no files: only a window) once no dialog is open,
  // in a window without a folder, or in a new one.
  void open(const std::vector<FileUrl>& files);
  // The state of a window that makeWindow() returned.
  [[nodiscard]] ContentView* contentView(const QQuickWindow* window) const;

  [[nodiscard]] RecentFolders& recentFolders() { return m_recentFolders; }
  [[nodiscard]] AppMenus& menus() { return m_menus; }
  [[nodiscard]] const BackgroundQueue& thumbnailQueue() const { return m_thumbnailQueue; }

 private:
  struct OpenWindow {
    std::unique_ptr<ContentView> view;
    std::unique_ptr<QQuickWindow> window;  // gone before the state that it shows
  };
  [[nodiscard]] QQuickWindow* unusedWindow() const;
  void forgetIfClosed(const QQuickWindow* window);

  Platform m_platform;
  NotificationCenter m_notificationCenter;
  OpenDialogs m_dialogs;
  RecentFolders m_recentFolders;
  BackgroundQueue m_thumbnailQueue;
  AppMenus m_menus;
  QQmlEngine m_engine;
  std::vector<OpenWindow> m_windows;
};

}  // namespace lumagrid
