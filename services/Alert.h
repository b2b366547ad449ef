#pragma once

#include <QString>
#include <QStringList>

namespace lumagrid {

// A modal alert: plain texts and buttons in order. The first button has the Return key; a button titled "Cancel" has
// the Esc key, and closing the alert presses it.
struct AlertRequest {
  enum class Style { warning, information };

  QString messageText;
  QString informativeText;
  QStringList buttons;
  Style style = Style::warning;
};

// Main thread; runs a nested event loop until it is answered.
class Alert {
 public:
  virtual ~Alert() = default;

  // The index of the pressed button.
  [[nodiscard]] virtual int runModal(const AlertRequest& request) = 0;
};

}  // namespace lumagrid
