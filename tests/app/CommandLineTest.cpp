#include "CommandLine.h"

#include <QTest>

using namespace lumagrid;

class CommandLineTest : public QObject {
  Q_OBJECT

 private Q_SLOTS:
  void parses_data() {
    using Action = CommandLine::Action;
    QTest::addColumn<QList<QByteArray>>("arguments");
    QTest::addColumn<CommandLine::Action>("action");
    QTest::addColumn<QByteArray>("path");
    QTest::addColumn<int>("appearance");  // -1: none
    const auto row = [](const char* name, const QList<QByteArray>& arguments, Action action,
                        const QByteArray& path = {},
                        int appearance = -1) { QTest::newRow(name) << arguments << action << path << appearance; };
    const int light = int(ColorScheme::light);
    const int dark = int(ColorScheme::dark);
    row("nothing", {}, Action::open);
    row("a name that is not UTF-8", {"caf\xE9"}, Action::open, "caf\xE9");
    row("a name that begins with a dash, after the end of the options", {"--", "-v"}, Action::open, "-v");
    row("one dash is a name", {"-"}, Action::open, "-");
    row("two names, also after the end of the options", {"a", "--", "b"}, Action::refuse, "a");
    row("light", {"--appearance=light", "a"}, Action::open, "a", light);
    row("dark, after the name", {"a", "--appearance=dark"}, Action::open, "a", dark);
    row("the last appearance counts", {"--appearance=dark", "--appearance=light"}, Action::open, "", light);
    row("no such appearance", {"--appearance=blue"}, Action::refuse);
    row("an appearance without a value", {"--appearance", "dark"}, Action::refuse);
    row("help", {"--help"}, Action::showHelp);
    row("help, before what would be refused", {"-h", "--wrong"}, Action::showHelp);
    row("version", {"-v"}, Action::showVersion);
    row("version, in full", {"--version"}, Action::showVersion);
    row("no such option", {"--wrong"}, Action::refuse);
  }

  void parses() {
    QFETCH(QList<QByteArray>, arguments);
    const CommandLine line = CommandLine::parse(arguments);
    QTEST(line.action, "action");
    QTEST(line.path, "path");
    QTEST(line.appearance ? int(*line.appearance) : -1, "appearance");
    QCOMPARE(line.refusal.isEmpty(), line.action != CommandLine::Action::refuse);
    for (const QByteArray& argument : arguments) {
      if (argument.startsWith("--w")) QCOMPARE(line.refusal.contains(QLatin1String(argument)), !line.refusal.isEmpty());
    }
  }
};

QTEST_GUILESS_MAIN(CommandLineTest)
#include "CommandLineTest.moc"
