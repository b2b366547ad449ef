#include <QDateTime>
#include <QTemporaryFile>
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

constexpr int kLongestName = 255;

}  // namespace

// Whatever happens to a file, it is afterwards whole in its place, or whole in the Trash with the record that restores
// it.
class TrashTest : public QObject {
  Q_OBJECT

 private Q_SLOTS:
  void movesOrLeavesWhole_data();
  void movesOrLeavesWhole();
  void twoFilesOfOneNameAreBothKept();
  void aLinkGoesAndItsTargetStays();
  void aFileThatIsGoneIsRefused();
  void aFolderThatCannotBeWrittenKeepsItsFile();
  void aFileSystemInMemoryKeepsItsFileOrHasATrash();

 private:
  const QByteArray m_home = qgetenv("HOME");
  const QByteArray m_trash = qgetenv("XDG_DATA_HOME") + "/Trash";
};

void TrashTest::movesOrLeavesWhole_data() {
  QTest::addColumn<QByteArray>("name");
  QTest::addColumn<bool>("moves");
  QTest::newRow("an ordinary file") << QByteArray("photo.jpg") << true;
  QTest::newRow("a name that is not UTF-8") << QByteArray("caf\xE9.jpg") << true;
  QTest::newRow("a name with line breaks, percent signs and brackets") << QByteArray("a\nb %41 [x]=;.jpg") << true;
  QTest::newRow("a name that starts with a dash") << QByteArray("-rf") << true;
  QTest::newRow("a name that leaves no room for its record") << QByteArray(kLongestName - 4, 'n') + ".jpg" << false;
}

void TrashTest::movesOrLeavesWhole() {
  QFETCH(QByteArray, name);
  QFETCH(bool, moves);
  const QByteArray path = m_home + '/' + name;
  QVERIFY(writeFile(path, "content of " + name));
  const QDateTime before = QDateTime::currentDateTime().addSecs(-1);

  const std::optional<QString> reason = GioTrash().trashItem(FileUrl::fromPath(path));
  QCOMPARE(!reason, moves);
  if (!moves) {
    QVERIFY(!reason->isEmpty());
    QCOMPARE(readFile(path), "content of " + name);
    QCOMPARE(readFile(m_trash + "/files/" + name), std::nullopt);
    return;
  }
  QCOMPARE(readFile(path), std::nullopt);
  QCOMPARE(readFile(m_trash + "/files/" + name), "content of " + name);
  const QByteArrayList record = readFile(m_trash + "/info/" + name + ".trashinfo").value_or(QByteArray()).split('\n');
  QVERIFY(record.size() >= 3);
  QCOMPARE(record[0], QByteArray("[Trash Info]"));
  QVERIFY(record[1].startsWith("Path="));
  QCOMPARE(QByteArray::fromPercentEncoding(record[1].sliced(5)), path);
  QVERIFY(record[2].startsWith("DeletionDate="));
  const QDateTime date = QDateTime::fromString(QString::fromLatin1(record[2].sliced(13)), Qt::ISODate);
  QVERIFY(date >= before && date <= QDateTime::currentDateTime());
}

void TrashTest::twoFilesOfOneNameAreBothKept() {
  for (const char* content : {"first", "second"}) {
    QVERIFY(writeFile(m_home + "/twin.jpg", content));
    QCOMPARE(GioTrash().trashItem(FileUrl::fromPath(m_home + "/twin.jpg")), std::nullopt);
  }
  QCOMPARE(readFile(m_trash + "/files/twin.jpg"), "first");
  const QStringList twins =
      QDir(QFile::decodeName(m_trash + "/files")).entryList({QStringLiteral("twin*")}, QDir::Files);
  QCOMPARE(twins.size(), 2);
  for (const QString& twin : twins) {
    QVERIFY(readFile(m_trash + "/info/" + QFile::encodeName(twin) + ".trashinfo"));
  }
}

void TrashTest::aLinkGoesAndItsTargetStays() {
  QVERIFY(writeFile(m_home + "/target.jpg", "x"));
  QCOMPARE(::symlink("target.jpg", (m_home + "/link.jpg").constData()), 0);
  QCOMPARE(GioTrash().trashItem(FileUrl::fromPath(m_home + "/link.jpg")), std::nullopt);
  QCOMPARE(readFile(m_home + "/link.jpg"), std::nullopt);
  QCOMPARE(readFile(m_home + "/target.jpg"), "x");
}

void TrashTest::aFileThatIsGoneIsRefused() {
  const std::optional<QString> reason = GioTrash().trashItem(FileUrl::fromPath(m_home + "/gone.jpg"));
  QVERIFY(reason && !reason->isEmpty());
  QCOMPARE(readFile(m_trash + "/info/gone.jpg.trashinfo"), std::nullopt);
}

void TrashTest::aFolderThatCannotBeWrittenKeepsItsFile() {
  const QByteArray folder = m_home + "/locked";
  QCOMPARE(::mkdir(folder.constData(), 0700), 0);
  QVERIFY(writeFile(folder + "/photo-locked.jpg", "x"));
  QCOMPARE(::chmod(folder.constData(), 0500), 0);
  const std::optional<QString> reason = GioTrash().trashItem(FileUrl::fromPath(folder + "/photo-locked.jpg"));
  QCOMPARE(::chmod(folder.constData(), 0700), 0);
  QVERIFY(reason && !reason->isEmpty());
  QCOMPARE(readFile(folder + "/photo-locked.jpg"), "x");
  QCOMPARE(readFile(m_trash + "/files/photo-locked.jpg"), std::nullopt);
  QCOMPARE(readFile(m_trash + "/info/photo-locked.jpg.trashinfo"), std::nullopt);
}

void TrashTest::aFileSystemInMemoryKeepsItsFileOrHasATrash() {
  struct stat memory = {};
  struct stat home = {};
  if (::stat("/dev/shm", &memory) != 0 || ::stat(m_home.constData(), &home) != 0 || memory.st_dev == home.st_dev) {
    QSKIP("No file system in memory beside the home's");
  }
  const QTemporaryDir folder(QStringLiteral("/dev/shm/lumagrid-XXXXXX"));
  const QByteArray path = QFile::encodeName(folder.path()) + "/photo.jpg";
  QVERIFY(writeFile(path, "x"));
  if (const std::optional<QString> reason = GioTrash().trashItem(FileUrl::fromPath(path))) {
    QVERIFY(!reason->isEmpty());
    QCOMPARE(readFile(path), "x");
  } else {
    const QByteArray own = "/dev/shm/.Trash-" + QByteArray::number(::getuid());
    QCOMPARE(readFile(path), std::nullopt);
    QCOMPARE(readFile(own + "/files/photo.jpg"), "x");
    QVERIFY(readFile(own + "/info/photo.jpg.trashinfo"));
    QVERIFY(QDir(QFile::decodeName(own)).removeRecursively());
  }
  QCOMPARE(readFile(m_trash + "/files/photo.jpg"), "content of photo.jpg");  // never a copy into the home's
}

int main(int argc, char** argv) {
  const TemporaryHome home;
  QCoreApplication application(argc, argv);
  TrashTest test;
  return QTest::qExec(&test, argc, argv);
}

#include "TrashTest.moc"
