#include <fcntl.h>
#include <sched.h>
#include <sys/prctl.h>
#include <sys/wait.h>

#include <QStorageInfo>
#include <csignal>
#include <functional>
#include <random>
#include <thread>

#include "DesktopTrash.h"
#include "Table.h"
#include "TemporaryHome.h"
#include "TrashFolder.h"

using namespace lumagrid;

namespace {

// What is done before, and what comes of it.
using Row = std::pair<QByteArray, QByteArray>;

// On another file system than temporary folders, made while this process may still be root's; null where there is none
// to write to.
std::unique_ptr<QTemporaryDir> folderOnAnotherFileSystem() {
  for (const char* parent : {"/dev/shm", "/run", "/tmp", "/var/tmp", "/dev"}) {
    auto folder = std::make_unique<QTemporaryDir>(QLatin1String(parent) + QLatin1String("/lumagrid-XXXXXX"));
    if (!folder->isValid() || QStorageInfo(folder->path()) == QStorageInfo(QDir::tempPath())) continue;
    if (::geteuid() == 0) TemporaryHome::giveToNobody(QFile::encodeName(folder->path()));
    return folder;
  }
  return nullptr;
}

const std::unique_ptr<QTemporaryDir> kOtherFileSystem = folderOnAnotherFileSystem();
const TemporaryHome kHome;

std::optional<QString> moveToTrash(const QByteArray& path) {
  const FileUrl file = FileUrl::fromPath(path);
  return DesktopTrash().trashItem(file, FileIdentity::of(file));
}

// What a Trash would give back: each file's content by the path in its record.
QMultiMap<QByteArray, QByteArray> contentOf(const QByteArray& trash) {
  QMultiMap<QByteArray, QByteArray> files;
  std::error_code none;
  for (const auto& entry : std::filesystem::directory_iterator(trash.toStdString() + "/info", none)) {
    const QByteArray record = QByteArray::fromStdString(entry.path().filename().string());
    const QByteArrayList lines = readFile(trash + "/info/" + record).value_or("").split('\n');
    const bool isWhole =
        lines.size() == 4 && lines[0] == "[Trash Info]" && lines[1].startsWith("Path=") &&
        QDateTime::fromString(QString::fromLatin1(lines[2]), QStringLiteral("'DeletionDate='yyyy-MM-ddThh:mm:ss"))
            .isValid();
    files.insert(isWhole ? QByteArray::fromPercentEncoding(lines[1].mid(5)) : "damaged: " + record,
                 readFile(trash + "/files/" + record.chopped(10)).value_or("nothing"));
  }
  return files;
}

// In the home folder.
bool run(const QByteArray& commands) {
  return std::system(("cd \"$HOME\" && " + commands).constData()) == 0;
}

enum class Apart { process, mounts };

// What `work` says in a process of its own, which can also mount what it likes for itself where the system lets it.
QByteArray saidApart(const std::function<QByteArray()>& work, Apart apart) {
  int said[2] = {};
  if (::pipe(said) != 0) qFatal("No pipe");
  const pid_t child = ::fork();
  if (child == 0) {
    std::signal(SIGXFSZ, SIG_IGN);
    const QByteArray uid = "0 " + QByteArray::number(::getuid()) + " 1";
    const QByteArray gid = "0 " + QByteArray::number(::getgid()) + " 1";
    ::prctl(PR_SET_DUMPABLE, 1);  // who has dropped privileges owns not even what the system tells of him
    if (apart == Apart::mounts && ::unshare(CLONE_NEWUSER | CLONE_NEWNS) == 0) {
      writeFile("/proc/self/setgroups", "deny");
      writeFile("/proc/self/uid_map", uid);
      writeFile("/proc/self/gid_map", gid);
    }
    const QByteArray text = work();
    ::_exit(::write(said[1], text.constData(), std::size_t(text.size())) == text.size() ? 0 : 1);
  }
  ::close(said[1]);
  char text[256] = {};
  const ssize_t size = ::read(said[0], text, sizeof text);
  ::close(said[0]);
  ::waitpid(child, nullptr, 0);
  return QByteArray(text, std::max<ssize_t>(size, 0));
}

FileDescriptor opened(const QByteArray& path) {
  return FileDescriptor::from([&] { return ::open(path.constData(), O_PATH | O_NOFOLLOW | O_CLOEXEC); });
}

}  // namespace

