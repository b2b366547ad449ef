#include <QApplication>
#include <QTimer>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <functional>
#include <memory>
#include <vector>

#include "BusInstance.h"
#include "CommandLine.h"
#include "DesktopPlatform.h"
#include "LumagridApp.h"
#include "PictureStore.h"
#include "PortalAppearance.h"
#include "ProcessImageDecoder.h"
#include "QmlPlugins.h"
#include "SettingsPreferences.h"
#include "SoftwareFallback.h"
#include "StartAhead.h"
#include "ThumbnailStore.h"
#include "ToolkitEnvironment.h"
#include "WorkerPool.h"

using namespace lumagrid;

namespace {

// Beside this program, as it is built, or where packages put what people do not start.
QByteArray decoderProgram() {
  const auto folder = std::filesystem::read_symlink("/proc/self/exe").parent_path();
  const auto beside = folder / "lumagrid-decoder";
  return QByteArray::fromStdString(std::filesystem::exists(beside)
                                       ? beside.string()
                                       : (folder.parent_path() / LUMAGRID_LIBEXECDIR "/lumagrid-decoder").string());
}

// Nothing is decoded or waited for any more once this goes, and nothing in the background needs what was made before
// it. Until then exit(), which the toolkit calls when its display is gone, ends the process at once: it would destroy
// what threads are using.
class BackgroundEnd {
 public:
  explicit BackgroundEnd(ProcessImageDecoder& decoder) : m_decoder(decoder) {
    s_isRunning = true;
    (void)workerPool();  // whatever is made before goes after this
    std::atexit([] {
      if (s_isRunning) std::_Exit(EXIT_FAILURE);
    });
  }
  BackgroundEnd(const BackgroundEnd&) = delete;
  BackgroundEnd& operator=(const BackgroundEnd&) = delete;
  ~BackgroundEnd() {
    m_decoder.stop();
    workerPool().clear();
    workerPool().waitForDone();
    s_isRunning = false;
  }

 private:
  static inline bool s_isRunning = false;
  ProcessImageDecoder& m_decoder;
};

// The first frame takes as long as the decode of a picture, which goes on meanwhile: the window comes up with nothing
// but its backdrop, and then waits for what it shows.
void openAfterFirstFrame(QQuickWindow& window, const std::function<void()>& open) {
  static constexpr char kIsOpening[] = "isOpening";
  constexpr int kLongestFrameMs = 1000;  // nobody sees the window then
  window.setProperty(kIsOpening, true);
  const auto openOnce = [&window, open] {
    if (!window.property(kIsOpening).toBool()) return;
    open();
    window.setProperty(kIsOpening, false);
  };
  QObject::connect(&window, &QQuickWindow::frameSwapped, &window, openOnce,
                   static_cast<Qt::ConnectionType>(Qt::QueuedConnection | Qt::SingleShotConnection));
  QTimer::singleShot(kLongestFrameMs, &window, openOnce);
}

int run(QApplication& application, char* const* arguments, const CommandLine& line, ProcessImageDecoder& decoder,
        PictureStore& pictures, StartAhead* ahead) {
  BusInstance instance;
  QObject::connect(&application, &QApplication::aboutToQuit, &application, [&decoder] { decoder.stop(); });
  PortalAppearance appearance(line.appearance);
  SettingsPreferences preferences;
  DesktopPlatform desktop(pictures, preferences, appearance);
  LumagridApp::Platform platform = desktop.platform();
  platform.knownLimits = [&decoder] { return decoder.missingProtection(); };
  LumagridApp app(platform);

  QQuickWindow* window = app.makeWindow();
  if (!window) return EXIT_FAILURE;
  fallBackToSoftware(*window, arguments);
  window->create();  // loads the graphics driver while other threads read
  // By now the bus has answered.
  if (instance.handOver(line.files)) return EXIT_SUCCESS;
  QObject::connect(&instance, &SingleInstance::openRequested, &app, &LumagridApp::open);
  if (ahead) {
    openAfterFirstFrame(*window, [&view = *app.contentView(window), &line, ahead] {
      view.openPaths(line.files, ahead->takeScan());
      if (view.library()->statusIsError()) {
        std::fprintf(stderr, "lumagrid: %s\n", qPrintable(view.library()->statusMessage()));
      }
    });
  }
  window->show();
  return application.exec();
}

}  // namespace

int main(int argc, char* argv[]) {
  QApplication::setApplicationName(QStringLiteral("lumagrid"));
  QApplication::setApplicationDisplayName(QStringLiteral("Lumagrid"));
  QApplication::setApplicationVersion(QStringLiteral(LUMAGRID_VERSION));
  QApplication::setDesktopFileName(QStringLiteral("org.lumagrid.lumagrid"));

  const CommandLine line = CommandLine::parse(QList<QByteArray>(argv + 1, argv + argc));
  switch (line.action) {
    case CommandLine::Action::showHelp:
      std::fputs(qPrintable(CommandLine::helpText()), stdout);
      return EXIT_SUCCESS;
    case CommandLine::Action::showVersion:
      std::puts("Lumagrid " LUMAGRID_VERSION);
      return EXIT_SUCCESS;
    case CommandLine::Action::refuse:
      std::fprintf(stderr, "lumagrid: %s\n%s", qPrintable(line.refusal), qPrintable(CommandLine::helpText()));
      return 2;
    case CommandLine::Action::open:
      break;
  }
  setToolkitEnvironment();
  ProcessImageDecoder decoder(decoderProgram());
  ThumbnailStore::setDecoder(decoder);
  PictureStore pictures(decoder);
  const BackgroundEnd end(decoder);
  std::unique_ptr<StartAhead> ahead;
  if (!line.files.empty()) ahead = std::make_unique<StartAhead>(ContentView::openedPath(line.files), pictures);
  std::vector<char*> arguments(argv, argv + argc);
  arguments.push_back(nullptr);
  QApplication application(argc, argv);
  return run(application, arguments.data(), line, decoder, pictures, ahead.get());
}
