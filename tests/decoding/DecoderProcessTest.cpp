#include <dirent.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <QTest>
#include <atomic>
#include <csignal>
#include <filesystem>
#include <fstream>
#include <thread>

#include "FileImageDecoder.h"
#include "PhotoFolder.h"
#include "ProcessImageDecoder.h"
#include "Table.h"
#include "TemporaryHome.h"
#include "WorkerPool.h"

using namespace lumagrid;

namespace {

const TemporaryHome kHome;

using Pids = std::vector<pid_t>;

// The processes whose parent is `parent`, dead ones too.
Pids childrenOf(pid_t parent) {
  Pids children;
  for (const auto& entry : std::filesystem::directory_iterator("/proc")) {
    const std::string name = entry.path().filename();
    if (!std::all_of(name.begin(), name.end(), [](char each) { return each >= '0' && each <= '9'; })) continue;
    std::ifstream status(entry.path() / "stat");
    const std::string text(std::istreambuf_iterator<char>(status), {});
    const auto afterName = text.rfind(')');
    if (afterName == std::string::npos || std::stoi(text.substr(afterName + 4)) != parent) continue;
    children.push_back(std::stoi(name));
  }
  return children;
}

// The decoders of this process.
Pids decoders() {
  Pids found;
  for (const pid_t launcher : childrenOf(::getpid())) {
    for (const pid_t decoder : childrenOf(launcher)) found.push_back(decoder);
  }
  return found;
}

std::ptrdiff_t openDescriptors() {
  return std::distance(std::filesystem::directory_iterator("/proc/self/fd"), std::filesystem::directory_iterator());
}

QColor colorOf(int index) {
  return QColor(index * 6, 255 - index * 6, 100);
}

ProcessImageDecoder::Patience shortPatience() {
  using namespace std::chrono_literals;
  return {.thumbnailProcessorTime = 300ms, .thumbnailIdleTime = 500ms, .thumbnailTime = 1500ms, .pictureTime = 600ms};
}

}  // namespace

class DecoderProcessTest : public QObject {
  Q_OBJECT

 private:
  FileUrl file(const QByteArray& content) {
    const QByteArray path = m_folder.url().path() + "/" + QByteArray::number(++m_count);
    if (!writeFile(path, content)) qFatal("Cannot write");
    return FileUrl::fromPath(path);
  }

  const PhotoFolder m_folder;
  int m_count = 0;

 private Q_SLOTS:
  void decodesAsInProcess() {
    ProcessImageDecoder decoder(LUMAGRID_DECODER);
    FileImageDecoder inProcess;
    for (const QSize size : {QSize(20, 10), QSize(1500, 1100), QSize(2600, 1700)}) {
      const FileUrl photo = m_folder.add(QStringLiteral("%1.png").arg(size.width()), samplePhoto(size));
      for (int round = 0; round < 3; ++round) QCOMPARE(decoder.decode(photo).pixels, inProcess.decode(photo).pixels);
      QCOMPARE(decoder.decodeBounded(photo, 300).pixels, inProcess.decodeBounded(photo, 300).pixels);
    }
    QCOMPARE(decoder.decode(m_folder.url()).error, ImageError::unsupported);
    QCOMPARE(decoder.decode(FileUrl::child(m_folder.url(), "none")).error, ImageError::missing);
    QCOMPARE(decoder.decode(file("text")).error, ImageError::unsupported);
    QCOMPARE(decoder.decode(file("\xff\xd8 text")).error, ImageError::damaged);
    QCOMPARE(decoder.missingProtection(), QString());
  }

  // A picture on the screen keeps its pixels, whatever is decoded next.
  void picturesKeepTheirPixels() {
    ProcessImageDecoder decoder(LUMAGRID_DECODER);
    const FileUrl photo = m_folder.add(QStringLiteral("kept.png"), samplePhoto({1500, 1000}));
    const FileUrl other = m_folder.add(QStringLiteral("other.png"), samplePhoto({1500, 1000}, Qt::red));
    const QImage shown = decoder.decode(photo).pixels;
    const QImage before = shown.copy();
    for (int round = 0; round < 3; ++round) QVERIFY(!decoder.decode(other).pixels.isNull());
    QCOMPARE(shown, before);
  }

  void liesAreCaught_data() {
    addRows<QByteArray>({{"more pixels than the buffer has", "large"},
                         {"a product that overflows", "huge"},
                         {"a size below 0", "negative"},
                         {"a longer side than was asked for", "longer than asked"},
                         {"a buffer that it was not given", "foreign"},
                         {"an error that is none", "error"},
                         {"a kind that is none", "kind"},
                         {"a second begin", "ready"},
                         {"half a message", "short"},
                         {"an end without an answer", "ends"},
                         {"a crash", "crashes"},
                         {"all memory, that it takes with it", "keeps all memory"},
                         {"questions without end", "asks for ever"},
                         {"work without end", "spins"},
                         {"work that hardly goes on", "dawdles"},
                         {"silence", "sleeps"}});
  }