// Whatever happens to a file, it is afterwards whole in its place, or whole in the Trash with the record that restores
// it.
class TrashTest : public QObject {
  Q_OBJECT

 private:
  const QByteArray m_trash = qgetenv("XDG_DATA_HOME") + "/Trash";
  const QByteArray m_folder = kHome.path() + "/photos/";  // a new one for each case

 private Q_SLOTS:
  void init() { QVERIFY(run("chmod -R u+rwX . && rm -rf photos data && mkdir photos")); }

  void movesWholeWithARecord_data() {
    addRows<QByteArray>({{"no ordinary name", "caf\xE9\n%41 [x]=;.jpg"},
                         {"a name that leaves no room for its record's", QByteArray("\u00E9").repeated(125) + "x.jpg"},
                         {"… nor an extension", QByteArray(255, 'x')}});
  }

  // Files of one name are all kept.
  void movesWholeWithARecord() {
    QFETCH(const QByteArray, row);
    const QByteArray path = m_folder + row;
    for (const char* content : {"first", "second", "third"}) {
      QVERIFY(writeFile(path, content));
      QCOMPARE(moveToTrash(path), std::nullopt);
      QCOMPARE(readFile(path), std::nullopt);
      QVERIFY(contentOf(m_trash).contains(path, content));
    }
    QCOMPARE(contentOf(m_trash).size(), 3);
    for (const auto& entry : std::filesystem::directory_iterator((m_trash + "/files").toStdString())) {
      const QByteArray kept = QByteArray::fromStdString(entry.path().filename().string());
      QCOMPARE(kept.isValidUtf8(), row.isValidUtf8());
      QCOMPARE(kept.endsWith(".jpg"), row.endsWith(".jpg"));
    }
  }

  // A process that is ended at any moment of a batch loses nothing.
  void aKilledProcessLosesNothing() {
    constexpr int kPhotos = 500;
    constexpr int kRounds = 12;
    std::minstd_rand random(1);
    for (int round = 0; round < kRounds; ++round) {
      init();
      const auto path = [this](int number) { return m_folder + QByteArray::number(number) + ".jpg"; };
      for (int number = 0; number < kPhotos; ++number) QVERIFY(writeFile(path(number), "photo"));
      int moves[2] = {};
      QCOMPARE(::pipe(moves), 0);
      const pid_t child = ::fork();
      if (child == 0) {
        std::signal(SIGTERM, SIG_DFL);
        for (int number = 0; number < kPhotos; ++number) {
          if (moveToTrash(path(number)) || ::write(moves[1], "x", 1) != 1) break;
        }
        ::pause();
      }
      char move = 0;
      const int movesToLive = kPhotos * round / kRounds + int(random() % (kPhotos / kRounds));
      for (int count = 0; count < movesToLive; ++count) QCOMPARE(::read(moves[0], &move, 1), 1);
      std::this_thread::sleep_for(std::chrono::microseconds(random() % 100));
      ::kill(child, round % 2 == 0 ? SIGKILL : SIGTERM);
      QCOMPARE(::waitpid(child, nullptr, 0), child);
      for (const int end : moves) ::close(end);
      const auto found = contentOf(m_trash);
      for (int number = 0; number < kPhotos; ++number) {
        QVERIFY((readFile(path(number)) == "photo") != found.contains(path(number), "photo"));
      }
    }
  }

  // What happens in the folder between the question and the move.
  void movesWhatWasMeantAlone_data() {
    addRows<QByteArray>({{"a folder", "mv photo.jpg away; mkdir photo.jpg; echo x > photo.jpg/x"},
                         {"a link to the photo", "mv photo.jpg away; ln -s away photo.jpg"},
                         {"another file", "cp -p photo.jpg other; mv other photo.jpg"},
                         {"another size", "echo >> photo.jpg; touch -d @1 photo.jpg"},
                         {"another date", "touch -d @2 photo.jpg"},
                         {"nothing", "mv photo.jpg away"}});
  }

