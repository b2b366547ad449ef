#include <sys/stat.h>

#include <QDir>
#include <QProcess>
#include <csignal>

#include "CommandLine.h"
#include "PhotoFolder.h"
#include "Table.h"
#include "TemporaryHome.h"

using namespace lumagrid;

using Action = CommandLine::Action;

namespace {

const TemporaryHome kHome;
const QByteArray kPreferences = kHome.path() + "/config/lumagrid/lumagrid.json";

const QByteArrayList kOffscreen{"QT_QPA_PLATFORM", "offscreen", "QT_QUICK_BACKEND", "software"};

// Names and values of the environment in turn; a value that is empty takes the variable out.
void start(QProcess& program, const QStringList& arguments, const QByteArrayList& environment) {
  QProcessEnvironment variables = QProcessEnvironment::systemEnvironment();
  variables.insert(QStringLiteral("QT_LOGGING_RULES"), QStringLiteral("qt.scenegraph.time.renderloop=true"));
  for (qsizetype i = 0; i < environment.size(); i += 2) {
    variables.insert(QString::fromLatin1(environment[i]), QString::fromLatin1(environment[i + 1]));
    if (environment[i + 1].isEmpty()) variables.remove(QString::fromLatin1(environment[i]));
  }
  program.setProcessEnvironment(variables);
  program.start(QStringLiteral(LUMAGRID_PROGRAM), arguments);
}

}  // namespace

using Case = std::tuple<QList<QByteArray>, Action, QList<QByteArray>, std::optional<ColorScheme>>;
// Arguments, names and values of the environment in turn, what is done to the program $1 once it draws, what is said,
// and what is remembered.
using Start = std::tuple<QStringList, QByteArrayList, QByteArray, QByteArray, QByteArray>;

// The program itself, started as a user starts it and ended as the session ends it.
class ProgramTest : public QObject {
  Q_OBJECT

 private Q_SLOTS:
  void initTestCase() {
    for (const char* name : {"a.png", "b.png"}) (void)m_folder.add(QString::fromLatin1(name), samplePhoto({20, 20}));
    (void)m_folder.add(QStringLiteral("notes.txt"), "text");
    QVERIFY(QFile::link(QFile::decodeName(m_folder.url().path() + "/a.png"),
                        QFile::decodeName(m_folder.url().path() + "/link")));
    QCOMPARE(::mkfifo((m_folder.url().path() + "/pipe").constData(), S_IRUSR), 0);
  }

  void init() {
    QVERIFY(QDir(QFile::decodeName(m_folder.addFolder(QStringLiteral("photos")).path())).removeRecursively());
    (void)m_folder.addFolder(QStringLiteral("photos"));
    static const QByteArray photo = samplePhoto({3000, 2000});
    for (const char name : {'a', 'b', 'c', 'd', 'e', 'f'}) {
      (void)m_folder.add(QStringLiteral("photos/%1.png").arg(QLatin1Char(name)), photo);
    }
    (void)m_folder.add(QStringLiteral("photos/g.png"), "damaged");  // its tile waits for ever, which draws frames
  }

  void goesOn_data() {
    const QByteArrayList noDriver{"QT_QPA_PLATFORM", "xcb", "QT_XCB_GL_INTEGRATION", "none"};
    const QByteArray path = m_folder.url(QStringLiteral("photos")).path();
    const QString folder = QFile::decodeName(path);
    const QStringList own{QStringLiteral("-title"), QStringLiteral("x"), folder};
    const QByteArrayList noFonts = kOffscreen + QByteArrayList{"FONTCONFIG_FILE", "/dev/null"};
    const QByteArray starter = "kill -KILL $(cat /proc/$1/task/*/children)";
    const QByteArray decoders =
        "for each in $(cat /proc/$1/task/*/children); do "
        "kill -KILL $(cat /proc/$each/task/*/children); done";
    addRows<Start>({
        {"without a path", {{}, kOffscreen, "", "", ""}},
        {"with a folder", {{folder}, kOffscreen, "", "", path}},
        {"with what is not there",
         {{folder + QStringLiteral("/x")}, kOffscreen, "", "lumagrid: Could not open folder: ", ""}},
        {"with what is no picture",
         {{folder + QStringLiteral("/../notes.txt")},
          kOffscreen,
          "",
          "lumagrid: Could not open \"notes.txt\": not a supported image file.",
          ""}},
        {"with a pipe", {{folder + QStringLiteral("/../pipe")}, kOffscreen, "", "not a supported image file.", ""}},
        {"with a link to a picture",
         {{folder + QStringLiteral("/../link")}, kOffscreen, "", "", m_folder.url().path()}},
        {"where no graphics driver works, with the toolkit's own options",
         {own, noDriver, "", "lumagrid: no usable OpenGL driver", path}},
        {"where there are no fonts", {{folder}, noFonts, "", "", path}},
        {"while its folder vanishes", {{folder}, kOffscreen, "rm -r " + path, "", path}},
        {"while its photos lose their permissions", {{folder}, kOffscreen, "chmod 0 " + path + "/*", "", path}},
        {"without another descriptor", {{folder}, kOffscreen, "prlimit --pid $1 --nofile=3", "", ""}},
        {"while its decoders are killed", {{folder}, kOffscreen, decoders, "", path}},
        {"while what starts decoders is killed", {{folder}, kOffscreen, starter, "", path}},
    });
  }

