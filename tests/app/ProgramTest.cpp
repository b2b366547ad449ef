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

}  // namespace

using Case = std::tuple<QList<QByteArray>, Action, QByteArray, std::optional<ColorScheme>>;
// Arguments, names and values of the environment in turn, what is said, and what is remembered.
using Start = std::tuple<QStringList, QByteArrayList, QByteArray, QByteArray>;

// The program itself, started as a user starts it and ended as the session ends it.
class ProgramTest : public QObject {
  Q_OBJECT

 private Q_SLOTS:
  void initTestCase() { (void)m_folder.add(QStringLiteral("a.png"), samplePhoto({20, 20})); }

  void starts_data() {
    const QByteArrayList noDriver{"QT_QPA_PLATFORM", "xcb", "QT_XCB_GL_INTEGRATION", "none"};
    const QByteArrayList offscreen{"QT_QPA_PLATFORM", "offscreen", "QT_QUICK_BACKEND", "software"};
    const QByteArray path = m_folder.url().path();
    const QString folder = QFile::decodeName(path);
    const QStringList own{QStringLiteral("-title"), QStringLiteral("x"), folder};
    addRows<Start>({
        {"without a path", {{}, offscreen, "", ""}},
        {"with a folder", {{folder}, offscreen, "", path}},
        {"with what is not there",
         {{folder + QStringLiteral("/x")}, offscreen, "lumagrid: Could not open folder: ", ""}},
        {"where no graphics driver works, with the toolkit's own options",
         {own, noDriver, "lumagrid: no usable OpenGL driver", path}},
    });
  }

  void starts() {
    QFETCH(const Start, row);
    const auto& [arguments, environment, says, remembers] = row;
    const QByteArray preferences = qgetenv("XDG_CONFIG_HOME") + "/lumagrid/lumagrid.json";
    QFile::remove(QFile::decodeName(preferences));
    QProcess program;
    QProcessEnvironment variables = QProcessEnvironment::systemEnvironment();
    variables.insert(QStringLiteral("QT_LOGGING_RULES"), QStringLiteral("qt.scenegraph.time.renderloop=true"));
    for (qsizetype i = 0; i < environment.size(); i += 2) {
      variables.insert(QString::fromLatin1(environment[i]), QString::fromLatin1(environment[i + 1]));
    }
    program.setProcessEnvironment(variables);
    program.start(QStringLiteral(LUMAGRID_PROGRAM), arguments);
    QByteArray said;
    const auto draws = [&program, &said] {
      return (said += program.readAllStandardError()).contains("rendered with 'software'");
    };
    QTRY_VERIFY_WITH_TIMEOUT(draws() || program.state() == QProcess::NotRunning, 60'000);
    QVERIFY2(draws(), said.constData());
    QTRY_COMPARE(readFile(preferences).value_or("").contains(remembers), true);
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

  void parses_data() {
    const auto light = ColorScheme::light;
    const auto dark = ColorScheme::dark;
    addRows<Case>({
        {"nothing", {{}, Action::open, {}, {}}},
        {"a name that is not UTF-8", {{"caf\xE9"}, Action::open, "caf\xE9", {}}},
        {"a name that begins with a dash, after the end of the options", {{"--", "-v"}, Action::open, "-v", {}}},
        {"one dash is a name", {{"-"}, Action::open, "-", {}}},
        {"two names, also after the end of the options", {{"a", "--", "b"}, Action::refuse, "a", {}}},
        {"light", {{"--appearance=light", "a"}, Action::open, "a", light}},
        {"dark, after the name", {{"a", "--appearance=dark"}, Action::open, "a", dark}},
        {"the last appearance counts", {{"--appearance=dark", "--appearance=light"}, Action::open, "", light}},
        {"no such appearance", {{"--appearance=blue"}, Action::refuse, {}, {}}},
        {"an appearance without a value", {{"--appearance", "dark"}, Action::refuse, {}, {}}},
        {"help", {{"--help"}, Action::showHelp, {}, {}}},
        {"help, before what would be refused", {{"-h", "--wrong"}, Action::showHelp, {}, {}}},
        {"version", {{"-v"}, Action::showVersion, {}, {}}},
        {"version, in full", {{"--version"}, Action::showVersion, {}, {}}},
        {"no such option", {{"--wrong"}, Action::refuse, {}, {}}},
    });
  }

  void parses() {
    QFETCH(const Case, row);
    const auto& [arguments, action, path, appearance] = row;
    const CommandLine line = CommandLine::parse(arguments);
    QCOMPARE(line.action, action);
    QCOMPARE(line.path, path);
    QCOMPARE(line.appearance, appearance);
    QCOMPARE(line.refusal.isEmpty(), line.action != Action::refuse);
    if (arguments == QList<QByteArray>{"--wrong"}) QVERIFY(line.refusal.contains(u"--wrong"));
  }

 private:
  const PhotoFolder m_folder;
};

QTEST_GUILESS_MAIN(ProgramTest)
#include "ProgramTest.moc"
