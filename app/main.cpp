#include <QApplication>
#include <cstdio>
#include <memory>
#include <vector>

#include "CommandLine.h"
#include "DesktopPlatform.h"
#include "FileImageDecoder.h"
#include "LumagridApp.h"
#include "PictureStore.h"
#include "PortalAppearance.h"
#include "QmlPlugins.h"
#include "SettingsPreferences.h"
#include "SoftwareFallback.h"
#include "StartAhead.h"
#include "ThumbnailStore.h"
#include "Tuning.h"

using namespace lumagrid;

namespace {

int run(QApplication& application, char* const* arguments, const CommandLine& line, PictureStore& pictures,
        std::unique_ptr<StartAhead> ahead) {
  PortalAppearance appearance(line.appearance);
  SettingsPreferences preferences;
  DesktopPlatform desktop(pictures, preferences, appearance);
  LumagridApp app(desktop.platform());

  QQuickWindow* window = app.makeWindow();
  if (!window) return EXIT_FAILURE;
  fallBackToSoftware(*window, arguments);
  window->create();  // loads the graphics driver while other threads read
  ContentView& view = *app.contentView(window);
  if (!line.path.isEmpty()) {
    const FileUrl url = FileUrl::fromPath(line.path);
    // Options of the toolkit before the path hide it until the toolkit has taken them.
    if (!ahead) ahead = std::make_unique<StartAhead>(url, pictures);
    view.openPath(url, ahead->takeScan());
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
  tuneToolkit();
  FileImageDecoder decoder;
  ThumbnailStore::setDecoder(decoder);
  PictureStore pictures(decoder);
  std::unique_ptr<StartAhead> ahead;
  if (const CommandLine early = parse(); early.action == CommandLine::Action::open && !early.path.isEmpty()) {
    ahead = std::make_unique<StartAhead>(FileUrl::fromPath(early.path), pictures);
  }
  std::vector<char*> arguments(argv, argv + argc);
  arguments.push_back(nullptr);
  QApplication application(argc, argv);  // takes the toolkit's own options out of argv
  const CommandLine line = parse();
  if (line.action == CommandLine::Action::refuse) {
    std::fprintf(stderr, "lumagrid: %s\n%s", qPrintable(line.refusal), qPrintable(CommandLine::helpText()));
    return 2;
  }
  return run(application, arguments.data(), line, pictures, std::move(ahead));
}
