#pragma once

#include <QByteArray>
#include <QString>
#include <optional>
#include <vector>

#include "Appearance.h"
#include "FileUrl.h"

namespace lumagrid {

// What a start asks for.
struct CommandLine {
  enum class Action { open, showHelp, showVersion, refuse };

  Action action = Action::open;
  // A folder or picture, several pictures of one folder in the order in which they are named, or nothing.
  std::vector<FileUrl> files;
  std::optional<ColorScheme> appearance;
  QString refusal;  // for people, when refused

  // `arguments` are all but the program's name, those for the toolkit included. Any thread, before there is a toolkit.
  [[nodiscard]] static CommandLine parse(const QList<QByteArray>& arguments);
  [[nodiscard]] static QString helpText();
};

}  // namespace lumagrid
