#include <QTest>
#include <QtEndian>
#include <array>
#include <bit>

#include "SamplePictures.h"

using namespace lumagrid;
using namespace samples;

namespace {

// Numbers of as many bits as each has, from the highest on.
QByteArray packed(const std::vector<std::pair<int, quint32>>& fields) {
  QByteArray bits;
  for (const auto& [count, value] : fields) {
    for (int bit = count - 1; bit >= 0; --bit) bits += (value >> bit & 1) != 0 ? '1' : '0';
  }
  bits += QByteArray(64 - bits.size() % 8, '0');
  QByteArray bytes;
  for (qsizetype at = 0; at < bits.size(); at += 8) bytes += static_cast<char>(bits.mid(at, 8).toInt(nullptr, 2));
  return bytes;
}

QByteArray box(const char* type, const QByteArray& content) {
  return big<quint32>(content.size() + 8) + type + content;
}

QByteArray fullBox(const char* type, const QByteArray& content, int version = 0) {
  return box(type, big<quint32>(static_cast<quint32>(version) << 24) + content);
}

struct Item {
  const char* type;
  QByteArray properties = {};  // numbers of those that it has
  QByteArray data = {};
};

struct Reference {
  const char* type;
  int from;
  std::vector<int> to;
};

// A file whose primary item is the first. Items count from 1.
QByteArray heif(const std::vector<Item>& items, const std::vector<Reference>& references,
                const QByteArray& properties = box("free", {})) {
  QByteArray entries;
  QByteArray uses;
  QByteArray places;
  QByteArray data;
  int id = 0;
  for (const Item& item : items) {
    ++id;
    entries += fullBox("infe", big<quint16>(id) + big<quint16>(0) + item.type + QByteArray(1, '\0'), 2);
    uses += big<quint16>(id) + big<quint8>(item.properties.size()) + item.properties;
    places += big<quint16>(id) + big<quint16>(1) + big<quint16>(0) + big<quint16>(1) + big<quint32>(data.size()) +
              big<quint32>(item.data.size());
    data += item.data;
  }
  QByteArray links;
  for (const auto& [type, from, to] : references) {
    QByteArray targets;
    for (const int target : to) targets += big<quint16>(target);
    links += box(type, big<quint16>(from) + big<quint16>(to.size()) + targets);
  }
  const QByteArray handler = fullBox("hdlr", QByteArray("\0\0\0\0pict", 8) + QByteArray(13, '\0'));
  const QByteArray count = big<quint16>(items.size());
  return box("ftyp", "mif1" + big<quint32>(0) + "mif1avifheic") +
         fullBox("meta", handler + fullBox("pitm", big<quint16>(1)) + fullBox("iinf", count + entries) +
                             fullBox("iref", links) + fullBox("iloc", "\x44" + big<quint8>(0) + count + places, 1) +
                             box("iprp", box("ipco", properties) + fullBox("ipma", big<quint32>(id) + uses)) +
                             box("idat", data));
}

QByteArray extent(quint32 width, quint32 height) {
  return fullBox("ispe", big<quint32>(width) + big<quint32>(height));
}

// An AV1 sequence header for still pictures, behind the header of its unit.
QByteArray av1Sequence(quint32 width, quint32 height) {
  const QByteArray header =
      packed({{3, 0}, {2, 3}, {5, 0}, {4, 15}, {4, 15}, {16, width - 1}, {16, height - 1}, {10, 0}});
  return "\x0a" + big<quint8>(header.size()) + header;
}

QByteArray av1Configuration(const QByteArray& units) {
  return box("av1C", QByteArray("\x81\0\0\0", 4) + units);
}

// A sequence parameter set of HEVC in its configuration.
QByteArray hevcConfiguration(quint32 width, quint32 height) {
  const auto golomb = [](quint32 value) { return std::pair(2 * std::bit_width(value + 1) - 1, value + 1); };
  const QByteArray set = packed({{16, 0x4201},
                                 {8, 1},
                                 {32, 0x55555555},
                                 {32, 0x55555555},
                                 {32, 0x55555555},
                                 golomb(0),
                                 golomb(1),
                                 golomb(width),
                                 golomb(height),
                                 {1, 0},
                                 golomb(0),
                                 golomb(0)});
  return box("hvcC", QByteArray(22, '\1') + "\x01\x21" + big<quint16>(1) + big<quint16>(set.size()) + set);
}

// Its entries: tag, type, count and value.
QByteArray tiffOf(const std::vector<std::array<quint32, 4>>& entries, qsizetype trailingBytes = 0) {
  QByteArray bytes = QByteArray("MM\0*", 4) + big<quint32>(8) + big<quint16>(entries.size());
  for (const auto& [tag, type, count, value] : entries) {
    bytes += big<quint16>(tag) + big<quint16>(type) + big<quint32>(count) + big<quint32>(value);
  }
  return bytes + big<quint32>(0) + QByteArray(trailingBytes, 'x');
}

std::vector<std::array<quint32, 4>> grayTiff(quint32 side, quint32 samples = 1) {
  constexpr quint32 kShort = 3;
  constexpr quint32 kLong = 4;
  return {{TIFFTAG_IMAGEWIDTH, kLong, 1, side},        {TIFFTAG_IMAGELENGTH, kLong, 1, side},
          {TIFFTAG_BITSPERSAMPLE, kShort, 1, 8 << 16}, {TIFFTAG_PHOTOMETRIC, kShort, 1, 1 << 16},
          {TIFFTAG_STRIPOFFSETS, kLong, 1, 8},         {TIFFTAG_SAMPLESPERPIXEL, kShort, 1, samples << 16},
          {TIFFTAG_ROWSPERSTRIP, kLong, 1, side},      {TIFFTAG_STRIPBYTECOUNTS, kLong, 1, 64 * samples}};
}

QByteArray tiffWithSharedTags() {
  auto entries = grayTiff(8);
  for (quint32 tag = 40000; tag < 40200; ++tag) entries.push_back({tag, 1, 1 << 20, 8});
  return tiffOf(entries, 1 << 20);
}

QByteArray chunk(const char* name, const QByteArray& content) {
  QByteArray size(4, '\0');
  qToLittleEndian(static_cast<quint32>(content.size()), size.data());
  return name + size + content + QByteArray(content.size() % 2, '\0');
}

// A canvas of 16384 x 16384 around the pixels of another WebP.
QByteArray webpOnHugeCanvas(const QByteArray& webp) {
  const QByteArray canvas = QByteArray(4, '\0') + "\xff\x3f" + QByteArray(1, '\0') + "\xff\x3f" + QByteArray(1, '\0');
  return chunk("RIFF", "WEBP" + chunk("VP8X", canvas) + webp.mid(12));
}

// A profile whose way from colours to the standard's is a chain of `count` steps, all of which stand at one place and
// take the light off.
QByteArray profileOfSteps(int count) {
  QByteArray step = "matf" + big<quint32>(0) + big<quint16>(3) + big<quint16>(3) + QByteArray(48, '\0');
  QByteArray chain = "mpet" + big<quint32>(0) + big<quint16>(3) + big<quint16>(3) + big<quint32>(count);
  const QByteArray place = big<quint32>(16 + 8 * count) + big<quint32>(step.size());
  chain += place.repeated(count) + step;
  const QByteArray white =
      "XYZ " + big<quint32>(0) + big<quint32>(0xf6d6) + big<quint32>(0x10000) + big<quint32>(0xd32d);
  constexpr int kTags = 2;
  const int whiteAt = 128 + 4 + 12 * kTags;
  const QByteArray tags = big<quint32>(kTags) + "wtpt" + big<quint32>(whiteAt) + big<quint32>(white.size()) + "D2B0" +
                          big<quint32>(whiteAt + white.size()) + big<quint32>(chain.size());
  const QByteArray body = tags + white + chain;
  const QByteArray head = big<quint32>(128 + body.size()) + "lcms" + big<quint32>(0x04400000) + "mntrRGB XYZ " +
                          QByteArray(12, '\0') + "acsp" + QByteArray(28, '\0') + white.mid(8);
  return head + QByteArray(128 - head.size(), '\0') + body;
}

// A progressive gray JPEG of many scans, each of which refines nothing.
QByteArray jpegOfScans(quint16 side, int count) {
  const auto segment = [](int marker, const QByteArray& content) {
    return big<quint8>(0xff) + big<quint8>(marker) + big<quint16>(content.size() + 2) + content;
  };
  const auto zeros = [](int number) { return QByteArray(number, '\0'); };
  QByteArray file = "\xff\xd8" + segment(0xdb, zeros(1) + QByteArray(64, '\1')) +
                    segment(0xc2, "\x08" + big<quint16>(side) + big<quint16>(side) + "\1\1\x11" + zeros(1)) +
                    segment(0xc4, zeros(1) + "\1" + zeros(16)) +
                    segment(0xc4, "\x10\1\1" + zeros(14) + "\xe0" + zeros(1)) +
                    segment(0xda, "\1\1" + zeros(3) + "\1") + zeros(side * side / 64 / 8);
  const QByteArray scan = segment(0xda, "\1\1" + zeros(1) + "\1\x3f\1") + "\x7f" + big<quint8>(0xfe);
  return file + scan.repeated(count) + "\xff\xd9";
}

QByteArray replaced(QByteArray file, const QByteArray& before, const QByteArray& after) {
  return file.contains(before) ? file.replace(before, after) : QByteArray();
}

}  // namespace

