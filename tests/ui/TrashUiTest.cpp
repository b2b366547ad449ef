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
  UiWindow window(app.app);
  choose(app, window, FileUrl::fromPath(folder));
  window.library.toggleSelection(0);
  window.library.extendSelection(kBatch - 1);
  if (!QTest::qWaitFor([&] { return window.shows("Delete"); })) return EXIT_FAILURE;
  window.click("Delete");
  return EXIT_FAILURE;
}

}  // namespace

// Photos are moved by the window's own controls into the Trash of a home folder made for the test. Whatever happens,
// each file is afterwards whole in its folder, or whole in the Trash with the record that restores it.
class TrashUiTest : public QObject {
  Q_OBJECT

 private Q_SLOTS:
  void init();
  void cleanup();
  void halfOfAFolderAtOnce();
  void onePhotoIsMovedOrKept_data();
  void onePhotoIsMovedOrKept();
  void whatIsGoneIsCountedAsFailed();
  void aKilledProcessLosesNothing_data();
  void aKilledProcessLosesNothing();

 private:
  [[nodiscard]] QStringList inTrash() const;
  [[nodiscard]] bool isWholeInTrash(const QByteArray& name, const QByteArray& content) const {
    return readFile(m_trashFolder + "/files/" + name) == content &&
           readFile(m_trashFolder + "/info/" + name + ".trashinfo").value_or("").startsWith("[Trash Info]\nPath=");
  }

  const QByteArray m_home = qgetenv("HOME");
  const QByteArray m_trashFolder = qgetenv("XDG_DATA_HOME") + "/Trash";
  const QByteArray m_photo = samplePhoto({20, 20});
  GioTrash m_trash;
  std::unique_ptr<QTemporaryDir> m_folder;  // on the home's file system, as its Trash is
  std::unique_ptr<UiApp> m_app;
  std::unique_ptr<UiWindow> m_window;
};

void TrashUiTest::init() {
  QDir(QFile::decodeName(m_trashFolder)).removeRecursively();
  m_folder = std::make_unique<QTemporaryDir>(QFile::decodeName(m_home) + QStringLiteral("/XXXXXX"));
  m_app = std::make_unique<UiApp>(m_trash);
  m_window = std::make_unique<UiWindow>(m_app->app);
}

void TrashUiTest::cleanup() {
  QTRY_COMPARE(m_app->app.thumbnailQueue().pendingCount(), 0);
  m_window.reset();
  m_app.reset();
}

QStringList TrashUiTest::inTrash() const {
  return QDir(QFile::decodeName(m_trashFolder + "/files")).entryList(QDir::Files);
}

