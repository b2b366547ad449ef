#include <QWindow>
#include <algorithm>
#include <cmath>

#include "Alert.h"
#include "ContentView.h"
#include "OpenDialogs.h"
#include "PopupMenu.h"

namespace lumagrid {

void ContentView::setGridDimension(qint64 wanted) {
  m_gridDimension = std::clamp<std::int64_t>(wanted, kLowestGridDimension, kHighestGridDimension);
  Q_EMIT gridDimensionChanged();
  setGridScrollTarget(currentPhotoPath());
}

void ContentView::handleGridMagnification(double magnification) {
  constexpr double kStepUp = 1.08;
  constexpr double kStepDown = 0.92;
  const double ratio = magnification / m_lastMagnification;
  if (ratio > kStepUp) {
    setGridDimension(m_gridDimension - 1);
  } else if (ratio < kStepDown) {
    setGridDimension(m_gridDimension + 1);
  } else {
    return;
  }
  m_lastMagnification = magnification;
}

void ContentView::endGridMagnification() {
  m_lastMagnification = 1.0;
}

int ContentView::presetColumns(int preset) {
  return static_cast<int>(std::sqrt(preset));
}

void ContentView::handleTileClick(std::int64_t index, Qt::KeyboardModifiers modifiers) {
  if (modifiers.testFlag(Qt::ControlModifier)) {
    m_library.toggleSelection(index);
  } else if (modifiers.testFlag(Qt::ShiftModifier)) {
    m_library.extendSelection(index);
  } else {
    m_library.clearSelection();
    m_library.openPhoto(index);
    m_shown.dismissNewStatus();  // the info bar shows it
    setBrowserMode(BrowserMode::detail);
  }
}

void ContentView::openSortMenu(QWindow* window, QPointF position) {
  std::vector<MenuEntry> entries;
  for (const SortOrder order : kAllSortOrders) {
    MenuEntry entry;
    entry.title = menuTitle(order);
    entry.mark = order == m_library.sortOrder() ? MenuEntry::Mark::check : MenuEntry::Mark::none;
    entry.action = [this, order] {
      m_shared.dialogs.afterwards(this, [this, order] { m_library.setSortOrder(order); });
    };
    entries.push_back(std::move(entry));
  }
  m_shared.popupMenu.open(window, position.toPoint(), std::move(entries));
}

void ContentView::deleteSelectedWithConfirmation() {
  const auto files = m_library.selectedFiles();
  const qint64 count = m_shown.selectedCount();
  const QString number = QString::number(count);
  const QString plural = count == 1 ? QString() : QStringLiteral("s");
  m_shared.dialogs.run([&] {
    const AlertRole pressed = m_shared.alert.runModal({
        QStringLiteral("Move %1 photo%2 to Trash?").arg(number, plural),
        QStringLiteral("%1 selected photo%2 will be moved to the Trash.").arg(number, plural),
        {{QStringLiteral("Move to Trash"), AlertRole::accept}, {QStringLiteral("Cancel"), AlertRole::cancel}},
    });
    if (pressed == AlertRole::accept) m_library.deleteSelectedPhotos(files);
  });
}

}  // namespace lumagrid
