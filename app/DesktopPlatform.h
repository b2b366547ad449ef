#pragma once

#include <memory>

#include "DesktopTrash.h"
#include "LumagridApp.h"
#include "PortalTrash.h"
#include "QtAlert.h"
#include "QtFolderChooser.h"
#include "QtPopupMenu.h"
#include "ScopedAccess.h"
#include "WidgetPalette.h"

namespace lumagrid {

// This desktop's services, for the programs that show the real window. Main thread.
class DesktopPlatform {
 public:
  // All outlive this.
  DesktopPlatform(ImageDecoder& decoder, Preferences& preferences, const Appearance& appearance)
      : m_decoder(decoder), m_preferences(preferences), m_appearance(appearance) {}

  [[nodiscard]] LumagridApp::Platform platform() {
    return {{m_decoder, *m_trash, m_chooser, m_alert, m_access}, m_preferences, m_popupMenu, m_appearance};
  }

 private:
  [[nodiscard]] static std::unique_ptr<Trash> makeTrash() {
    if (PortalTrash::isNeeded()) return std::make_unique<PortalTrash>();
    return std::make_unique<DesktopTrash>();
  }

  ImageDecoder& m_decoder;
  Preferences& m_preferences;
  const Appearance& m_appearance;
  WidgetPalette m_palette{m_appearance};
  const std::unique_ptr<Trash> m_trash = makeTrash();
  QtFolderChooser m_chooser{m_palette};
  QtAlert m_alert{m_palette};
  QtPopupMenu m_popupMenu{m_palette};
  ScopedAccess m_access;
};

}  // namespace lumagrid
