#include "CommandLine.h"

#include "ShownName.h"

namespace lumagrid {

CommandLine CommandLine::parse(const QList<QByteArray>& arguments) {
  CommandLine line;
  bool optionsEnded = false;
  for (const QByteArray& argument : arguments) {
    const bool isOption = !optionsEnded && argument.startsWith('-') && argument != "-";
    if (!isOption) {
      if (!line.path.isEmpty()) {
        line.action = Action::refuse;
        line.refusal = QStringLiteral("one folder or picture at a time");
        return line;
      }
      line.path = argument;
    } else if (argument == "--") {
      optionsEnded = true;
    } else if (argument == "--help" || argument == "-h") {
      line.action = Action::showHelp;
      return line;
    } else if (argument == "--version" || argument == "-v") {
      line.action = Action::showVersion;
      return line;
    } else if (argument == "--appearance=light") {
      line.appearance = ColorScheme::light;
    } else if (argument == "--appearance=dark") {
      line.appearance = ColorScheme::dark;
    } else {
      line.action = Action::refuse;
      line.refusal = QStringLiteral("unknown option \"%1\"").arg(shownNameInSentence(QString::fromUtf8(argument)));
      return line;
    }
  }
  return line;
}

QString CommandLine::helpText() {
  return QStringLiteral(
      "Usage: lumagrid [--appearance=light|dark] [PATH]\n"
      "\n"
      "Shows the pictures of a folder as a grid. PATH is a folder, or a picture to open in its folder.\n"
      "\n"
      "  --appearance=light|dark  overrides the desktop's appearance\n"
      "  -h, --help               shows this text\n"
      "  -v, --version            shows the version\n");
}

}  // namespace lumagrid
