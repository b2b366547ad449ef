#pragma once

#include "BackgroundQueue.h"
#include "ContentView.h"
#include "FakePlatform.h"
#include "NotificationCenter.h"
#include "OpenDialogs.h"
#include "RecentFolders.h"

namespace lumagrid {

// The state of windows, over a platform that does as the test says.
struct TestWindow {
  FakePlatform platform;
  RecentFolders recents{platform.preferences};
  NotificationCenter center;
  BackgroundQueue queue;
  OpenDialogs dialogs;
  ContentView view{platform.services(), shared()};
  PhotoLibrary& library = *view.library();

  [[nodiscard]] ContentView::Shared shared() {
    return {recents, center, queue, platform.popupMenu, platform.alert, dialogs};
  }
};

}  // namespace lumagrid
