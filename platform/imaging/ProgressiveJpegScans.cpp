#include "ProgressiveJpegScans.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <utility>

namespace lumagrid {

namespace {

constexpr int kMostScans = 500;         // more are an attack on time, which the decoder refuses
constexpr int kLastSmoothedDetail = 9;  // with one coefficient up to this one, libjpeg-turbo smooths no mean value
constexpr qsizetype kMarkerBytes = 2;

enum Marker : std::uint8_t {
  kProgressiveFrame = 0xC2,
  kHuffmanTables = 0xC4,
  kArithmeticConditions = 0xCC,
  kFirstRestart = 0xD0,
  kLastRestart = 0xD7,
  kStart = 0xD8,
  kEnd = 0xD9,
  kScan = 0xDA,
};

bool isFrame(std::uint8_t marker) {
  return marker >= 0xC0 && marker <= 0xCF && marker != kHuffmanTables && marker != kArithmeticConditions &&
         marker != 0xC8;
}

struct Component {
  int horizontal = 0;
  int vertical = 0;
  bool hasDetail = false;  // a scan of it was kept
};

// By their identifiers; those that the file does not have are without sampling factors.
using Components = std::array<Component, 256>;

std::uint8_t byteAt(QByteArrayView bytes, qsizetype index) {
  return static_cast<std::uint8_t>(bytes[index]);
}

// The end of the entropy-coded data that begins at `begin`: the next marker that is no restart.
qsizetype endOfData(QByteArrayView file, qsizetype begin) {
  for (;;) {
    const qsizetype at = file.indexOf('\xff', begin);
    if (at < 0 || at + 1 >= file.size()) return file.size();
    const std::uint8_t next = byteAt(file, at + 1);
    if (next != 0 && next != 0xFF && (next < kFirstRestart || next > kLastRestart)) return at;
    begin = at + (next == 0xFF ? 1 : kMarkerBytes);
  }
}

bool readComponents(QByteArrayView frame, Components& components) {
  if (frame.size() < 6 || frame.size() != 6 + 3 * byteAt(frame, 5)) return false;
  for (qsizetype at = 6; at < frame.size(); at += 3) {
    Component& component = components[byteAt(frame, at)];
    if (component.horizontal != 0) return false;  // twice
    component = {byteAt(frame, at + 1) >> 4, byteAt(frame, at + 1) & 15, false};
    if (component.horizontal == 0 || component.vertical == 0) return false;
  }
  return true;
}

// The decoder gives such a component two pixels by two from each block at an eighth.
bool isHalved(const Component& component, const Components& all) {
  const auto isTwice = [&](const Component& other) { return other.horizontal >= 2 * component.horizontal; };
  const auto isTwiceDown = [&](const Component& other) { return other.vertical >= 2 * component.vertical; };
  return std::any_of(all.begin(), all.end(), isTwice) && std::any_of(all.begin(), all.end(), isTwiceDown);
}

enum class Use : std::uint8_t { needed, none, doubtful };

Use useOfScan(QByteArrayView header, Components& components) {
  if (header.isEmpty() || header.size() != 4 + 2 * byteAt(header, 0)) return Use::doubtful;
  const int first = byteAt(header, header.size() - 3);
  if (first == 0) return Use::needed;
  if (byteAt(header, 0) != 1) return Use::doubtful;
  Component& component = components[byteAt(header, 1)];
  if (component.horizontal == 0) return Use::doubtful;
  if (isHalved(component, components)) return Use::needed;
  if (component.hasDetail) return Use::none;
  component.hasDetail = first <= kLastSmoothedDetail;
  return Use::needed;
}

}  // namespace

QByteArray progressiveJpegForEighth(QByteArrayView file) {
  if (!file.startsWith("\xff\xd8")) return {};
  Components components;
  bool hasFrame = false;
  bool hasEnd = false;
  int scans = 0;
  QByteArray result;
  qsizetype copied = 0;  // how much of the file is in the result or left out of it
  const auto copyUpTo = [&](qsizetype end) {
    result.append(file.sliced(copied, end - copied));
    copied = end;
  };
  for (qsizetype at = kMarkerBytes; at + kMarkerBytes <= file.size();) {
    const std::uint8_t marker = byteAt(file, at + 1);
    if (byteAt(file, at) != 0xFF || marker <= 1 || (marker >= kFirstRestart && marker <= kStart) || marker == 0xFF) {
      return {};
    }
    if (marker == kEnd) {
      hasEnd = true;
      break;
    }
    if (at + 4 > file.size()) return {};
    const qsizetype length = byteAt(file, at + 2) << 8 | byteAt(file, at + 3);
    const qsizetype end = at + kMarkerBytes + length;
    if (length < 2 || end > file.size()) return {};
    const QByteArrayView content = file.sliced(at + 4, length - 2);
    if (isFrame(marker)) {
      if (marker != kProgressiveFrame || std::exchange(hasFrame, true)) return {};
      if (!readComponents(content, components)) return {};
    }
    if (marker != kScan) {
      at = end;
      continue;
    }
    if (!hasFrame || ++scans > kMostScans) return {};
    const Use use = useOfScan(content, components);
    if (use == Use::doubtful) return {};
    const qsizetype next = endOfData(file, end);
    if (use == Use::none) {
      copyUpTo(at);
      copied = next;
    }
    at = next;
  }
  if (!hasFrame || !hasEnd) return {};
  copyUpTo(file.size());
  return result;
}

}  // namespace lumagrid
