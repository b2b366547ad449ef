#include <fcntl.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <QTest>
#include <atomic>
#include <thread>

#include "SamplePictures.h"

using namespace lumagrid;
using namespace samples;

// What is opened and what is not, whatever it is called.
class ImageFormatTest : public QObject {
  Q_OBJECT

 private Q_SLOTS:
  void opensByContent_data();
  void opensByContent();
  void answersWithAReason_data();
  void answersWithAReason();
  void aFifoNeverBlocks();
  void aFileWithoutPermissionIsDenied();
  void opensNamesThatAreNotUtf8();
  void severalThreadsDecodeAtOnce();
};

namespace {

QByteArray bmpOfVersion3() {
  // A header of 56 bytes with masks for 5, 6 and 5 bits: what painting programs write for 16-bit pictures.
  QByteArray bytes("BM\0\0\0\0\0\0\0\0\x46\0\0\0", 14);
  bytes += QByteArray("\x38\0\0\0\x02\0\0\0\x01\0\0\0\x01\0\x10\0\x03\0\0\0", 20) + QByteArray(20, '\0');
  bytes += QByteArray("\0\xf8\0\0\xe0\x07\0\0\x1f\0\0\0\0\0\0\0", 16);
  return bytes + QByteArray("\0\xf8\0\xf8", 4);
}

}  // namespace

void ImageFormatTest::opensByContent_data() {
  QTest::addColumn<QByteArray>("name");
  QTest::addColumn<QByteArray>("file");
  QTest::addColumn<QSize>("size");
  const QImage image = picture();
  QTest::newRow("JPEG called PNG") << QByteArray("a.png") << jpeg(image) << image.size();
  QTest::newRow("PNG called JPEG") << QByteArray("a.jpg") << encoded(image, "png") << image.size();
  QTest::newRow("WebP called GIF") << QByteArray("a.gif") << encoded(image, "webp") << image.size();
  QTest::newRow("BMP called TIFF") << QByteArray("a.tif") << encoded(image, "bmp") << image.size();
  QTest::newRow("BMP of version 3") << QByteArray("a.bmp") << bmpOfVersion3() << QSize(2, 1);
  QTest::newRow("TIFF called BMP") << QByteArray("a.bmp") << encoded(image, "tiff") << image.size();
  QTest::newRow("HEIC without an extension") << QByteArray("a") << carried("wide-gamut.heic") << QSize(64, 64);
  QTest::newRow("AVIF called HEIC") << QByteArray("a.heic") << carried("half-transparent.avif") << QSize(64, 64);
  QTest::newRow("GIF, first frame") << QByteArray("a.gif")
                                    << QByteArray("GIF89a\1\0\1\0\x80\0\0\xff\0\0\0\0\0,\0\0\0\0\1\0\1\0\0\2\2D\1\0;",
                                                  35)
                                    << QSize(1, 1);
}

void ImageFormatTest::opensByContent() {
  QFETCH(const QByteArray, name);
  QFETCH(const QByteArray, file);
  QFETCH(const QSize, size);
  const Folder folder;
  const DecodedImage decoded = FileImageDecoder().decode(folder.write(name, file));
  QCOMPARE(decoded.error, ImageError::none);
  QCOMPARE(decoded.pixels.size(), size);
}

void ImageFormatTest::answersWithAReason_data() {
  QTest::addColumn<QByteArray>("file");
  QTest::addColumn<ImageError>("error");
  QTest::newRow("an empty file") << QByteArray() << ImageError::unsupported;
  QTest::newRow("a text") << QByteArray("no picture at all, but long enough for a header") << ImageError::unsupported;
  QTest::newRow("vector graphics") << QByteArray("<svg xmlns='http://www.w3.org/2000/svg' width='9' height='9'/>")
                                   << ImageError::unsupported;
  QTest::newRow("a document") << QByteArray("%PDF-1.4\n%\xe2\xe3\xcf\xd3\n1 0 obj\n<<>>\nendobj\n")
                              << ImageError::unsupported;
  QTest::newRow("a film") << QByteArray(
                                 "\0\0\0\x18"
                                 "ftypisom\0\0\2\0isommp41",
                                 24)
                          << ImageError::unsupported;
  QTest::newRow("a text that begins like a BMP")
      << QByteArray("BMW is a maker of cars, and this is a sentence.") << ImageError::unsupported;
  QTest::newRow("the beginning of a JPEG") << QByteArray("\xff\xd8\xff\xe0") << ImageError::damaged;
  QTest::newRow("the beginning of a PNG") << QByteArray("\x89PNG\r\n\x1a\n") << ImageError::damaged;
}

