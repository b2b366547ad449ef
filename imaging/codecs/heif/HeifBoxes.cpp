#include "HeifBoxes.h"

#include <QByteArray>
#include <algorithm>

namespace lumagrid {
namespace {

// Big-endian numbers, one after the other. Behind the end there are zeros, and the reader is broken.
class BoxReader {
 public:
  explicit BoxReader(QByteArrayView bytes) : m_rest(bytes) {}

  [[nodiscard]] bool isAtEnd() const { return m_rest.isEmpty(); }
  [[nodiscard]] bool isBroken() const { return m_isBroken; }
  [[nodiscard]] std::uint64_t bytesLeft() const { return static_cast<std::uint64_t>(m_rest.size()); }

  QByteArrayView take(std::uint64_t count) {
    if (count > bytesLeft()) {
      m_isBroken = true;
      m_rest = {};
      return {};
    }
    const QByteArrayView taken = m_rest.first(static_cast<qsizetype>(count));
    m_rest = m_rest.sliced(taken.size());
    return taken;
  }

  // Of at most 8 bytes.
  std::uint64_t number(int bytes) {
    std::uint64_t value = 0;
    for (const char byte : take(static_cast<std::uint64_t>(bytes))) value = value << 8 | static_cast<uchar>(byte);
    return value;
  }
  std::uint32_t number32(int bytes) { return static_cast<std::uint32_t>(number(bytes)); }