  void goesOn() {
    const auto [arguments, environment, done, says, remembers] = fetchedRow<Start>();
    QFile::remove(QFile::decodeName(kPreferences));
    QProcess program;
    start(program, arguments, environment);
    QByteArray said;
    const auto frames = [&program, &said] {
      return (said += program.readAllStandardError()).count("rendered with 'software'");
    };
    QTRY_VERIFY_WITH_TIMEOUT(frames() > 0 || program.state() == QProcess::NotRunning, 60'000);
    QVERIFY2(frames() > 0, said.constData());
    if (!done.isEmpty()) {
      QTRY_VERIFY_WITH_TIMEOUT(frames() > 5, 60'000);  // the first ones before the folder is open
      const QByteArray script = "set -- " + QByteArray::number(program.processId()) + "; " + done;
      QCOMPARE(std::system(script.constData()), 0);
      const auto before = frames();
      QTRY_VERIFY_WITH_TIMEOUT(frames() > before + 5, 60'000);
    }
    QTRY_COMPARE(readFile(kPreferences).value_or("").contains(remembers), true);
    QVERIFY2(said.contains(says), said.constData());
    QCOMPARE(said.count("lumagrid:"), says.isEmpty() ? 0 : 1);
    // Codecs of pictures are in processes of their own. (The toolkit brings libpng, for icons.)
    const QByteArray maps = readFile("/proc/" + QByteArray::number(program.processId()) + "/maps").value_or("");
    QVERIFY(maps.contains("libQt6Quick"));
    for (const char* codec :
         {"libheif", "libtiff", "libjpeg", "libturbojpeg", "liblcms2", "libwebp", "/imageformats/"}) {
      QVERIFY2(!maps.contains(codec), codec);
    }
    program.terminate();
    QVERIFY(program.waitForFinished(60'000));
    QCOMPARE(program.exitCode(), SIGTERM);
  }

  // What a display is not needed for is done without one.
  void needsNoDisplayToAnswer() {
    const auto answer = [](const char* argument) {
      QProcess program;
      start(program, {QString::fromLatin1(argument)},
            {"DISPLAY", "", "WAYLAND_DISPLAY", "", "QT_QPA_PLATFORM", "", "XDG_RUNTIME_DIR", ""});
      (void)program.waitForFinished(60'000);
      return std::tuple(program.exitCode(), program.readAllStandardOutput().left(9),
                        program.readAllStandardError().split('\n').first());
    };
    QCOMPARE(answer("--wrong"), std::tuple(2, QByteArray(), QByteArray("lumagrid: unknown option \"--wrong\"")));
    QCOMPARE(answer("--help"), std::tuple(0, QByteArray("Usage: lu"), QByteArray()));
    QCOMPARE(answer("--version"), std::tuple(0, QByteArray("Lumagrid "), QByteArray()));
  }

  // … in a window, by the path that was meant where the later start was made, and goes on.
  void aLaterStartIsOpenedByTheRunningProgram() {
    QProcess daemon;
    daemon.start(QStringLiteral("dbus-daemon"),
                 {QStringLiteral("--session"), QStringLiteral("--nofork"), QStringLiteral("--print-address")});
    QVERIFY2(daemon.waitForReadyRead(), "dbus-daemon does not start");
    const QByteArrayList onBus = kOffscreen + QByteArrayList{"DBUS_SESSION_BUS_ADDRESS", daemon.readLine().trimmed()};
    const PhotoFolder other;
    QFile::remove(QFile::decodeName(kPreferences));
    QProcess running;
    start(running, {QFile::decodeName(m_folder.url().path())}, onBus);
    QTRY_VERIFY_WITH_TIMEOUT(readFile(kPreferences).value_or("").contains(m_folder.url().path()), 60'000);
    QFile::remove(QFile::decodeName(kPreferences));
    QProcess later;
    later.setWorkingDirectory(QFile::decodeName(other.url().path()));
    start(later, {QStringLiteral("../") + QFile::decodeName(other.url().lastPathComponent().toByteArray())}, onBus);
    QVERIFY(later.waitForFinished(60'000));
    QCOMPARE(later.exitCode(), 0);
    QVERIFY(!later.readAllStandardError().contains("rendered with"));
    QTRY_VERIFY(readFile(kPreferences).value_or("").contains(other.url().path()));
    QCOMPARE(running.state(), QProcess::Running);
    running.terminate();
    QVERIFY(running.waitForFinished(60'000));
    daemon.terminate();
    QVERIFY(daemon.waitForFinished());
  }

  // Neither hangs nor crashes.
  void endsWithItsDisplay() {
    QProcess display;
    display.start(QStringLiteral("Xvfb"), {QStringLiteral("-displayfd"), QStringLiteral("1")});
    QVERIFY2(display.waitForReadyRead(30'000), "Xvfb does not start");
    QProcess program;
    start(program, {QFile::decodeName(m_folder.url(QStringLiteral("photos")).path())},
          {"QT_QPA_PLATFORM", "xcb", "QT_QUICK_BACKEND", "software", "DISPLAY", ":" + display.readLine().trimmed()});
    QByteArray said;
    QTRY_VERIFY_WITH_TIMEOUT((said += program.readAllStandardError()).contains("rendered with"), 60'000);
    display.kill();
    QVERIFY(program.waitForFinished(60'000));
    QCOMPARE(program.exitStatus(), QProcess::NormalExit);
    QCOMPARE(program.exitCode(), EXIT_FAILURE);
    display.waitForFinished();
  }

  void parses_data() {
    const QByteArray here = QFile::encodeName(QDir::currentPath());
    const auto light = ColorScheme::light;
    const auto dark = ColorScheme::dark;
    addRows<Case>({
        {"nothing", {{}, Action::open, {}, {}}},
        {"a name that is not UTF-8", {{"/caf\xE9"}, Action::open, {"/caf\xE9"}, {}}},
        {"a URL, with bytes that are not UTF-8", {{"file:///caf%E9%20"}, Action::open, {"/caf\xE9 "}, {}}},
        {"a URL of another machine", {{"file://other/a"}, Action::refuse, {}, {}}},
        {"a URL that ends for the system alone", {{"file:///a%00b"}, Action::refuse, {}, {}}},
        {"a name that begins with a dash, after the end of the options",
         {{"--", "-v"}, Action::open, {here + "/-v"}, {}}},
        {"several of one folder", {{"/f/b", "file:///f/a"}, Action::open, {"/f/b", "/f/a"}, {}}},
        {"several of two folders", {{"/f/a", "/b"}, Action::refuse, {}, {}}},
        {"light", {{"--appearance=light", "/a"}, Action::open, {"/a"}, light}},
        {"dark, after the name", {{"/a", "--appearance=dark"}, Action::open, {"/a"}, dark}},
        {"the last appearance counts", {{"--appearance=dark", "--appearance=light"}, Action::open, {}, light}},
        {"no such appearance", {{"--appearance=blue"}, Action::refuse, {}, {}}},
        {"an appearance without a value", {{"--appearance", "dark"}, Action::refuse, {}, {}}},
        {"the toolkit's own", {{"-title", "/x", "--reverse", "-geometry", "9x9", "/a"}, Action::open, {"/a"}, {}}},
        {"the toolkit's own without its value", {{"-title"}, Action::refuse, {}, {}}},
        {"help, before what would be refused", {{"-h", "--wrong"}, Action::showHelp, {}, {}}},
        {"version", {{"-v"}, Action::showVersion, {}, {}}},
    });
  }

  void parses() {
    const auto [arguments, action, paths, appearance] = fetchedRow<Case>();
    const CommandLine line = CommandLine::parse(arguments);
    QCOMPARE(line.action, action);
    QList<QByteArray> named;
    for (const FileUrl& file : line.files) named.append(file.path());
    QCOMPARE(named, paths);
    QCOMPARE(line.appearance, appearance);
    QCOMPARE(line.refusal.isEmpty(), line.action != Action::refuse);
  }

 private:
  const PhotoFolder m_folder;
};

QTEST_GUILESS_MAIN(ProgramTest)
#include "ProgramTest.moc"
