#include <signal.h>
#include <unistd.h>

#include <QProcess>
#include <thread>

#include "GioTrash.h"
#include "UiWindow.h"

using namespace lumagrid;

namespace {

constexpr int kBatch = 400;  // photos that the child process moves until it is killed

// The program's own Trash, whose process is killed soon after a number of moves, wherever it then is; it never comes to
// the end of the batch.
class FatalTrash final : public Trash {
 public:
  explicit FatalTrash(int movesToLive) : m_movesToLive(movesToLive) {}

  std::optional<QString> trashItem(const FileUrl& file) override {
    if (m_moves == m_movesToLive) std::thread([] { ::kill(::getpid(), SIGKILL); }).detach();
    while (m_moves >= kBatch - 1) ::pause();
    ++m_moves;
    return m_trash.trashItem(file);
  }

 private:
  GioTrash m_trash;
  int m_movesToLive;
  int m_moves = 0;
};

int moveUntilKilled(const QByteArray& folder, int movesToLive) {
  FatalTrash trash(movesToLive);
  UiApp app(trash);
  UiWindow window(app, FileUrl::fromPath(folder));
  window.library.toggleSelection(0);
  window.library.extendSelection(kBatch - 1);
  if (QTest::qWaitFor([&] { return window.shows("Delete"); })) window.click("Delete");
  return EXIT_FAILURE;
}

}  // namespace

// Photos are moved by the window's own controls into the Trash of a home folder made for the test. Whatever happens,
// each file is afterwards whole in its folder, or whole in the Trash with the record that restores it.
class TrashUiTest : public QObject {
  Q_OBJECT

 private Q_SLOTS:
  void init();
  void halfOfAFolderAtOnce();
  void onePhotoIsMovedOrKept_data();
  void onePhotoIsMovedOrKept();
  void aKilledProcessLosesNothing_data();
  void aKilledProcessLosesNothing();

 private:
  [[nodiscard]] QByteArray folder() const { return QFile::encodeName(m_folder->path()); }
  void fillFolder(int count) const;
  [[nodiscard]] qsizetype countInTrash() const {
    return QDir(QFile::decodeName(m_trashFolder + "/files")).entryList(QDir::Files).size();
  }
  [[nodiscard]] bool isWholeInTrash(const QByteArray& name) const {
    return readFile(m_trashFolder + "/files/" + name) == m_photo &&
           readFile(m_trashFolder + "/info/" + name + ".trashinfo").value_or("").startsWith("[Trash Info]\nPath=");
  }
  static QByteArray nameOf(int number) { return QByteArray::number(number) + ".jpg"; }

  const QByteArray m_trashFolder = qgetenv("XDG_DATA_HOME") + "/Trash";
  const QByteArray m_photo = samplePhoto({20, 20});
  GioTrash m_trash;
  std::unique_ptr<QTemporaryDir> m_folder;  // on the home's file system, as its Trash is
};

void TrashUiTest::init() {
  QDir(QFile::decodeName(m_trashFolder)).removeRecursively();
  m_folder = std::make_unique<QTemporaryDir>(QFile::decodeName(qgetenv("HOME")) + QStringLiteral("/XXXXXX"));
}

void TrashUiTest::fillFolder(int count) const {
  for (int number = 0; number < count; ++number) QVERIFY(writeFile(folder() + '/' + nameOf(number), m_photo));
}

void TrashUiTest::halfOfAFolderAtOnce() {
  fillFolder(1000);
  UiApp app(m_trash);
  UiWindow window(app, FileUrl::fromPath(folder()));
  window.click("5.jpg", Qt::ControlModifier);
  QTRY_VERIFY(window.shows("Delete"));
  for (int screens = 0; !window.shows("504.jpg"); ++screens) {
    QVERIFY(screens < 100);
    window.turnWheel(-400, {}, -400);
    (void)window.grab();  // laid out
  }
  window.click("504.jpg", Qt::ShiftModifier);
  QTRY_VERIFY(window.shows("500 selected"));

  app.platform.alert.answer = 1;
  window.click("Delete");
  QCOMPARE(app.platform.alert.asked.last().first(), QStringLiteral("Move 500 photos to Trash?"));
  QCOMPARE(countInTrash(), 0);
  app.platform.alert.answer = 0;
  QCOMPARE(::unlink((folder() + "/77.jpg").constData()), 0);  // by another program
  window.click("Delete");
  QTRY_VERIFY(window.shows("Moved 499 photos to Trash. 1 failed."));
  QCOMPARE(countInTrash(), 499);
  for (int number = 0; number < 1000; ++number) {
    const bool isMoved = number >= 5 && number <= 504 && number != 77;
    QCOMPARE(readFile(folder() + '/' + nameOf(number)).has_value(), !isMoved && number != 77);
    QCOMPARE(isWholeInTrash(nameOf(number)), isMoved);
  }
}

