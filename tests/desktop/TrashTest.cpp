#include <fcntl.h>
#include <sys/resource.h>

#include <QStorageInfo>
#include <QTest>
#include <csignal>

#include "DesktopTrash.h"
#include "TemporaryHome.h"
#include "TrashFolder.h"

using namespace lumagrid;

namespace {

// On another file system than temporary folders, made while this process may still be root's; null where there is none
// to write to.
std::unique_ptr<QTemporaryDir> folderOnAnotherFileSystem() {
  struct stat home = {};
  if (::stat(QFile::encodeName(QDir::tempPath()).constData(), &home) != 0) return nullptr;
  for (const QByteArray parent : {"/dev/shm", "/run", "/tmp", "/var/tmp", "/dev"}) {
    struct stat other = {};
    if (::stat(parent.constData(), &other) != 0 || other.st_dev == home.st_dev) continue;
    auto folder = std::make_unique<QTemporaryDir>(QFile::decodeName(parent + "/lumagrid-XXXXXX"));
    if (!folder->isValid()) continue;
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

// With no room for more than this in any file: writing fails as on a full disk.
class FileSizeLimit {
 public:
  explicit FileSizeLimit(rlim_t bytes) {
    std::signal(SIGXFSZ, SIG_IGN);
    ::getrlimit(RLIMIT_FSIZE, &m_before);
    const rlimit limit = {bytes, m_before.rlim_max};
    ::setrlimit(RLIMIT_FSIZE, &limit);
  }
  ~FileSizeLimit() { ::setrlimit(RLIMIT_FSIZE, &m_before); }
  Q_DISABLE_COPY_MOVE(FileSizeLimit)

 private:
  rlimit m_before = {};
};

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
  QByteArray m_folder;  // a new one for each case

 private Q_SLOTS:
  void init() {
    static int count = 0;
    std::filesystem::remove_all(m_trash.toStdString());
    m_folder = kHome.path() + '/' + QByteArray::number(++count) + '/';
    QCOMPARE(::mkdir(m_folder.constData(), 0700), 0);
  }

  void movesWholeWithARecord_data() {
    QTest::addColumn<QByteArray>("name");
    QTest::newRow("no ordinary name") << QByteArray("caf\xE9\n%41 [x]=;.jpg");
    QTest::newRow("a name that leaves no room for that of its record") << QByteArray("\u00E9").repeated(125) + "x.jpg";
    QTest::newRow("… nor an extension") << QByteArray(255, 'x');
  }

  // Files of one name are all kept.
  void movesWholeWithARecord() {
    QFETCH(QByteArray, name);
    QMultiMap<QByteArray, QByteArray> expected;
    for (const char* content : {"first", "second", "third"}) {
      QVERIFY(writeFile(m_folder + name, content));
      QCOMPARE(moveToTrash(m_folder + name), std::nullopt);
      QCOMPARE(readFile(m_folder + name), std::nullopt);
      expected.insert(m_folder + name, content);
    }
    const auto found = contentOf(m_trash);
    for (const char* content : {"first", "second", "third"}) QVERIFY(found.contains(m_folder + name, content));
    QCOMPARE(found.size(), 3);
    for (const auto& entry : std::filesystem::directory_iterator((m_trash + "/files").toStdString())) {
      const QByteArray kept = QByteArray::fromStdString(entry.path().filename().string());
      QCOMPARE(kept.isValidUtf8(), name.isValidUtf8());
      QCOMPARE(kept.endsWith(".jpg"), name.endsWith(".jpg"));
    }
  }

  void movesWhatWasMeantAlone_data() {
    QTest::addColumn<QByteArray>("command");  // in the folder, between the question and the move
    QTest::addColumn<QString>("reason");
    const QString another = QStringLiteral("It is not the same photo any more");
    QTest::newRow("a folder") << QByteArray("mv photo.jpg away; mkdir photo.jpg; echo x > photo.jpg/x") << another;
    QTest::newRow("a link to the photo") << QByteArray("mv photo.jpg away; ln -s away photo.jpg") << another;
    QTest::newRow("another file") << QByteArray("cp -p photo.jpg other; mv other photo.jpg") << another;
    QTest::newRow("another size") << QByteArray("echo >> photo.jpg; touch -d @1 photo.jpg") << another;
    QTest::newRow("another date") << QByteArray("touch -d @2 photo.jpg") << another;
    QTest::newRow("nothing") << QByteArray("mv photo.jpg away") << QStringLiteral("No such file or directory");
  }

  void movesWhatWasMeantAlone() {
    QFETCH(QByteArray, command);
    const FileUrl photo = FileUrl::fromPath(m_folder + "photo.jpg");
    QVERIFY(writeFile(photo.path(), "photo"));
    QCOMPARE(std::system("touch -d @1 " + photo.path()), 0);
    const FileIdentity meant = FileIdentity::of(photo);
    QCOMPARE(std::system("cd " + m_folder + " && " + command), 0);
    const QStringList before = filesBelow(m_folder);
    const std::optional<QString> reason = DesktopTrash().trashItem(photo, meant);
    QTEST(reason.value_or(QString()), "reason");
    // … nor does a new question, unless it is about a file.
    if (const QFileInfo now(QFile::decodeName(photo.path())); now.isDir() || now.isSymLink()) {
      QVERIFY(moveToTrash(photo.path()));
    }
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
    QTest::addColumn<int>("mode");
    QTest::addColumn<int>("room");
    QTest::addColumn<QString>("reason");
    QTest::newRow("a folder that may not be written to") << 0500 << 1000 << QStringLiteral("Permission denied");
    QTest::newRow("no room for the record") << 0700 << 0 << QStringLiteral("File too large");
    QTest::newRow("no room for all of the record") << 0700 << 20 << QStringLiteral("File too large");
  }

  void leavesWholeWhatItCannotMove() {
    QFETCH(int, mode);
    QFETCH(int, room);
    QVERIFY(writeFile(m_folder + "photo.jpg", "x"));
    QCOMPARE(::chmod(m_folder.constData(), mode_t(mode)), 0);
    std::optional<QString> reason;
    {
      const FileSizeLimit limit{rlim_t(room)};
      reason = moveToTrash(m_folder + "photo.jpg");
    }
    QCOMPARE(::chmod(m_folder.constData(), 0700), 0);
    QTEST(reason.value_or(QString()), "reason");
    QCOMPARE(readFile(m_folder + "photo.jpg"), "x");
    QVERIFY(contentOf(m_trash).isEmpty() && !readFile(m_trash + "/files/photo.jpg"));
  }

  void theTrashOnTopOfAFileSystem_data() {
    QTest::addColumn<QByteArray>("prepared");  // in the top folder
    QTest::addColumn<QByteArray>("expected");  // the Trash; empty: none
    QTest::newRow("one of the user's own") << QByteArray("true") << QByteArray(".Trash-UID");
    QTest::newRow("one for all users") << QByteArray("mkdir -m 1777 .Trash") << QByteArray(".Trash/UID");
    QTest::newRow("not where others could take files away")
        << QByteArray("mkdir -m 0777 .Trash") << QByteArray(".Trash-UID");
    QTest::newRow("not through a link") << QByteArray("mkdir -m 1777 other; ln -s other .Trash")
                                        << QByteArray(".Trash-UID");
    QTest::newRow("nor through one of the user's")
        << QByteArray("mkdir other; ln -s other .Trash-$(id -u)") << QByteArray();
  }

  void theTrashOnTopOfAFileSystem() {
    QFETCH(QByteArray, prepared);
    QFETCH(QByteArray, expected);
    QCOMPARE(std::system("cd " + m_folder + " && " + prepared), 0);
    QVERIFY(writeFile(m_folder + "photo.jpg", "x"));
    const auto trash = TrashFolder::onTop(m_folder);
    QCOMPARE(trash.has_value(), !expected.isEmpty());
    if (!trash) return;
    const FileDescriptor folder = opened(m_folder);
    const FileDescriptor photo = opened(m_folder + "photo.jpg");
    QVERIFY(trash->take({folder, "photo.jpg", photo, "photo.jpg"}));
    expected.replace("UID", QByteArray::number(::getuid()));
    QCOMPARE(contentOf(m_folder + expected), (QMultiMap<QByteArray, QByteArray>{{"photo.jpg", "x"}}));
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
