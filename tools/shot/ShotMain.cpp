// lumagrid-shot: the real window on a folder or a picture, painted until nothing loads any more, saved as a picture.
#include <QApplication>
#include <QCommandLineParser>
#include <QTimer>
#include <cstdio>

#include "DesktopPlatform.h"
#include "FileImageDecoder.h"
#include "LumagridApp.h"
#include "QmlPlugins.h"
#include "ThumbnailStore.h"

using namespace lumagrid;

namespace {

constexpr int kQuietMs = 400;      // without a frame or a load, after which the picture counts as settled
constexpr int kSpinningMs = 2000;  // without a load, after which it does although a spinner goes on
constexpr int kLimitMs = 60'000;

// Leaves the user's recent folders alone.
class NoPreferences final : public Preferences {
 public:
  [[nodiscard]] std::optional<QStringList> stringArray(const QString&) const override { return std::nullopt; }
  void set(const QString&, const QStringList&) override {}
  void removeObject(const QString&) override {}
};

struct Request {
  QByteArray path;
  QString output;
  QSize size{1100, 760};  // of the content, below the menu bar
  int columns = 0;        // 0: as the window opens
  QList<int> selected;
  int opened = -1;
  double zoom = 1;
  ColorScheme colorScheme = ColorScheme::light;
};

std::optional<Request> parse(const QApplication& application, int argc, char* argv[]) {
  QCommandLineParser parser;
  parser.setApplicationDescription(QStringLiteral("Saves a picture of the window."));
  parser.addHelpOption();
  const auto option = [&](const char* name, const char* description, const char* value) {
    parser.addOption({QString::fromLatin1(name), QString::fromLatin1(description), QString::fromLatin1(value)});
  };
  option("size", "The size of the content, in points.", "WxH");
  option("columns", "Columns of the grid.", "N");
  option("select", "The indices of photos to select.", "I,J");
  option("open", "The index of a photo to open.", "I");
  option("zoom", "The scale of the opened photo.", "S");
  option("appearance", "light or dark.", "scheme");
  parser.addPositionalArgument(QStringLiteral("PATH"), QStringLiteral("A folder or a picture."));
  parser.addPositionalArgument(QStringLiteral("OUT"), QStringLiteral("The picture to write."));
  parser.process(application);
  const auto value = [&](const char* name) { return parser.value(QString::fromLatin1(name)); };
  if (parser.positionalArguments().size() != 2) return std::nullopt;

  Request request;
  // As bytes, since a name need not be text; the options come first.
  request.path = argv[argc - 2];
  request.output = parser.positionalArguments().at(1);
  if (const QStringList size = value("size").split(u'x'); size.size() == 2) {
    request.size = {size[0].toInt(), size[1].toInt()};
  }
  if (!value("columns").isEmpty()) request.columns = value("columns").toInt();
  if (!value("open").isEmpty()) request.opened = value("open").toInt();
  if (!value("zoom").isEmpty()) request.zoom = value("zoom").toDouble();
  for (const QString& index : value("select").split(u',', Qt::SkipEmptyParts)) request.selected.append(index.toInt());
  if (value("appearance") == u"dark") request.colorScheme = ColorScheme::dark;
  return request;
}

void apply(const Request& request, ContentView& view) {
  // Before there is a photo, to which it would scroll.
  if (request.columns > 0) view.setGridDimension(request.columns);
  view.openPath(FileUrl::fromPath(request.path));
  if (!request.selected.isEmpty()) {  // the first of them comes to the center
    view.library()->openPhoto(request.selected.first());
    view.exitDetailMode();
  }
  for (const int index : request.selected) view.handleTileClick(index, Qt::ControlModifier);
  if (request.opened >= 0) view.handleTileClick(request.opened, Qt::NoModifier);
}

}  // namespace

int main(int argc, char* argv[]) {
  QApplication::setApplicationName(QStringLiteral("lumagrid-shot"));
  QApplication application(argc, argv);
  const auto request = parse(application, argc, argv);
  if (!request) {
    std::fputs("lumagrid-shot: a folder or picture, and a picture to write, are needed\n", stderr);
    return 2;
  }
  const Appearance appearance(request->colorScheme);
  FileImageDecoder decoder;
  ThumbnailStore::setDecoder(decoder);
  NoPreferences preferences;
  DesktopPlatform desktop(decoder, preferences, appearance);
  LumagridApp app(desktop.platform());
  QQuickWindow* window = app.makeWindow();
  if (!window) return EXIT_FAILURE;
  ContentView& view = *app.contentView(window);
  apply(*request, view);
  const int menuBarHeight = window->minimumHeight() - 760;
  window->setMinimumSize({1, 1});
  window->resize(request->size + QSize(0, menuBarHeight));

  QTimer quiet;
  quiet.setSingleShot(true);
  quiet.setInterval(kQuietMs);
  QObject::connect(window, &QQuickWindow::frameSwapped, &quiet, qOverload<>(&QTimer::start));
  const auto save = [&] {
    const bool saved = window->grabWindow().save(request->output);
    if (!saved) std::fprintf(stderr, "lumagrid-shot: cannot write %s\n", qPrintable(request->output));
    QApplication::exit(saved ? EXIT_SUCCESS : EXIT_FAILURE);
  };
  QTimer spinning;
  spinning.setSingleShot(true);
  spinning.setInterval(kSpinningMs);
  bool isZoomed = request->zoom <= 1;
  const auto settled = [&] {
    if (app.thumbnailQueue().pendingCount() > 0) {
      quiet.start();
      spinning.start();
    } else if (!std::exchange(isZoomed, true)) {
      view.handleDetailMagnification(request->zoom);
      quiet.start();
      spinning.start();
    } else {
      save();
    }
  };
  QObject::connect(&quiet, &QTimer::timeout, &application, settled);
  QObject::connect(&spinning, &QTimer::timeout, &application, settled);
  spinning.start();
  QTimer::singleShot(kLimitMs, &application, save);
  window->show();
  return QApplication::exec();
}
