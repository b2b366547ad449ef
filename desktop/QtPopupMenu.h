#pragma once

#include <memory>

#include "PopupMenu.h"

class QMenu;

namespace lumagrid {

class WidgetPalette;

// The popup menu as a menu of widgets. The chosen action runs once the menu has gone, from the event loop, so it may
// open a dialog or another menu.
class QtPopupMenu final : public PopupMenu {
 public:
  // `palette` outlives the menu.
  explicit QtPopupMenu(WidgetPalette& palette);
  ~QtPopupMenu() override;

  void open(QWindow* window, QPoint position, std::vector<MenuEntry> entries) override;

 private:
  void add(QMenu& menu, std::vector<MenuEntry> entries);
  void runChosenAction();

  WidgetPalette& m_palette;
  std::unique_ptr<QMenu> m_menu;  // the one that is open
  std::function<void()> m_chosen;
};

}  // namespace lumagrid
