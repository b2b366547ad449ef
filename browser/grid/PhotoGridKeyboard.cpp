#include <QKeyEvent>
#include <algorithm>

#include "PhotoGrid.h"

namespace lumagrid {

void PhotoGrid::keyPressEvent(QKeyEvent* event) {
  const std::int64_t count = m_view->library()->photoCount();
  if (count == 0 || event->modifiers().testAnyFlags(Qt::ControlModifier | Qt::AltModifier | Qt::MetaModifier)) {
    event->ignore();
    return;
  }
  const std::int64_t from = keyboardStartIndex();
  const std::int64_t columns = m_layout.columns;
  const auto rowsPerPage = static_cast<std::int64_t>(std::max(1.0, m_viewport.height() / m_layout.rowPitch()));
  switch (event->key()) {
    case Qt::Key_Left:
      moveKeyboardIndex(from - 1);
      break;
    case Qt::Key_Right:
      moveKeyboardIndex(from + 1);
      break;
    case Qt::Key_Up:
      moveKeyboardIndex(from - columns);
      break;
    case Qt::Key_Down:
      moveKeyboardIndex(from + columns);
      break;
    case Qt::Key_PageUp:
      moveKeyboardIndex(from - columns * rowsPerPage);
      break;
    case Qt::Key_PageDown:
      moveKeyboardIndex(from + columns * rowsPerPage);
      break;
    case Qt::Key_Home:
      moveKeyboardIndex(0);
      break;
    case Qt::Key_End:
      moveKeyboardIndex(count - 1);
      break;
    case Qt::Key_Return:
    case Qt::Key_Enter:
      if (m_showsKeyboardIndex && !event->isAutoRepeat()) m_view->handleTileClick(m_keyboardIndex, Qt::NoModifier);
      break;
    case Qt::Key_Space:
      if (m_showsKeyboardIndex && !event->isAutoRepeat()) m_view->handleTileClick(m_keyboardIndex, Qt::ControlModifier);
      break;
    default:
      event->ignore();
  }
}

void PhotoGrid::focusInEvent(QFocusEvent* event) {
  QQuickItem::focusInEvent(event);
  const bool byKeyboard = event->reason() == Qt::TabFocusReason || event->reason() == Qt::BacktabFocusReason;
  if (byKeyboard) moveKeyboardIndex(keyboardStartIndex());
}

void PhotoGrid::focusOutEvent(QFocusEvent* event) {
  QQuickItem::focusOutEvent(event);
  m_showsKeyboardIndex = false;
  polish();
}

// The tile with the ring. Where none has it, it appears where the attention is: at its last place, or the current
// photo, if that shows, or the first that does.
std::int64_t PhotoGrid::keyboardStartIndex() const {
  const auto [first, last] = m_layout.visibleIndices(m_contentY);
  if (m_showsKeyboardIndex || (m_keyboardIndex >= first && m_keyboardIndex < last)) return m_keyboardIndex;
  const std::int64_t current = m_view->library()->currentIndex();
  return current >= first && current < last ? current : first;
}

void PhotoGrid::moveKeyboardIndex(std::int64_t index) {
  m_showsKeyboardIndex = true;
  m_keyboardIndex = std::clamp<std::int64_t>(index, 0, m_view->library()->photoCount() - 1);
  reveal(m_keyboardIndex);
  polish();
}

void PhotoGrid::reveal(std::int64_t index) {
  const QRectF rect = m_layout.tileRect(index);
  const double margin = m_layout.metrics.padding.top();
  const double lowest = rect.bottom() + margin - m_viewport.height();
  const double highest = rect.top() - margin;
  if (m_contentY > highest) {
    requestScroll(highest, Scrolling::Wheel);
  } else if (m_contentY < lowest) {
    requestScroll(lowest, Scrolling::Wheel);
  }
}

}  // namespace lumagrid
