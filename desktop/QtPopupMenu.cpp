#include "QtPopupMenu.h"

#include <QAction>
#include <QKeySequence>
#include <QMenu>
#include <utility>

#include "DialogWindow.h"
#include "WidgetPalette.h"

namespace lumagrid {

namespace {

QString plainTitle(QString title) {
  return title.replace(QLatin1Char('&'), QLatin1String("&&"));
}

// The shortcut stands in the text, where nothing listens for it.
QString actionText(const MenuEntry& entry) {
  if (entry.shortcut.isEmpty()) return plainTitle(entry.title);
  const QKeySequence keys = QKeySequence::fromString(entry.shortcut, QKeySequence::PortableText);
  return plainTitle(entry.title) + QLatin1Char('\t') + keys.toString(QKeySequence::NativeText);
}

}  // namespace

QtPopupMenu::QtPopupMenu(WidgetPalette& palette) : m_palette(palette) {}
QtPopupMenu::~QtPopupMenu() = default;

void QtPopupMenu::open(QWindow* window, QPoint position, std::vector<MenuEntry> entries) {
  if (m_menu) {
    m_menu->close();
    runChosenAction();
  }
  m_palette.apply();
  m_menu = std::make_unique<QMenu>();
  add(*m_menu, std::move(entries));
  QObject::connect(m_menu.get(), &QMenu::aboutToHide, m_menu.get(), [this, menu = m_menu.get()] {
    // The chosen entry is told after the hiding, within the same event.
    QMetaObject::invokeMethod(
        menu,
        [this, menu] {
          if (menu == m_menu.get()) runChosenAction();
        },
        Qt::QueuedConnection);
  });
  setTransientParent(*m_menu, window);
  m_menu->popup(position);
}

void QtPopupMenu::add(QMenu& menu, std::vector<MenuEntry> entries) {
  for (MenuEntry& entry : entries) {
    if (entry.title.isEmpty()) {
      menu.addSeparator();
    } else if (!entry.submenu.empty()) {
      add(*menu.addMenu(plainTitle(entry.title)), std::move(entry.submenu));
    } else {
      QAction* action = menu.addAction(actionText(entry));
      action->setCheckable(entry.mark == MenuEntry::Mark::check);
      action->setChecked(action->isCheckable());
      action->setEnabled(bool(entry.action));
      QObject::connect(action, &QAction::triggered, action,
                       [this, chosen = std::move(entry.action)] { m_chosen = chosen; });
    }
  }
}

void QtPopupMenu::runChosenAction() {
  // The menu is let go of first: the action may open the next one. It may still be handling an event.
  m_menu.release()->deleteLater();
  const auto chosen = std::exchange(m_chosen, nullptr);
  if (chosen) chosen();
}

}  // namespace lumagrid