  void movesWhatWasMeantAlone() {
    QFETCH(const QByteArray, row);
    const FileUrl photo = FileUrl::fromPath(m_folder + "photo.jpg");
    QVERIFY(writeFile(photo.path(), "photo"));
    QCOMPARE(std::system("touch -d @1 " + photo.path()), 0);
    const FileIdentity meant = FileIdentity::of(photo);
    QVERIFY(run("cd photos && " + row));
    const QStringList before = filesBelow(m_folder);
    const QFileInfo now(QFile::decodeName(photo.path()));
    QCOMPARE(DesktopTrash().trashItem(photo, meant).value_or(QString()),
             now.exists() ? QStringLiteral("It is not the same photo any more")
                          : QStringLiteral("No such file or directory"));
    // … nor does a new question, unless it is about a file.
    if (now.isDir() || now.isSymLink()) QVERIFY(moveToTrash(photo.path()));
    QCOMPARE(filesBelow(m_folder), before);
    QVERIFY(contentOf(m_trash).isEmpty());
  }

  void replacesNothing() {
    QVERIFY(TrashFolder::at(m_trash));
    QVERIFY(writeFile(m_trash + "/files/photo.jpg", "without a record"));
    QVERIFY(writeFile(m_folder + "photo.jpg", "x"));
    QCOMPARE(moveToTrash(m_folder + "photo.jpg"), std::nullopt);
    QCOMPARE(readFile(m_trash + "/files/photo.jpg"), "without a record");
    QCOMPARE(contentOf(m_trash), (QMultiMap<QByteArray, QByteArray>{{m_folder + "photo.jpg", "x"}}));
  }

  // It got the name after it was looked at.
  void anotherFileGoesBack() {
    QVERIFY(writeFile(m_folder + "photo.jpg", "another") && writeFile(m_folder + "away.jpg", "photo"));
    const FileDescriptor folder = opened(m_folder);
    const FileDescriptor photo = opened(m_folder + "away.jpg");
    QVERIFY(!TrashFolder::at(m_trash)->take({folder, "photo.jpg", photo, m_folder + "photo.jpg"}));
    QCOMPARE(errno, ESTALE);
    QCOMPARE(readFile(m_folder + "photo.jpg"), "another");
    QVERIFY(contentOf(m_trash).isEmpty());
  }

  void leavesWholeWhatItCannotMove_data() {
    const QByteArray disk =
        "mount -t tmpfs -o size=64k,nr_inodes=20 none . && cd \"$HOME\" && mkdir photos && "
        "printf x > photos/photo.jpg && mkdir -p data/Trash/files data/Trash/info && ";
    const QByteArray readOnly = "mount --bind $1 $1 && mount -o remount,bind,ro $1";
    addRows<Row>({
        {"a folder that cannot be written", {"chmod 500 photos", "Permission denied"}},
        {"a Trash that cannot be written",
         {"mkdir -p data/Trash && chmod 500 data/Trash", "There is no Trash for it (Permission denied)"}},
        {"records that cannot be written",
         {"mkdir -p data/Trash/info && chmod 500 data/Trash/info", "Permission denied"}},
        {"a Trash that takes no files",
         {"mkdir -p data/Trash/files && chmod 500 data/Trash/files", "Permission denied"}},
        {"a file in the Trash's place",
         {"mkdir data && touch data/Trash", "There is no Trash for it (Not a directory)"}},
        {"no room for a record", {"prlimit --pid $PPID --fsize=0", "File too large"}},
        {"… but for its begin", {"prlimit --pid $PPID --fsize=20", "File too large"}},
        {"a full disk", {disk + "! head -c 99999 /dev/zero 2>&- > filler", "No space left on device"}},
        {"a disk that takes no more files",
         {disk + "while touch $((i = i + 1)) 2>&-; do :; done", "No space left on device"}},
        {"a disk that became read-only",
         {"mkdir -p data/Trash/files data/Trash/info && set -- \"$HOME\" && " + readOnly, "Read-only file system"}},
        {"a disk of its own that is read-only", {"set -- photos && " + readOnly, "There is no Trash for it"}},
    });
  }

