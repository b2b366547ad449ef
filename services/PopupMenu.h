#pragma once

#include <QPoint>
#include <QString>
#include <functional>
#include <vector>

class QWindow;

namespace lumagrid {

// One line of a menu. Titles are plain text without control characters: an "&" is shown, and never marks a mnemonic.
struct MenuEntry {
  enum class Mark { none, check };

  QString title = {};  // empty: a separator
  Mark mark = Mark::none;
  QString shortcut = {};  // shown beside the title, in portable form ("Ctrl+Q"); the menu does not listen for it
  std::function<void()> action = {};
  std::vector<MenuEntry> submenu = {};
};

// The desktop's popup menu. Main thread.
class PopupMenu {
 public:
  virtual ~PopupMenu() = default;

  // Opens the menu with its top left at `position` (screen points), above `window`, and returns at once. A menu that is
  // still open is closed first.
  virtual void open(QWindow* window, QPoint position, std::vector<MenuEntry> entries) = 0;
};

}  // namespace lumagrid
