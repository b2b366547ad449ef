#include <unistd.h>

#include <QProcess>
#include <csignal>
#include <filesystem>
#include <thread>

#include "DesktopTrash.h"
#include "UiWindow.h"

using namespace lumagrid;

namespace {

constexpr int kPhotos = 1000;
constexpr int kBatch = 400;  // photos that the child process moves until it is killed

// The program's own Trash, whose process is killed soon after a number of moves, wherever it then is; it never comes to
// the end of the batch.
struct FatalTrash final : Trash {
  int movesToLive = 0;
  int moves = 0;
  DesktopTrash trash;

  std::optional<QString> trashItem(const FileUrl& file, const FileIdentity& meant) override {
    if (moves == movesToLive) std::thread([] { ::kill(::getpid(), SIGKILL); }).detach();
    while (moves >= kBatch - 1) ::pause();
    ++moves;
    return trash.trashItem(file, meant);
  }
};

// From one photo to another, by their numbers, with the window's own button.
void moveToTrash(UiWindow& window, int first, int last) {
  window.library.toggleSelection(first);
  window.library.extendSelection(last);
  QTRY_VERIFY(window.shows("Delete"));
  window.click("Delete");
}

// The last is no ordinary name: it is not UTF-8.
QByteArray nameOf(int number) {
  return number == kPhotos - 1 ? QByteArray("caf\xE9.jpg") : QByteArray::number(number) + ".jpg";
}

}  // namespace

// Photos are moved into the Trash of a home folder made for the test. Whatever happens, each file is afterwards whole
// in its folder, or whole in the Trash with the record that restores it.
class TrashUiTest : public QObject {
  Q_OBJECT

 private Q_SLOTS:
  void halfOfAFolderAtOnce() {
    fillFolder(kPhotos);
    DesktopTrash trash;
    UiApp app(ColorScheme::light, &trash);
    UiWindow window(app, FileUrl::fromPath(path()));
    app.platform.alert.answer = AlertRole::cancel;
    moveToTrash(window, 500, kPhotos - 1);
    QCOMPARE(app.platform.alert.asked.last().first(), QStringLiteral("Move 500 photos to Trash?"));
    QVERIFY(!QFile::exists(QFile::decodeName(m_trashFolder)));
    app.platform.alert.answer = AlertRole::accept;
    QCOMPARE(::unlink(path("777.jpg").constData()), 0);  // by another program
    window.click("Delete");
    QTRY_VERIFY(window.shows("Moved 499 photos to Trash. 1 failed."));
    for (int number = 0; number < kPhotos; ++number) {
      const bool isMoved = number >= 500 && number != 777;
      QCOMPARE(readFile(path(nameOf(number))).has_value(), !isMoved && number != 777);
      QCOMPARE(isWholeInTrash(nameOf(number)), isMoved);
    }
  }

  void aKilledProcessLosesNothing() {
    for (const int movesToLive : {1, kBatch / 2, kBatch - 20}) {
      fillFolder(kBatch);
      QProcess child;
      child.start(QCoreApplication::applicationFilePath(),
                  {QStringLiteral("--move-until-killed"), m_folder->path(), QString::number(movesToLive)});
      QVERIFY(child.waitForFinished(60'000));  // moves wait for a busy disk
      QCOMPARE(child.exitCode(), SIGKILL);
      int moved = 0;
      for (int number = 0; number < kBatch; ++number) {
        const bool isInTrash = isWholeInTrash(nameOf(number));
        QVERIFY2((readFile(path(nameOf(number))) == m_photo) != isInTrash, nameOf(number).constData());
        moved += isInTrash;
      }
      QVERIFY(moved >= movesToLive && moved < kBatch);
    }
  }

 private:
  // Afresh, and empties the Trash: by bytes, since not all names in it are UTF-8.
  void fillFolder(int count) {
    std::filesystem::remove_all(m_trashFolder.toStdString());
    m_folder = std::make_unique<QTemporaryDir>(QFile::decodeName(qgetenv("HOME")) + QStringLiteral("/XXXXXX"));
    for (int number = 0; number < count; ++number) QVERIFY(writeFile(path(nameOf(number)), m_photo));
  }
  [[nodiscard]] QByteArray path(const QByteArray& name = {}) const {
    return QFile::encodeName(m_folder->path()) + '/' + name;
  }
  [[nodiscard]] bool isWholeInTrash(const QByteArray& name) const {
    return readFile(m_trashFolder + "/files/" + name) == m_photo &&
           readFile(m_trashFolder + "/info/" + name + ".trashinfo").value_or("").startsWith("[Trash Info]\nPath=");
  }

  const QByteArray m_trashFolder = qgetenv("XDG_DATA_HOME") + "/Trash";
  const QByteArray m_photo = samplePhoto({20, 20});
  std::unique_ptr<QTemporaryDir> m_folder;  // on the home's file system, as its Trash is
};

int main(int argc, char** argv) {
  if (argc == 4 && qstrcmp(argv[1], "--move-until-killed") == 0) {  // in the home of the process that started it
    QGuiApplication application(argc, argv);
    FatalTrash trash;
    trash.movesToLive = QByteArray(argv[3]).toInt();
    UiApp app(ColorScheme::light, &trash);
    UiWindow window(app, FileUrl::fromPath(QByteArray(argv[2])));
    moveToTrash(window, 0, kBatch - 1);
    return EXIT_FAILURE;
  }
  const TemporaryHome home;
  QGuiApplication application(argc, argv);
  TrashUiTest test;
  return QTest::qExec(&test, argc, argv);
}

#include "TrashUiTest.moc"
