#include <QDateTime>
#include <QStorageInfo>
#include <QTest>

#include "GioTrash.h"
#include "TemporaryHome.h"

#ifdef __SANITIZE_ADDRESS__
// GIO 2.74 leaks the text of its record when it cannot make the record's file; whole stacks tell those leaks from ours.
extern "C" Q_DECL_EXPORT const char* __asan_default_options() {
  return "fast_unwind_on_malloc=0";
}
extern "C" Q_DECL_EXPORT const char* __lsan_default_suppressions() {
  return "leak:libgio-2.0.so\n";
}
#endif

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

}  // namespace

// Whatever happens to a file, it is afterwards whole in its place, or whole in the Trash with the record that restores
// it.
class TrashTest : public QObject {
  Q_OBJECT

 private:
  const QByteArray m_trash = qgetenv("XDG_DATA_HOME") + "/Trash";

  // Refused with a reason, and untouched.
  [[nodiscard]] bool isLeftWhole(const QByteArray& path) const {
    const QByteArray name = path.split('/').last();
    const std::optional<QByteArray> content = readFile(path);
    const std::optional<QString> reason = GioTrash().trashItem(FileUrl::fromPath(path));
    return reason && !reason->isEmpty() && readFile(path) == content && !readFile(m_trash + "/files/" + name) &&
           !readFile(m_trash + "/info/" + name + ".trashinfo");
  }

 private Q_SLOTS:
  void movesWholeWithARecord_data() {
    QTest::addColumn<QByteArray>("name");
    QTest::newRow("an ordinary file") << QByteArray("photo.jpg");
    QTest::newRow("a name that is not UTF-8") << QByteArray("caf\xE9.jpg");
    QTest::newRow("a name with line breaks, percent signs and brackets") << QByteArray("a\nb %41 [x]=;.jpg");
    QTest::newRow("a name that starts with a dash") << QByteArray("-rf");
  }

  void movesWholeWithARecord() {
    QFETCH(QByteArray, name);
    const QByteArray path = kHome.path() + '/' + name;
    QVERIFY(writeFile(path, "content of " + name));
    const QDateTime before = QDateTime::currentDateTime().addSecs(-1);
    QCOMPARE(GioTrash().trashItem(FileUrl::fromPath(path)), std::nullopt);
    QCOMPARE(readFile(path), std::nullopt);
    QCOMPARE(readFile(m_trash + "/files/" + name), "content of " + name);
    const QByteArrayList record = readFile(m_trash + "/info/" + name + ".trashinfo").value_or(QByteArray()).split('\n');
    QVERIFY(record.size() >= 3 && record[0] == "[Trash Info]");
    QCOMPARE(QByteArray::fromPercentEncoding(record[1]), "Path=" + path);
    const auto date =
        QDateTime::fromString(QString::fromLatin1(record[2]), QStringLiteral("'DeletionDate='yyyy-MM-ddTHH:mm:ss"));
    QVERIFY(date >= before && date <= QDateTime::currentDateTime());
  }

  void twoFilesOfOneNameAreBothKept() {
    for (const char* content : {"first", "second"}) {
      QVERIFY(writeFile(kHome.path() + "/twin.jpg", content));
      QCOMPARE(GioTrash().trashItem(FileUrl::fromPath(kHome.path() + "/twin.jpg")), std::nullopt);
    }
    QByteArrayList contents;
    const QDir files(QFile::decodeName(m_trash + "/files"));
    for (const QString& twin : files.entryList({QStringLiteral("twin*")}, QDir::Files)) {
      contents.append(readFile(QFile::encodeName(files.filePath(twin))).value_or(QByteArray()));
      QVERIFY(readFile(m_trash + "/info/" + QFile::encodeName(twin) + ".trashinfo"));
    }
    std::sort(contents.begin(), contents.end());
    QCOMPARE(contents, (QByteArrayList{"first", "second"}));
  }

  void aLinkGoesAndItsTargetStays() {
    QVERIFY(writeFile(kHome.path() + "/target.jpg", "x"));
    QCOMPARE(::symlink("target.jpg", (kHome.path() + "/link.jpg").constData()), 0);
    QCOMPARE(GioTrash().trashItem(FileUrl::fromPath(kHome.path() + "/link.jpg")), std::nullopt);
    QCOMPARE(readFile(kHome.path() + "/link.jpg"), std::nullopt);
    QCOMPARE(readFile(kHome.path() + "/target.jpg"), "x");
  }

  void leavesWholeWhatItCannotMove() {
    QVERIFY(isLeftWhole(kHome.path() + "/gone.jpg"));
    const QByteArray longest = kHome.path() + '/' + QByteArray(251, 'n') + ".jpg";  // no room for its record's name
    QVERIFY(writeFile(longest, "x"));
    QVERIFY(isLeftWhole(longest));
    const QByteArray folder = kHome.path() + "/locked";
    QCOMPARE(::mkdir(folder.constData(), 0700), 0);
    QVERIFY(writeFile(folder + "/locked.jpg", "x"));
    QCOMPARE(::chmod(folder.constData(), 0500), 0);
    const bool isLeft = isLeftWhole(folder + "/locked.jpg");
    QCOMPARE(::chmod(folder.constData(), 0700), 0);
    QVERIFY(isLeft);
  }

  // Never as a copy in the home's Trash.
  void anotherFileSystemKeepsItsFileOrHasATrash() {
    QVERIFY2(kOtherFileSystem, "There is no other file system than the home's to write to");
    const QString folder = kOtherFileSystem->path();
    const QByteArray name = QFile::encodeName(QFileInfo(folder).fileName()) + ".jpg";
    const QByteArray path = QFile::encodeName(folder) + '/' + name;
    QVERIFY(writeFile(path, "x"));
    if (isLeftWhole(path)) return;
    QCOMPARE(readFile(path), std::nullopt);
    QCOMPARE(readFile(m_trash + "/files/" + name), std::nullopt);
    const QByteArray root = QFile::encodeName(QStorageInfo(folder).rootPath());
    const QByteArray own = root + "/.Trash-" + QByteArray::number(::getuid());
    const QByteArray moved = own + "/files/" + name;
    const QByteArray record = own + "/info/" + name + ".trashinfo";
    QCOMPARE(readFile(moved), "x");
    QVERIFY(readFile(record));
    ::unlink(moved.constData());
    ::unlink(record.constData());
  }
};

QTEST_GUILESS_MAIN(TrashTest)
#include "TrashTest.moc"
