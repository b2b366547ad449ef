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

std::optional<QString> moveToTrash(const QByteArray& path) {
  return GioTrash().trashItem(FileUrl::fromPath(path));
}

}  // namespace

// Whatever happens to a file, it is afterwards whole in its place, or whole in the Trash with the record that restores
// it.
class TrashTest : public QObject {
  Q_OBJECT

 private:
  const QByteArray m_trash = qgetenv("XDG_DATA_HOME") + "/Trash";

 private Q_SLOTS:
  void movesWholeWithARecord() {
    const QByteArray name = "caf\xE9\n%41 [x]=;.jpg";
    const QByteArray path = kHome.path() + '/' + name;
    QByteArrayList expected = {"first", "second"};
    for (const QByteArray& content : expected) {
      QVERIFY(writeFile(path, content));
      QCOMPARE(moveToTrash(path), std::nullopt);
      QCOMPARE(readFile(path), std::nullopt);
    }
    // Two files of one name are both kept.
    for (const QByteArray& kept : {name, QByteArray(name).replace(".jpg", ".2.jpg")}) {
      const QByteArrayList record = readFile(m_trash + "/info/" + kept + ".trashinfo").value_or("").split('\n');
      QCOMPARE(QByteArray::fromPercentEncoding(record.value(1)), "Path=" + path);
      QCOMPARE(readFile(m_trash + "/files/" + kept), expected.takeFirst());
    }
  }

  void aLinkGoesAndItsTargetStays() {
    const QByteArray target = kHome.path() + "/target.jpg";
    QVERIFY(writeFile(target, "x"));
    QCOMPARE(::symlink(target.constData(), (kHome.path() + "/link.jpg").constData()), 0);
    QCOMPARE(moveToTrash(kHome.path() + "/link.jpg"), std::nullopt);
    QCOMPARE(readFile(target), "x");
    QCOMPARE(readFile(kHome.path() + "/link.jpg"), std::nullopt);
  }

  void leavesWholeWhatItCannotMove() {
    const QByteArray folder = kHome.path() + "/locked";
    QCOMPARE(::mkdir(folder.constData(), 0700), 0);
    QVERIFY(writeFile(folder + "/locked.jpg", "x"));
    QCOMPARE(::chmod(folder.constData(), 0500), 0);
    const std::optional<QString> reason = moveToTrash(folder + "/locked.jpg");
    QCOMPARE(::chmod(folder.constData(), 0700), 0);
    QVERIFY(reason && !reason->isEmpty());
    QCOMPARE(readFile(folder + "/locked.jpg"), "x");
    QVERIFY(!readFile(m_trash + "/files/locked.jpg") && !readFile(m_trash + "/info/locked.jpg.trashinfo"));
  }

  // Never as a copy in the home's Trash.
  void anotherFileSystemKeepsItsFileOrHasATrash() {
    QVERIFY2(kOtherFileSystem, "There is no other file system than the home's to write to");
    const QString folder = kOtherFileSystem->path();
    const QByteArray name = QFile::encodeName(QFileInfo(folder).fileName()) + ".jpg";
    const QByteArray path = QFile::encodeName(folder) + '/' + name;
    QVERIFY(writeFile(path, "x"));
    const bool isRefused = moveToTrash(path).has_value();
    const QByteArray own =
        QFile::encodeName(QStorageInfo(folder).rootPath() + QStringLiteral("/.Trash-%1").arg(::getuid()));
    const QByteArray moved = own + "/files/" + name;
    const QByteArray record = own + "/info/" + name + ".trashinfo";
    QCOMPARE(readFile(isRefused ? path : moved), "x");
    QVERIFY(!readFile(isRefused ? record : path) && !readFile(m_trash + "/files/" + name));
    QVERIFY(isRefused || readFile(record));
    ::unlink(moved.constData());
    ::unlink(record.constData());
  }
};

QTEST_GUILESS_MAIN(TrashTest)
#include "TrashTest.moc"