 private:
  QByteArrayView m_rest;
  bool m_isBroken = false;
};

struct Box {
  QByteArrayView type;
  QByteArrayView content;
};

Box nextBox(BoxReader& reader) {
  constexpr std::uint64_t kShortHeader = 8;
  constexpr std::uint64_t kLongHeader = 16;
  std::uint64_t size = reader.number(4);
  Box box;
  box.type = reader.take(4);
  std::uint64_t header = kShortHeader;
  if (size == 1) {
    size = reader.number(8);
    header = kLongHeader;
  }
  const bool isToTheEnd = size == 0;
  box.content = reader.take(isToTheEnd ? reader.bytesLeft() : size < header ? ~std::uint64_t{0} : size - header);
  return box;
}

// The content of the first box of a type; nothing when there is none before the file breaks off.
std::optional<QByteArrayView> firstBox(QByteArrayView boxes, QByteArrayView type) {
  BoxReader reader(boxes);
  while (!reader.isAtEnd()) {
    const Box box = nextBox(reader);
    if (reader.isBroken()) return std::nullopt;
    if (box.type == type) return box.content;
  }
  return std::nullopt;
}

// The version of a box that has one; its flags follow.
int versionOf(BoxReader& reader, std::uint32_t* flags = nullptr) {
  const auto both = reader.number32(4);
  if (flags != nullptr) *flags = both & 0xffffff;
  return static_cast<int>(both >> 24);
}

bool readItems(QByteArrayView content, HeifBoxes& boxes) {
  BoxReader reader(content);
  reader.take(versionOf(reader) == 0 ? 2 : 4);  // their count
  while (!reader.isAtEnd()) {
    const Box box = nextBox(reader);
    if (box.type != QByteArrayView("infe")) continue;
    BoxReader entry(box.content);
    const int version = versionOf(entry);
    const auto id = entry.number32(version == 3 ? 4 : 2);
    entry.take(2);  // protection
    HeifItem item;
    if (version >= 2) item.type = entry.take(4);
    if (entry.isBroken() || !boxes.items.emplace(id, item).second) return false;
  }
  return !reader.isBroken();
}

bool readReferences(QByteArrayView content, HeifBoxes& boxes) {
  BoxReader reader(content);
  const int idBytes = versionOf(reader) == 0 ? 2 : 4;
  while (!reader.isAtEnd()) {
    const Box box = nextBox(reader);
    BoxReader entry(box.content);
    const auto from = boxes.items.find(entry.number32(idBytes));
    std::vector<std::uint32_t> targets(std::min<std::uint64_t>(entry.number(2), entry.bytesLeft() / 2));
    for (std::uint32_t& target : targets) target = entry.number32(idBytes);
    if (entry.isBroken()) return false;
    if (from == boxes.items.end()) continue;
    HeifItem& item = from->second;
    if (box.type == QByteArrayView("dimg") && item.sources.empty()) item.sources = targets;
    if (box.type == QByteArrayView("auxl") && item.auxiliaryOf == 0 && !targets.empty()) item.auxiliaryOf = targets[0];
  }
  return !reader.isBroken();
}

void addProperty(const Box& property, HeifItem& item) {
  const auto is = [&property](QByteArrayView type) { return property.type == type; };
  if (is("ispe")) {
    BoxReader reader(property.content);
    reader.take(4);
    item.width = std::max<std::int64_t>(item.width, reader.number32(4));
    item.height = std::max<std::int64_t>(item.height, reader.number32(4));
  } else if (is("av1C") || is("hvcC")) {
    item.configurations.push_back(property.content);
  } else if (is("irot") || is("imir") || is("clap")) {
    ++item.transforms;
  } else if (is("auxC")) {
    constexpr qsizetype kLongestName = 64;
    const QByteArray kind = property.content.first(std::min(property.content.size(), kLongestName)).toByteArray();
    item.isAlpha = item.isAlpha || kind.contains("auxid:1") || kind.contains("alpha");
  }
}

// Which item has which of the properties that stand before.
bool readProperties(QByteArrayView content, HeifBoxes& boxes) {
  const auto container = firstBox(content, "ipco");
  const auto associations = firstBox(content, "ipma");
  if (!container || !associations) return false;
  std::vector<Box> properties;
  BoxReader reader(*container);
  while (!reader.isAtEnd()) properties.push_back(nextBox(reader));
  if (reader.isBroken()) return false;

  BoxReader entries(*associations);
  std::uint32_t flags = 0;
  const int idBytes = versionOf(entries, &flags) == 0 ? 2 : 4;
  const int indexBytes = (flags & 1) != 0 ? 2 : 1;
  const std::uint32_t indexMask = indexBytes == 2 ? 0x7fff : 0x7f;  // without the bit for essential ones
  for (auto count = entries.number32(4); count > 0 && !entries.isBroken(); --count) {
    const auto item = boxes.items.find(entries.number32(idBytes));
    for (auto left = entries.number32(1); left > 0; --left) {
      const std::uint32_t index = entries.number32(indexBytes) & indexMask;
      if (item == boxes.items.end() || index == 0 || index > properties.size()) continue;
      addProperty(properties[index - 1], item->second);
    }
  }
  return !entries.isBroken();
}

bool readLocations(QByteArrayView content, QByteArrayView file, QByteArrayView inMeta, HeifBoxes& boxes) {
  constexpr std::uint64_t kMostUses = 8;  // of each byte of the file
  BoxReader reader(content);
  const int version = versionOf(reader);
  const auto sizes = reader.number32(2);
  const auto bytesOf = [sizes](int shift) { return static_cast<int>(sizes >> shift & 15); };
  for (const int shift : {12, 8, 4, 0}) {
    if (bytesOf(shift) > 8) return false;
  }
  std::uint64_t used = 0;
  for (auto count = reader.number32(version < 2 ? 2 : 4); count > 0 && !reader.isBroken(); --count) {
    const auto item = boxes.items.find(reader.number32(version < 2 ? 2 : 4));
    const auto method = version == 0 ? 0 : reader.number32(2) & 15;
    reader.take(2);  // of other files
    const auto base = reader.number(bytesOf(4));
    const QByteArrayView source = method == 1 ? inMeta : file;
    for (auto extents = reader.number32(2); extents > 0 && !reader.isBroken(); --extents) {
      if (version > 0) reader.take(static_cast<std::uint64_t>(bytesOf(0)));
      const auto at = base + reader.number(bytesOf(12));
      const auto length = reader.number(bytesOf(8));
      const auto size = static_cast<std::uint64_t>(source.size());
      if (item == boxes.items.end() || at >= size || method > 1) continue;
      const auto within = length == 0 ? size - at : std::min(length, size - at);
      used += within;
      if (used / kMostUses > static_cast<std::uint64_t>(file.size())) return false;
      item->second.extents.push_back(source.sliced(static_cast<qsizetype>(at), static_cast<qsizetype>(within)));
    }
  }
  return !reader.isBroken();
}

// The one box `meta` behind its version; nothing when there are several.
std::optional<QByteArrayView> metaBox(QByteArrayView file) {
  std::optional<QByteArrayView> meta;
  BoxReader reader(file);
  while (!reader.isAtEnd()) {
    const Box box = nextBox(reader);
    if (reader.isBroken()) break;  // what is cut short at the end is data
    if (box.type != QByteArrayView("meta")) continue;
    if (meta || box.content.size() < 4) return std::nullopt;
    meta = box.content.sliced(4);
  }
  return meta;
}

}  // namespace

QByteArray HeifItem::data() const {
  QByteArray joined;
  for (const QByteArrayView extent : extents) joined.append(extent.data(), extent.size());
  return joined;
}

std::optional<HeifBoxes> heifBoxes(QByteArrayView file) {
  const auto meta = metaBox(file);
  if (!meta) return std::nullopt;
  const auto primary = firstBox(*meta, "pitm");
  const auto items = firstBox(*meta, "iinf");
  const auto references = firstBox(*meta, "iref");
  const auto properties = firstBox(*meta, "iprp");
  const auto locations = firstBox(*meta, "iloc");
  if (!primary || !items || !properties || !locations) return std::nullopt;
  HeifBoxes boxes;
  BoxReader reader(*primary);
  boxes.primary = reader.number32(versionOf(reader) == 0 ? 2 : 4);
  const QByteArrayView inMeta = firstBox(*meta, "idat").value_or(QByteArrayView());
  const bool isSound = !reader.isBroken() && readItems(*items, boxes) &&
                       (!references || readReferences(*references, boxes)) && readProperties(*properties, boxes) &&
                       readLocations(*locations, file, inMeta, boxes);
  return isSound ? std::optional(std::move(boxes)) : std::nullopt;
}

}  // namespace lumagrid
