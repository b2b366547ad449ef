#include "QtAlert.h"

#include <QLabel>
#include <QMessageBox>
#include <QPushButton>

#include "DialogWindow.h"
#include "WidgetPalette.h"

namespace lumagrid {

namespace {

QString withoutMnemonics(QString title) {
  return title.replace(QLatin1Char('&'), QLatin1String("&&"));
}

// A text that can be selected takes its direction from its first letter, be that a name's that is set apart from it.
QString withItsDirection(const QString& text) {
  constexpr QChar kLeftToRightMark = u'\u200E';
  constexpr QChar kRightToLeftMark = u'\u200F';
  if (!text.contains(u'\u2068')) return text;
  return (text.isRightToLeft() ? kRightToLeftMark : kLeftToRightMark) + text;
}

}  // namespace

AlertRole QtAlert::runModal(const AlertRequest& request) {
  m_palette.apply();
  QMessageBox box;
  box.setIcon(request.style == AlertRequest::Style::warning ? QMessageBox::Warning : QMessageBox::Information);
  box.setText(withItsDirection(request.messageText));
  box.setInformativeText(withItsDirection(request.informativeText));
  // The box's own text format does not reach the informative text.
  for (QLabel* label : box.findChildren<QLabel*>()) label->setTextFormat(Qt::PlainText);

  const QPushButton* accepting = nullptr;
  for (const AlertButton& asked : request.buttons) {
    const bool accepts = asked.role == AlertRole::accept;
    QPushButton* button =
        box.addButton(withoutMnemonics(asked.title), accepts ? QMessageBox::AcceptRole : QMessageBox::RejectRole);
    if (accepts) {
      box.setDefaultButton(button);
      accepting = button;
    } else {
      box.setEscapeButton(button);
    }
  }

  setTransientParent(box, activeWindow());
  box.setWindowModality(Qt::ApplicationModal);
  box.exec();
  return accepting && box.clickedButton() == accepting ? AlertRole::accept : AlertRole::cancel;
}

}  // namespace lumagrid