void ImageFormatTest::answersWithAReason() {
  QFETCH(const QByteArray, file);
  QFETCH(const ImageError, error);
  const Folder folder;
  const FileUrl url = folder.write("photo.jpg", file);
  FileImageDecoder decoder;
  QCOMPARE(decoder.decode(url).error, error);
  QVERIFY(decoder.decodeBounded(url, 100).pixels.isNull());
}

void ImageFormatTest::aFifoNeverBlocks() {
  const Folder folder;
  const QByteArray fifo = folder.path("photo.jpg");
  QCOMPARE(::mkfifo(fifo.constData(), 0644), 0);
  FileImageDecoder decoder;
  QCOMPARE(decoder.decode(FileUrl::fromPath(fifo)).error, ImageError::unsupported);
  QCOMPARE(decoder.decode(FileUrl::fromPath(folder.path("."))).error, ImageError::unsupported);
  QCOMPARE(decoder.decode(FileUrl::fromPath(folder.path("nothing.jpg"))).error, ImageError::missing);
  QCOMPARE(decoder.decode({}).error, ImageError::missing);
}

void ImageFormatTest::aFileWithoutPermissionIsDenied() {
  const Folder folder;
  const FileUrl url = folder.write("photo.jpg", jpeg(picture()));
  QCOMPARE(::chmod(url.path().constData(), 0), 0);
  // Permissions do not bind root: a child process gives up its rights first.
  const pid_t child = ::fork();
  QVERIFY(child >= 0);
  if (child == 0) {
    constexpr uid_t kNobody = 65534;
    constexpr int kCannotDropRights = 99;
    if (::geteuid() == 0 && (::chmod(folder.path("").constData(), 0755) != 0 || ::setuid(kNobody) != 0)) {
      ::_exit(kCannotDropRights);
    }
    ::_exit(static_cast<int>(FileImageDecoder().decode(url).error));
  }
  int status = 0;
  QCOMPARE(::waitpid(child, &status, 0), child);
  QVERIFY(WIFEXITED(status));
  QCOMPARE(static_cast<ImageError>(WEXITSTATUS(status)), ImageError::denied);
}

void ImageFormatTest::opensNamesThatAreNotUtf8() {
  const Folder folder;
  const FileUrl url = folder.write("caf\xe9.jpg", jpeg(picture()));
  QCOMPARE(FileImageDecoder().decode(url).error, ImageError::none);
  QCOMPARE(::unlink(url.path().constData()), 0);  // QTemporaryDir cannot name it
}

void ImageFormatTest::severalThreadsDecodeAtOnce() {
  const Folder folder;
  QImage tagged = picture();
  const QByteArray profile = wideGamutProfile();
  const std::vector<FileUrl> files = {
      folder.write("a", withProfile(jpeg(tagged), profile)), folder.write("b", encoded(tagged, "png")),
      folder.write("c", carried("turned-right.heic")), folder.write("d", encoded(tagged, "tiff"))};
  FileImageDecoder decoder;
  std::vector<QImage> expected;
  for (const FileUrl& file : files) expected.push_back(decoder.decode(file).pixels);
  std::atomic<int> differences = 0;
  std::vector<std::thread> threads;
  for (size_t thread = 0; thread < 4; ++thread) {
    threads.emplace_back([&, thread] {
      for (size_t round = 0; round < 20; ++round) {
        const size_t index = (thread + round) % files.size();
        if (decoder.decode(files[index]).pixels != expected[index]) ++differences;
      }
    });
  }
  for (std::thread& thread : threads) thread.join();
  for (const QImage& image : expected) QVERIFY(!image.isNull());
  QCOMPARE(differences.load(), 0);
}

QTEST_GUILESS_MAIN(ImageFormatTest)
#include "ImageFormatTest.moc"
