#include <QApplication>
#include <cstdio>

#include "CommandLine.h"
#include "FileImageDecoder.h"
#include "GioTrash.h"
#include "LumagridApp.h"
#include "PortalAppearance.h"
#include "QmlPlugins.h"
#include "QtAlert.h"
#include "QtFolderChooser.h"
#include "QtPopupMenu.h"
#include "ScopedAccess.h"
#include "SettingsPreferences.h"
#include "WidgetPalette.h"

using namespace lumagrid;

namespace {

int run(QApplication& application, const CommandLine& line) {
  PortalAppearance appearance(line.appearance);
  WidgetPalette widgetPalette(appearance);
  FileImageDecoder decoder;
  GioTrash trash;
  QtFolderChooser chooser(widgetPalette);
  QtAlert alert(widgetPalette);
  QtPopupMenu popupMenu(widgetPalette);
  ScopedAccess access;
  SettingsPreferences preferences;
  LumagridApp app({{decoder, trash, chooser, alert, access}, preferences, popupMenu, appearance});

  QQuickWindow* window = app.makeWindow();
  if (!window) return EXIT_FAILURE;
  ContentView& view = *app.contentView(window);
  if (!line.path.isEmpty()) {
    view.openPath(FileUrl::fromPath(line.path));
    if (view.library()->statusIsError()) {
      std::fprintf(stderr, "lumagrid: %s\n", qPrintable(view.library()->statusMessage()));
    }
  }
  window->show();
  return application.exec();
}

}  // namespace

int main(int argc, char* argv[]) {
  QApplication::setApplicationName(QStringLiteral("lumagrid"));
  QApplication::setApplicationDisplayName(QStringLiteral("Lumagrid"));
  QApplication::setApplicationVersion(QStringLiteral(LUMAGRID_VERSION));
  QApplication::setDesktopFileName(QStringLiteral("lumagrid"));

  const auto parse = [&] { return CommandLine::parse(QList<QByteArray>(argv + 1, argv + argc)); };
  // Help needs no display.
  if (const CommandLine early = parse(); early.action == CommandLine::Action::showHelp) {
    std::fputs(qPrintable(CommandLine::helpText()), stdout);
    return EXIT_SUCCESS;
  } else if (early.action == CommandLine::Action::showVersion) {
    std::puts("Lumagrid " LUMAGRID_VERSION);
    return EXIT_SUCCESS;
  }
  QApplication application(argc, argv);  // takes the toolkit's own options out of argv
  const CommandLine line = parse();
  if (line.action == CommandLine::Action::refuse) {
    std::fprintf(stderr, "lumagrid: %s\n%s", qPrintable(line.refusal), qPrintable(CommandLine::helpText()));
    return 2;
  }
  return run(application, line);
}
