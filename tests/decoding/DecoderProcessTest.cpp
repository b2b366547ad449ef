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
  std::error_code gone;
  for (const auto& task : std::filesystem::directory_iterator("/proc/" + std::to_string(parent) + "/task", gone)) {
    std::ifstream list(task.path() / "children");
    for (pid_t child = 0; list >> child;) children.push_back(child);
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

  // Until told, or busy with thumbnails, it keeps memory for the next picture.
  void memoryIsKeptForPicturesOnly() {
    ProcessImageDecoder decoder(LUMAGRID_DECODER);
    const FileUrl photo = m_folder.add(QStringLiteral("large.png"), samplePhoto({1500, 1000}));
    (void)decoder.decodeBounded(photo, 300);
    (void)decoder.decode(photo);
    const auto kept = openDescriptors();
    decoder.giveMemoryBack();
    QCOMPARE(openDescriptors(), kept - 1);
    (void)decoder.decode(photo);
    QCOMPARE(openDescriptors(), kept);
    (void)decoder.decodeBounded(photo, 300);
    QCOMPARE(openDescriptors(), kept - 1);
  }

  // What fails in the background is tried again for whoever waits, once.
  void backgroundFailuresAreForgotten() {
    ProcessImageDecoder decoder(LYING_DECODER);
    const FileUrl crashing = file("crashes");
    QVERIFY(decoder.decodeInBackground(crashing).pixels.isNull());
    for (const int deaths : {2, 2}) {
      QVERIFY(decoder.decode(crashing).pixels.isNull());
      QCOMPARE(decoder.decoderDeaths(), std::uint64_t(deaths));
    }
  }

  void liesAreCaught_data() {
    addRows<QByteArray>({
      {"more pixels than the buffer has", "large"}, {"a product that overflows", "huge"},
          {"a size below 0", "negative"}, {"a longer side than was asked for", "longer than asked"},
          {"a buffer that it was not given", "foreign"}, {"an error that is none", "error"},
          {"a kind that is none", "kind"}, {"a second begin", "ready"}, {"half a message", "short"},
          {"an end without an answer", "ends"}, {"a crash", "crashes"},
          {"all memory, that it takes with it", "keeps all memory"}, {"questions without end", "asks for ever"},
          {"work without end", "spins"}, {"work that hardly goes on", "dawdles"},
#if !defined(__SANITIZE_THREAD__)  // which works now and then itself
          {"silence", "sleeps"},
#endif
    });
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

  void everyThumbnailIsMadeWhileDecodersAreKilled() {
#if defined(__SANITIZE_THREAD__)
    QSKIP("Decoders that are forked again and again hang in the sanitizer");
#endif
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
      while (!isOver && kills < 13) {  // so that each file keeps a try, however slow this build is
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

  // Cut short, replaced and taken away: each time it is one photo, a part of one, or none, and no decoder dies of it.
  void aFileMayChangeWhileItIsDecoded() {
    ProcessImageDecoder decoder(LUMAGRID_DECODER);
    const QString name = QStringLiteral("changing.bmp");
    const QByteArray photos[] = {samplePhoto({900, 600}, Qt::red, "BMP"), samplePhoto({600, 900}, Qt::blue, "BMP")};
    const FileUrl file = m_folder.add(name, photos[0]);
    std::jthread changing([&](const std::stop_token& isOver) {
      for (int turn = 0; !isOver.stop_requested(); ++turn) {
        const QByteArray& photo = photos[turn % 2];
        if (turn % 3 == 0) std::filesystem::remove(file.path().toStdString());
        (void)m_folder.add(name, turn % 5 == 0 ? photo.first(photo.size() / 2) : photo);
      }
    });
    for (int round = 0; round < 300; ++round) {
      const DecodedImage image = round % 2 == 0 ? decoder.decode(file) : decoder.decodeBounded(file, 300);
      QCOMPARE(image.pixels.isNull(), image.error != ImageError::none);
      QVERIFY(image.error != ImageError::unavailable && image.error != ImageError::denied);
    }
    changing = {};
    QCOMPARE(decoder.decoderDeaths(), 0U);
    (void)m_folder.add(name, photos[1]);
    QCOMPARE(decoder.decode(file).pixels.pixelColor(0, 0), QColor(Qt::blue));
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
    QCOMPARE(decoder.decode(file("honest")).error, ImageError::unavailable);
    QCOMPARE(decoder.missingProtection(), QStringLiteral("no picture can be decoded: No such file or directory"));
  }

  // Nothing hangs while descriptors are short, and no file is to blame: it opens when they are there again.
  void bearsThatDescriptorsAreShort() {
    const FileUrl honest = file("honest");
    rlimit before = {};
    ::getrlimit(RLIMIT_NOFILE, &before);
    for (int left = 0; left < 5; ++left) {
      ProcessImageDecoder decoder(LYING_DECODER);
      const int free = ::dup(STDERR_FILENO);
      ::close(free);
      const rlimit limit{static_cast<rlim_t>(free + left), before.rlim_max};
      ::setrlimit(RLIMIT_NOFILE, &limit);
      const ImageError errors[] = {decoder.decode(honest).error, decoder.decodeBounded(honest, 500).error};
      ::setrlimit(RLIMIT_NOFILE, &before);
      for (const ImageError error : errors) {
        QVERIFY(error == ImageError::unavailable || (left > 0 && error == ImageError::none));
      }
      QCOMPARE(decoder.decode(honest).pixels.size(), QSize(2, 1));
      QCOMPARE(decoder.decodeBounded(honest, 500).pixels.size(), QSize(2, 1));
    }
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
