#include <QTest>
#include <QtEndian>

#include "SamplePictures.h"

using namespace lumagrid;
using namespace samples;

namespace {

template <typename Number>
QByteArray big(quint64 number) {
  QByteArray bytes(sizeof(Number), '\0');
  qToBigEndian(static_cast<Number>(number), bytes.data());
  return bytes;
}

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

QByteArray replaced(QByteArray file, const QByteArray& before, const QByteArray& after) {
  return file.contains(before) ? file.replace(before, after) : QByteArray();
}

}  // namespace

// Small files that ask for much more than they hold: time, memory, or what a library does with numbers that lie.
class HostileFilesTest : public QObject {
  Q_OBJECT

 private Q_SLOTS:
  void isRefusedEarly_data() {
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
    row("AVIF of 2 GiB that does not say its size", heif({{"av01", "\1", huge}}, {}, av1Configuration(huge)),
        ImageError::tooLarge);
    row("AVIF of 2 GiB that says so in its data alone", heif({{"av01", "\1", huge}}, {}, av1Configuration({})),
        ImageError::tooLarge);
    row("HEIC of 2 GiB", heif({{"hvc1", "\1"}}, {}, hevcConfiguration(32768, 32768)), ImageError::tooLarge);
    const QByteArray avif = carried("half-transparent.avif");
    row("AVIF whose boxes say a size that its pixels exceed", replaced(avif, extent(64, 64), extent(1, 1)),
        ImageError::damaged);
  }

  void isRefusedEarly() {
    QFETCH(const QByteArray, file);
    QFETCH(const ImageError, error);
    for (const int bound : {0, 64}) QCOMPARE(decoded(file, bound).error, error);
  }
};

QTEST_GUILESS_MAIN(HostileFilesTest)
#include "HostileFilesTest.moc"