void TrashUiTest::halfOfAFolderAtOnce() {
  const QByteArray folder = QFile::encodeName(m_folder->path());
  for (int number = 0; number < 1000; ++number) {
    QVERIFY(writeFile(folder + '/' + QByteArray::number(number) + ".jpg", m_photo));
  }
  choose(*m_app, *m_window, FileUrl::fromPath(folder));
  QTRY_VERIFY(m_window->shows("5.jpg"));
  m_window->click("5.jpg", Qt::ControlModifier);
  QTRY_VERIFY(m_window->shows("Delete"));
  for (int screens = 0; !m_window->shows("504.jpg"); ++screens) {
    QVERIFY(screens < 100);
    m_window->scroll(400);
    (void)m_window->grab();  // laid out
  }
  m_window->click("504.jpg", Qt::ShiftModifier);
  QTRY_VERIFY(m_window->shows("500 selected"));

  m_app->platform.alert.answer = 1;
  m_window->click("Delete");
  QCOMPARE(m_app->platform.alert.asked.last().first(), QStringLiteral("Move 500 photos to Trash?"));
  QVERIFY(inTrash().isEmpty());
  m_app->platform.alert.answer = 0;
  m_window->click("Delete");
  QTRY_VERIFY(m_window->shows("Moved 500 photos to Trash."));
  for (int number = 0; number < 1000; ++number) {
    const QByteArray name = QByteArray::number(number) + ".jpg";
    const bool isMoved = number >= 5 && number <= 504;
    QCOMPARE(readFile(folder + '/' + name).has_value(), !isMoved);
    QCOMPARE(isWholeInTrash(name, m_photo), isMoved);
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
  const QByteArray path = QFile::encodeName(m_folder->path()) + '/' + name;
  QVERIFY(writeFile(path, m_photo));
  const QString shown = QString::fromUtf8(name);
  choose(*m_app, *m_window, FileUrl::fromPath(path).parent());
  QTRY_VERIFY(m_window->shows(shown));
  m_window->click(shown);
  QTRY_VERIFY(m_window->shows("1 / 1"));
  if (isGone) QCOMPARE(::unlink(path.constData()), 0);
  m_app->platform.alert.answer = answer;
  m_window->press(Qt::Key_Delete);
  QCOMPARE(m_app->platform.alert.asked.last()[1], QStringLiteral("\"%1\" will be moved to the Trash.").arg(shown));

  QCOMPARE(isWholeInTrash(name, m_photo), moves);
  QCOMPARE(readFile(path).has_value(), !moves && !isGone);
  if (moves) {
    QTRY_VERIFY(m_window->shows(QStringLiteral("Moved \"%1\" to the Trash.").arg(shown)));
    QVERIFY(m_window->shows("Choose a folder to start browsing."));
  } else {
    QTRY_VERIFY(m_window->shows("1 / 1"));
    QCOMPARE(m_window->library.statusMessage().startsWith(QStringLiteral("Delete failed: ")), answer == 0);
    QVERIFY(m_window->shows(m_window->library.statusMessage()));
    QVERIFY(inTrash().isEmpty());
  }
  // By its bytes: a folder is not removed with a name that is not UTF-8.
  for (const QByteArray& file : {m_trashFolder + "/files/" + name, m_trashFolder + "/info/" + name + ".trashinfo"}) {
    ::unlink(file.constData());
  }
}

void TrashUiTest::whatIsGoneIsCountedAsFailed() {
  const QByteArray folder = QFile::encodeName(m_folder->path());
  for (const char* name : {"/0.jpg", "/1.jpg", "/2.jpg"}) QVERIFY(writeFile(folder + name, m_photo));
  choose(*m_app, *m_window, FileUrl::fromPath(folder));
  QTRY_VERIFY(m_window->shows("2.jpg"));
  m_window->click("0.jpg", Qt::ControlModifier);
  m_window->click("2.jpg", Qt::ShiftModifier);
  QTRY_VERIFY(m_window->shows("Delete") && m_window->shows("3 selected"));
  QCOMPARE(::unlink((folder + "/1.jpg").constData()), 0);
  m_window->click("Delete");
  QTRY_VERIFY(m_window->shows("Moved 2 photos to Trash. 1 failed."));
  QCOMPARE(inTrash(), (QStringList{QStringLiteral("0.jpg"), QStringLiteral("2.jpg")}));
  QVERIFY(isWholeInTrash("0.jpg", m_photo) && isWholeInTrash("2.jpg", m_photo));
}

void TrashUiTest::aKilledProcessLosesNothing_data() {
  QTest::addColumn<int>("movesToLive");
  QTest::newRow("at the start of a batch") << 1;
  QTest::newRow("in the middle of a batch") << kBatch / 2;
  QTest::newRow("near the end of a batch") << kBatch - 20;
}

void TrashUiTest::aKilledProcessLosesNothing() {
  QFETCH(int, movesToLive);
  const QByteArray folder = QFile::encodeName(m_folder->path());
  const auto name = [](int number) { return QByteArray::number(number) + ".jpg"; };
  for (int number = 0; number < kBatch; ++number) QVERIFY(writeFile(folder + '/' + name(number), m_photo));
  QProcess child;
  child.start(QCoreApplication::applicationFilePath(),
              {QStringLiteral("--move-until-killed"), m_folder->path(), QString::number(movesToLive)});
  QVERIFY(child.waitForFinished());
  QCOMPARE(child.exitStatus(), QProcess::CrashExit);
  QCOMPARE(child.exitCode(), SIGKILL);
  int moved = 0;
  for (int number = 0; number < kBatch; ++number) {
    const bool isInFolder = readFile(folder + '/' + name(number)) == m_photo;
    const bool isInTrash = isWholeInTrash(name(number), m_photo);
    QVERIFY2(isInFolder != isInTrash, name(number).constData());
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