// Files that are no pictures, and small ones that ask for much more than they hold: time, memory, or what a library
// does with numbers that lie.
class HostileFilesTest : public QObject {
  Q_OBJECT

 private Q_SLOTS:
  void isRefused_data() {
    QTest::addColumn<QByteArray>("file");
    QTest::addColumn<ImageError>("error");
    const auto row = [](const char* name, const QByteArray& file, ImageError error) {
      QTest::newRow(name) << file << error;
    };
    const QByteArray side = extent(64, 64);
    const QByteArray grid = big<quint32>(0) + big<quint16>(64) + big<quint16>(64);  // of one tile
    row("HEIF that is itself in another form", heif({{"iden", "\1"}}, {{"dimg", 1, {1}}}, side),
        ImageError::unsupported);
    row("HEIF of two that are each other",
        heif({{"iden", "\1"}, {"iden", "\1"}}, {{"dimg", 1, {2}}, {"dimg", 2, {1}}}, side), ImageError::unsupported);
    row("HEIF grid of itself", heif({{"grid", "\1", grid}}, {{"dimg", 1, {1}}}, side), ImageError::damaged);
    row("HEIF grid of a grid",
        heif({{"grid", "\1", grid}, {"grid", "\1", grid}}, {{"dimg", 1, {2}}, {"dimg", 2, {1}}}, side),
        ImageError::damaged);
    const QByteArray small = side + av1Configuration(av1Sequence(64, 64));
    const auto ofOneTile = [&](const char* type, const QByteArray& data) {
      return heif({{type, "\1", data}, {"av01", "\1\2"}}, {{"dimg", 1, {2}}}, small);
    };
    row("HEIF grid of more than there is", ofOneTile("grid", QByteArray(grid).replace(2, 2, "\xff\xff")),
        ImageError::damaged);
    row("HEIF grid of 60000 x 60000", ofOneTile("grid", QByteArray(grid).replace(4, 4, "\xea\x60\xea\x60")),
        ImageError::tooLarge);
    const QByteArray overlay = QByteArray(10, '\0') + big<quint16>(64) + big<quint16>(64);
    row("HEIF overlay that ends outside", ofOneTile("iovl", overlay + big<quint16>(1) + big<quint16>(0)),
        ImageError::unsupported);
    row("HEIF overlay that begins outside", ofOneTile("iovl", overlay + big<quint16>(0xffff) + big<quint16>(0)),
        ImageError::unsupported);
    const QByteArray alpha = fullBox("auxC", "urn:mpeg:mpegB:cicp:systems:auxiliary:alpha" + QByteArray(1, '\0'));
    row("AVIF whose alpha has itself as alpha",
        heif({{"av01", "\1\2"}, {"av01", "\1\2\3"}, {"av01", "\1\2\3"}}, {{"auxl", 2, {1}}, {"auxl", 3, {2}}},
             small + alpha),
        ImageError::damaged);
    const QByteArray huge = av1Sequence(32768, 32768);
    row("AVIF of 2 GiB", heif({{"av01", "\1\2", huge}}, {}, av1Configuration(huge) + extent(32768, 32768)),
        ImageError::tooLarge);
    row("AVIF of 2 GiB that says so in its data alone", heif({{"av01", "\1", huge}}, {}, av1Configuration({})),
        ImageError::tooLarge);
    row("HEIC of 2 GiB", heif({{"hvc1", "\1\2"}}, {}, hevcConfiguration(32768, 32768) + extent(32768, 32768)),
        ImageError::tooLarge);
    const QByteArray avif = carried("half-transparent.avif");
    row("AVIF whose boxes say a size that its pixels exceed", replaced(avif, extent(64, 64), extent(1, 1)),
        ImageError::damaged);
    row("TIFF of 134 bytes that claims 16000 x 16000", tiffOf(grayTiff(16000), 24), ImageError::damaged);
    row("TIFF of 200 tags that share a megabyte", tiffWithSharedTags(), ImageError::damaged);
    row("TIFF of 65535 samples for each pixel", tiffOf(grayTiff(8, 65535), 1 << 22), ImageError::damaged);
    row("WebP whose canvas is a thousand times its pixels", webpOnHugeCanvas(pictureFile(filled(Qt::red), "webp")),
        ImageError::damaged);
    const auto none = ImageError::unsupported;
    row("an empty file", {}, none);
    row("vector graphics", "<svg xmlns='http://www.w3.org/2000/svg' width='9' height='9'/>", none);
    row("a film", QByteArray("\0\0\0\30ftypisom\0\0\2\0isommp41", 24), none);
    row("a text that begins like a BMP", "BMW is a maker of cars, and this is a sentence.", none);
    row("the beginning of a JPEG", "\xff\xd8\xff\xe0", ImageError::damaged);
    row("the beginning of a PNG", "\x89PNG\r\n\x1a\n", ImageError::damaged);
    const auto claiming = [file = jpeg(filled(Qt::red))](const char* size) {
      return QByteArray(file).replace(file.indexOf("\xff\xc0") + 5, 4, size);
    };
    row("JPEG that claims 60000 x 60000", claiming("\xea\x60\xea\x60"), ImageError::tooLarge);
    row("JPEG of one kilobyte that claims 10000 x 10000", claiming("\x27\x10\x27\x10"), ImageError::damaged);
    row("BMP that claims 60000 x 60000",
        pictureFile(filled(Qt::red), "bmp").replace(18, 8, QByteArray("\x60\xea\0\0\x60\xea\0\0", 8)),
        ImageError::tooLarge);
    row("TIFF whose area overflows 64 bits with its samples",
        tiff({{TIFFTAG_IMAGEWIDTH, 2'000'000'000}, {TIFFTAG_IMAGELENGTH, 2'000'000'000}}, QByteArray(64, 'x')),
        ImageError::tooLarge);
    row("GIF of a few bytes that claims 11390 x 12595",
        QByteArray("GIF89a~,31\x39\x61~,31\x38\x35\x37\xfb\x38\0\0\0\xfb\x38", 26), ImageError::damaged);
  }

  void isRefused() {
    QFETCH(const QByteArray, file);
    QFETCH(const ImageError, error);
    for (const int bound : {0, 64}) {
      const auto [pixels, found] = decoded(file, bound);
      QCOMPARE(found, error);
      QVERIFY(pixels.isNull());
    }
  }

  void aProfileOfTooManyStepsCountsAsNone() {
    const QImage image = filled(QColor(200, 60, 40));
    const QImage plain = decoded(jpeg(image)).pixels;
    QVERIFY(decoded(withProfile(jpeg(image), profileOfSteps(1))).pixels != plain);
    QCOMPARE(decoded(withProfile(jpeg(image), profileOfSteps(40))).pixels, plain);
  }

  void aJpegOfManyScansShowsWhatTheFirstGive() {
    for (const auto& [side, scans] : {std::pair(64, 600), std::pair(1024, 600)}) {
      for (const int bound : {0, 64}) QCOMPARE(decoded(jpegOfScans(side, scans), bound).error, ImageError::none);
    }
  }
};

QTEST_GUILESS_MAIN(HostileFilesTest)
#include "HostileFilesTest.moc"
