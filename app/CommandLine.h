#pragma once

#include <QByteArray>
#include <QString>
#include <optional>

#include "Appearance.h"

namespace lumagrid {

// What a start asks for.
struct CommandLine {
  enum class Action { open, showHelp, showVersion, refuse };

  Action action = Action::open;
  QByteArray path;  // as given, byte for byte; empty: none
  std::optional<ColorScheme> appearance;
  QString refusal;  // for people, when refused

  // `arguments` are the program's own, after the toolkit has taken its options, without the program's name.
  [[nodiscard]] static CommandLine parse(const QList<QByteArray>& arguments);
  [[nodiscard]] static QString helpText();
};

}  // namespace lumagrid