void TrashUiTest::onePhotoIsMovedOrKept_data() {
  QTest::addColumn<QByteArray>("name");
  QTest::addColumn<int>("answer");
  QTest::addColumn<bool>("isGone");  // removed by another program in the meantime
  QTest::addColumn<bool>("moves");
  const QByteArray longest = QByteArray(251, 'n') + ".jpg";
  QTest::newRow("confirmed") << QByteArray("a.jpg") << 0 << false << true;
  QTest::newRow("cancelled") << QByteArray("a.jpg") << 1 << false << false;
  QTest::newRow("a file that is gone") << QByteArray("a.jpg") << 0 << true << false;
  QTest::newRow("a name that is not UTF-8") << QByteArray("caf\xE9.jpg") << 0 << false << true;
  QTest::newRow("a name that leaves no room for its record") << longest << 0 << false << false;
}

void TrashUiTest::onePhotoIsMovedOrKept() {
  QFETCH(QByteArray, name);
  QFETCH(int, answer);
  QFETCH(bool, isGone);
  QFETCH(bool, moves);
  const QByteArray path = folder() + '/' + name;
  QVERIFY(writeFile(path, m_photo));
  const QString shown = QString::fromUtf8(name);
  UiApp app(m_trash);
  UiWindow window(app, FileUrl::fromPath(folder()));
  window.openPhoto(shown);
  if (isGone) QCOMPARE(::unlink(path.constData()), 0);
  app.platform.alert.answer = answer;
  window.press(Qt::Key_Delete);
  QCOMPARE(app.platform.alert.asked.last()[1], QStringLiteral("\"%1\" will be moved to the Trash.").arg(shown));

  QCOMPARE(isWholeInTrash(name), moves);
  QCOMPARE(readFile(path).has_value(), !moves && !isGone);
  const QString status = window.library.statusMessage();
  QTRY_VERIFY(window.shows(status));
  if (moves) {
    QCOMPARE(status, QStringLiteral("Moved \"%1\" to the Trash.").arg(shown));
    QVERIFY(window.shows("Choose a folder to start browsing."));
  } else {
    QCOMPARE(status.startsWith(QStringLiteral("Delete failed: ")), answer == 0);
    QVERIFY(window.shows("1 / 1"));
    QCOMPARE(countInTrash(), 0);
  }
  // By its bytes: a folder is not removed with a name that is not UTF-8.
  for (const QByteArray& file : {m_trashFolder + "/files/" + name, m_trashFolder + "/info/" + name + ".trashinfo"}) {
    ::unlink(file.constData());
  }
}

void TrashUiTest::aKilledProcessLosesNothing_data() {
  QTest::addColumn<int>("movesToLive");
  QTest::newRow("at the start of a batch") << 1;
  QTest::newRow("in the middle of a batch") << kBatch / 2;
  QTest::newRow("near the end of a batch") << kBatch - 20;
}

void TrashUiTest::aKilledProcessLosesNothing() {
  QFETCH(int, movesToLive);
  fillFolder(kBatch);
  QProcess child;
  child.start(QCoreApplication::applicationFilePath(),
              {QStringLiteral("--move-until-killed"), m_folder->path(), QString::number(movesToLive)});
  QVERIFY(child.waitForFinished(100'000));  // moves wait for a busy disk
  QCOMPARE(child.exitStatus(), QProcess::CrashExit);
  QCOMPARE(child.exitCode(), SIGKILL);
  int moved = 0;
  for (int number = 0; number < kBatch; ++number) {
    const bool isInFolder = readFile(folder() + '/' + nameOf(number)) == m_photo;
    const bool isInTrash = isWholeInTrash(nameOf(number));
    QVERIFY2(isInFolder != isInTrash, nameOf(number).constData());
    if (isInTrash) ++moved;
  }
  QVERIFY(moved >= movesToLive && moved < kBatch);
}

int main(int argc, char** argv) {
  if (argc == 4 && qstrcmp(argv[1], "--move-until-killed") == 0) {  // in the home of the process that started it
    QGuiApplication application(argc, argv);
    return moveUntilKilled(argv[2], QByteArray(argv[3]).toInt());
  }
  const TemporaryHome home;
  QGuiApplication application(argc, argv);
  TrashUiTest test;
  return QTest::qExec(&test, argc, argv);
}

#include "TrashUiTest.moc"