  void liesAreCaught() {
    QFETCH(QByteArray, row);
    ProcessImageDecoder::Patience patience = shortPatience();
    if (row == "sleeps") patience.thumbnailTime = std::chrono::hours(1);
    ProcessImageDecoder decoder(LYING_DECODER, patience);
    const FileUrl lie = file(row);
    const auto before = openDescriptors();
    QCOMPARE(decoder.decodeBounded(lie, 500).error, ImageError::damaged);
    // Not tried again: it would take its time.
    for (int round = 0; round < 1000; ++round) QCOMPARE(decoder.decodeBounded(lie, 500).error, ImageError::damaged);
    QCOMPARE(decoder.decode(file(row)).error, row == "longer than asked" ? ImageError::none : ImageError::damaged);
    for (int round = 0; round < 3; ++round) {
      QCOMPARE(decoder.decodeBounded(file("needs all memory"), 500).pixels.size(), QSize(2, 1));
      QCOMPARE(decoder.decode(file("honest")).pixels.size(), QSize(2, 1));
    }
    QVERIFY(openDescriptors() <= before + 2);  // a pidfd for each of the other two decoders
  }

  void whoeverIsKilledByOthersIsReplaced() {
    ProcessImageDecoder decoder(LYING_DECODER, shortPatience());
    QCOMPARE(decoder.decodeBounded(file("killed"), 500).pixels.size(), QSize(2, 1));
  }

  void everyThumbnailIsMadeWhileDecodersAreKilled() {
    constexpr int kPhotos = 40;
    ProcessImageDecoder decoder(LUMAGRID_DECODER);
    std::vector<FileUrl> photos;
    photos.reserve(kPhotos);
    for (int index = 0; index < kPhotos; ++index) {
      photos.push_back(m_folder.add(QStringLiteral("p%1.png").arg(index), samplePhoto({900, 600}, colorOf(index))));
    }
    std::atomic<bool> isOver = false;
    std::atomic<int> kills = 0;
    std::thread killer([&] {
      while (!isOver && kills < 40) {
        for (const pid_t each : decoders()) kills += ::kill(each, SIGKILL) == 0;
        std::this_thread::sleep_for(std::chrono::milliseconds(100));
      }
    });
    std::atomic<int> wrong = 0;
    for (int round = 0; round < 5; ++round) {
      parallelFor(kPhotos, [&](int index) {
        const QImage made = decoder.decodeBounded(photos[std::size_t(index)], 300).pixels;
        wrong += made.isNull() || made.pixelColor(150, 100) != colorOf(index);
      });
    }
    isOver = true;
    killer.join();
    QCOMPARE(wrong.load(), 0);
    QVERIFY(kills > 5);
    // Whoever was killed is reaped when his place is taken.
    for (const FileUrl& photo : photos) QVERIFY(!decoder.decodeBounded(photo, 300).pixels.isNull());
    QVERIFY(!decoder.decode(photos[0]).pixels.isNull());
    QTRY_VERIFY(decoders().size() <= std::size_t(coreCount() + 1));
  }

  void stopEndsWhatIsUnderWay() {
    ProcessImageDecoder decoder(LYING_DECODER);
    std::atomic<int> ended = 0;
    const auto ask = [&](const FileUrl& asked) {
      return std::thread([&decoder, &ended, asked] {
        (void)decoder.decodeBounded(asked, 100);
        ++ended;
      });
    };
    std::thread threads[] = {ask(file("sleeps")), ask(file("sleeps")), ask(file("sleeps")), ask(file("spins"))};
    QTest::qWait(50);
    decoder.stop();
    for (std::thread& each : threads) each.join();  // the first would take a minute
    QCOMPARE(ended.load(), 4);
    QVERIFY(decoder.decode(file("honest")).pixels.isNull());
  }

  void saysThatItsProgramIsMissing() {
    ProcessImageDecoder decoder("/nowhere/lumagrid-decoder");
    QCOMPARE(decoder.decode(file("honest")).error, ImageError::damaged);
    QCOMPARE(decoder.missingProtection(), QStringLiteral("no picture can be decoded: No such file or directory"));
  }

  // Nothing is decoded while descriptors are short, and nothing hangs; it goes on when they are there again.
  void bearsThatDescriptorsAreShort() {
    ProcessImageDecoder decoder(LYING_DECODER);
    const FileUrl honest = file("honest");
    rlimit before = {};
    ::getrlimit(RLIMIT_NOFILE, &before);
    const int free = ::dup(STDERR_FILENO);
    ::close(free);
    for (const int left : {1, 0}) {
      const rlimit limit{static_cast<rlim_t>(free + left), before.rlim_max};
      ::setrlimit(RLIMIT_NOFILE, &limit);
      QVERIFY(decoder.decode(honest).pixels.isNull());
    }
    ::setrlimit(RLIMIT_NOFILE, &before);
    QCOMPARE(decoder.decode(file("honest")).pixels.size(), QSize(2, 1));
  }

  void endsWithItsOwner() {
    {
      const ProcessImageDecoder decoder(LUMAGRID_DECODER);
      QTRY_VERIFY(!decoders().empty());
    }
    QVERIFY(childrenOf(::getpid()).empty());
  }
};

int main(int argc, char** argv) {
  QCoreApplication application(argc, argv);
  DecoderProcessTest test;
  return QTest::qExec(&test, argc, argv);
}

#include "DecoderProcessTest.moc"
