#pragma once

#include <QList>
#include <QString>

namespace lumagrid {

enum class AlertRole {
  accept,  // does what the alert is about; has the Return key
  cancel,  // leaves everything as it is; has the Esc key, and closing the alert presses it
};

struct AlertButton {
  QString title;
  AlertRole role = AlertRole::accept;
};

// A modal alert: plain texts and buttons in order, at most one of each role.
struct AlertRequest {
  enum class Style { warning, information };

  QString messageText;
  QString informativeText;
  QList<AlertButton> buttons;
  Style style = Style::warning;
};

// Main thread; runs a nested event loop until it is answered.
class Alert {
 public:
  virtual ~Alert() = default;

  // The role of the pressed button; cancel when the alert goes unanswered.
  [[nodiscard]] virtual AlertRole runModal(const AlertRequest& request) = 0;
};

}  // namespace lumagrid
