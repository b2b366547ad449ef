#include "QtAlert.h"

#include <QAbstractButton>
#include <QLabel>
#include <QMessageBox>
#include <QPushButton>

#include "DialogWindow.h"
#include "WidgetPalette.h"

namespace lumagrid {

namespace {

constexpr QLatin1String kCancelTitle("Cancel");

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

int QtAlert::runModal(const AlertRequest& request) {
  m_palette.apply();
  QMessageBox box;
  box.setIcon(request.style == AlertRequest::Style::warning ? QMessageBox::Warning : QMessageBox::Information);
  box.setText(withItsDirection(request.messageText));
  box.setInformativeText(withItsDirection(request.informativeText));
  // The box's own text format does not reach the informative text.
  for (QLabel* label : box.findChildren<QLabel*>()) label->setTextFormat(Qt::PlainText);

  QList<QAbstractButton*> buttons;
  for (const QString& title : request.buttons) {
    const bool cancels = title == kCancelTitle;
    const auto role = cancels             ? QMessageBox::RejectRole
                      : buttons.isEmpty() ? QMessageBox::AcceptRole
                                          : QMessageBox::ActionRole;
    QPushButton* button = box.addButton(withoutMnemonics(title), role);
    if (buttons.isEmpty()) box.setDefaultButton(button);
    if (cancels) box.setEscapeButton(button);
    buttons.append(button);
  }

  setTransientParent(box, activeWindow());
  box.setWindowModality(Qt::ApplicationModal);
  box.exec();
  return int(box.clickedButton() ? buttons.indexOf(box.clickedButton()) : request.buttons.indexOf(kCancelTitle));
}

}  // namespace lumagrid
