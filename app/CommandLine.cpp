#include "CommandLine.h"

#include <QUrl>
#include <algorithm>
#include <array>

#include "FolderListing.h"
#include "ShownName.h"

namespace lumagrid {

namespace {

// The toolkit's own, which it takes with one dash or two: each with its value in the next argument, and those without.
constexpr std::array kToolkitOptions = {
    "display",         "geometry",           "icon",         "name",    "platform", "plugin",
    "qwindowgeometry", "qwindowicon",        "qwindowtitle", "session", "style",    "stylesheet",
    "title",           "platformpluginpath", "platformtheme"};
constexpr std::array kToolkitFlags = {"dograb", "nograb", "reverse"};

template <std::size_t count>
bool isOneOf(const std::array<const char*, count>& names, const QByteArray& option) {
  const QByteArray name = option.mid(option.startsWith("--") ? 2 : 1);
  return std::find(names.begin(), names.end(), name) != names.end();
}

// What an argument names; empty when that is no file of this machine.
FileUrl fileOf(const QByteArray& argument) {
  return argument.startsWith("file:") ? FileUrl::fromUrl(QUrl::fromEncoded(argument)) : FileUrl::fromPath(argument);
}

CommandLine refused(const QString& reason) {
  CommandLine line;
  line.action = CommandLine::Action::refuse;
  line.refusal = reason;
  return line;
}

QString quoted(const QByteArray& argument) {
  return QLatin1Char('"') + shownNameInSentence(QString::fromUtf8(argument)) + QLatin1Char('"');
}

}  // namespace

CommandLine CommandLine::parse(const QList<QByteArray>& arguments) {
  CommandLine line;
  bool optionsEnded = false;
  for (auto argument = arguments.begin(); argument != arguments.end(); ++argument) {
    const bool isOption = !optionsEnded && argument->startsWith('-') && *argument != "-";
    if (!isOption) {
      FileUrl file = fileOf(*argument);
      if (file.isEmpty()) return refused(quoted(*argument) + QStringLiteral(" names no file of this machine"));
      if (!line.files.empty() && file.parent() != line.files.front().parent()) {
        return refused(QStringLiteral("pictures of one folder at a time"));
      }
      line.files.push_back(std::move(file));
    } else if (*argument == "--") {
      optionsEnded = true;
    } else if (*argument == "--help" || *argument == "-h") {
      line.action = Action::showHelp;
      return line;
    } else if (*argument == "--version" || *argument == "-v") {
      line.action = Action::showVersion;
      return line;
    } else if (*argument == "--appearance=light") {
      line.appearance = ColorScheme::light;
    } else if (*argument == "--appearance=dark") {
      line.appearance = ColorScheme::dark;
    } else if (isOneOf(kToolkitOptions, *argument) && argument + 1 != arguments.end()) {
      ++argument;
    } else if (!isOneOf(kToolkitFlags, *argument)) {
      return refused(QStringLiteral("unknown option ") + quoted(*argument));
    }
  }
  if (line.files.size() == 1) line.files.front() = withoutLink(line.files.front());
  return line;
}

QString CommandLine::helpText() {
  return QStringLiteral(
      "Usage: lumagrid [--appearance=light|dark] [PATH...]\n"
      "\n"
      "Shows the pictures of a folder as a grid. PATH is a folder, or a picture to open in its folder; several "
      "pictures\n"
      "of one folder are selected in it. Where Lumagrid runs already, it opens them.\n"
      "\n"
      "  --appearance=light|dark  overrides the desktop's appearance\n"
      "  -h, --help               shows this text\n"
      "  -v, --version            shows the version\n");
}

}  // namespace lumagrid
