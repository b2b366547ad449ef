#include <QProcess>
#include <QTest>
#include <csignal>

#include "PhotoFolder.h"
#include "TemporaryHome.h"

// The program itself, started as a user starts it and ended as the session ends it.
class ProgramTest : public QObject {
  Q_OBJECT

 private Q_SLOTS:
  void initTestCase() { (void)m_folder.add(QStringLiteral("a.png"), lumagrid::samplePhoto({20, 20})); }

  void starts_data() {
    QTest::addColumn<QStringList>("arguments");
    QTest::addColumn<QByteArrayList>("environment");  // names and values in turn
    QTest::addColumn<QByteArray>("says");
    QTest::addColumn<QByteArray>("remembers");
    const QByteArrayList noDriver{"QT_QPA_PLATFORM", "xcb", "QT_XCB_GL_INTEGRATION", "none"};
    const QByteArrayList offscreen{"QT_QPA_PLATFORM", "offscreen", "QT_QUICK_BACKEND", "software"};
    const QString folder = QFile::decodeName(m_folder.url().path());
    QTest::newRow("without a path") << QStringList() << offscreen << QByteArray() << QByteArray();
    QTest::newRow("with a folder") << QStringList{folder} << offscreen << QByteArray() << m_folder.url().path();
    QTest::newRow("with what is not there") << QStringList{folder + QStringLiteral("/x")} << offscreen
                                            << QByteArray("lumagrid: Could not open folder: ") << QByteArray();
    QTest::newRow("where no graphics driver works, with the toolkit's own options")
        << QStringList{QStringLiteral("-title"), QStringLiteral("x"), folder} << noDriver
        << QByteArray("lumagrid: no usable OpenGL driver") << m_folder.url().path();
  }

  void starts() {
    QFETCH(QStringList, arguments);
    QFETCH(QByteArrayList, environment);
    QFETCH(QByteArray, says);
    QFETCH(QByteArray, remembers);
    const QByteArray preferences = qgetenv("XDG_CONFIG_HOME") + "/lumagrid/lumagrid.conf";
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
    const auto draws = [&] { return (said += program.readAllStandardError()).contains("rendered with 'software'"); };
    QTRY_VERIFY_WITH_TIMEOUT(draws() || program.state() == QProcess::NotRunning, 60'000);
    QVERIFY2(draws(), said.constData());
    QTRY_COMPARE(readFile(preferences).value_or("").contains(remembers), true);
    QVERIFY2(said.contains(says), said.constData());
    QCOMPARE(said.count("lumagrid:"), says.isEmpty() ? 0 : 1);
    program.terminate();
    QVERIFY(program.waitForFinished(60'000));
    QCOMPARE(program.exitCode(), SIGTERM);
  }

 private:
  const lumagrid::PhotoFolder m_folder;
};

int main(int argc, char** argv) {
  const TemporaryHome home;
  QCoreApplication application(argc, argv);
  ProgramTest test;
  return QTest::qExec(&test, argc, argv);
}

#include "ProgramTest.moc"