  void leavesWholeWhatItCannotMove() {
    const auto [commands, reason] = fetchedRow<Row>();
    const QByteArray path = m_folder + "photo.jpg";
    QVERIFY(writeFile(path, "x"));
    const auto move = [&, commands = commands] {
      if (!run(commands)) return QByteArray("no");
      const QByteArray said = moveToTrash(path).value_or(QStringLiteral("moved")).toUtf8();
      const bool isUntouched = readFile(path) == "x" && contentOf(m_trash).isEmpty();
      return said + (isUntouched && !readFile(m_trash + "/files/photo.jpg") ? "" : ", and not whole");
    };
    const bool isMount = commands.contains("mount ");
    const QByteArray said = saidApart(move, isMount ? Apart::mounts : Apart::process);
    if (isMount && said == "no") QSKIP("This system lets nobody mount anything");
    QVERIFY2(said.startsWith(reason) && !said.endsWith("whole"), said.constData());
  }

  // What is prepared in the top folder, and the Trash there; empty: none.
  void theTrashOnTopOfAFileSystem_data() {
    addRows<Row>({{"one of the user's own", {"true", ".Trash-UID"}},
                  {"one for all users", {"mkdir -m 1777 .Trash", ".Trash/UID"}},
                  {"not where others could take files away", {"mkdir -m 0777 .Trash", ".Trash-UID"}},
                  {"not through a link", {"mkdir -m 1777 other; ln -s other .Trash", ".Trash-UID"}},
                  {"nor through one of the user's", {"mkdir other; ln -s other .Trash-$(id -u)", ""}}});
  }

  void theTrashOnTopOfAFileSystem() {
    auto [commands, made] = fetchedRow<Row>();
    QVERIFY(run("cd photos && " + commands));
    QVERIFY(writeFile(m_folder + "photo.jpg", "x"));
    const auto trash = TrashFolder::onTop(m_folder);
    QCOMPARE(trash.has_value(), !made.isEmpty());
    if (!trash) return;
    QVERIFY(trash->take({opened(m_folder), "photo.jpg", opened(m_folder + "photo.jpg"), "photo.jpg"}));
    const QByteArray place = m_folder + made.replace("UID", QByteArray::number(::getuid()));
    QCOMPARE(contentOf(place), (QMultiMap<QByteArray, QByteArray>{{"photo.jpg", "x"}}));
  }

  // Never as a copy in the home's Trash, and not where no file manager would look for it.
  void anotherFileSystemKeepsItsFileOrHasATrash() {
    QVERIFY2(kOtherFileSystem, "There is no other file system than the home's to write to");
    const QStorageInfo fileSystem(kOtherFileSystem->path());
    const QByteArray name = QFile::encodeName(QFileInfo(kOtherFileSystem->path()).fileName()) + ".jpg";
    const QByteArray path = QFile::encodeName(kOtherFileSystem->path()) + '/' + name;
    QVERIFY(writeFile(path, "x"));
    const bool isRefused = moveToTrash(path).has_value();
    QVERIFY(isRefused || fileSystem.fileSystemType() != "tmpfs");
    const QByteArray top = QFile::encodeName(fileSystem.rootPath());
    const QByteArray trash = top + "/.Trash-" + QByteArray::number(::getuid());
    QCOMPARE(contentOf(trash).value(path.mid(top.size() + 1)), isRefused ? QByteArray() : QByteArray("x"));
    QCOMPARE(readFile(path).has_value(), isRefused);
    QVERIFY(contentOf(m_trash).isEmpty());
    ::unlink((trash + "/files/" + name).constData());
    ::unlink((trash + "/info/" + name + ".trashinfo").constData());
  }
};

QTEST_GUILESS_MAIN(TrashTest)
#include "TrashTest.moc"
