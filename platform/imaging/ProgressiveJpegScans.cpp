#include "ProgressiveJpegScans.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <utility>

#include "JpegSegments.h"

namespace lumagrid {

namespace {

constexpr int kMostScans = 500;         // more are an attack on time, which the decoder refuses
constexpr int kLastSmoothedDetail = 9;  // with one coefficient up to this one, libjpeg-turbo smooths no mean value

struct Component {
  int horizontal = 0;
  int vertical = 0;
  bool hasDetail = false;  // a scan of it was kept
};

// By their identifiers; those that the file does not have are without sampling factors.
using Components = std::array<Component, 256>;

// The end of the entropy-coded data that begins at `begin`: the next marker that is no restart.
qsizetype endOfData(QByteArrayView file, qsizetype begin) {
  for (;;) {
    const qsizetype at = file.indexOf('\xff', begin);
    if (at < 0 || at + 1 >= file.size()) return file.size();
    const int next = byteAt(file, at + 1);
    if (next != 0 && next != 0xFF && (next < kRestart0 || next > kRestart7)) return at;
    begin = at + (next == 0xFF ? 1 : 2);
  }
}

bool readComponents(QByteArrayView frame, Components& components) {
  if (frame.size() < 6 || frame.size() != 6 + 3 * byteAt(frame, 5)) return false;
  for (qsizetype at = 6; at < frame.size(); at += 3) {
    Component& component = components[static_cast<std::size_t>(byteAt(frame, at))];
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
  Component& component = components[static_cast<std::size_t>(byteAt(header, 1))];
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
  int scans = 0;
  QByteArray result;
  qsizetype copied = 0;  // how much of the file is in the result or left out of it
  for (qsizetype at = 2;;) {
    const auto segment = jpegSegment(file, at);
    if (!segment) return {};
    at = segment->end;
    if (segment->marker == kEndOfImage) break;
    if (isJpegFrame(segment->marker)) {
      if (segment->marker != kStartOfFrameProgressive || std::exchange(hasFrame, true)) return {};
      if (!readComponents(segment->content, components)) return {};
    }
    if (segment->marker != kStartOfScan) continue;
    if (!hasFrame || ++scans > kMostScans) return {};
    const Use use = useOfScan(segment->content, components);
    if (use == Use::doubtful) return {};
    at = endOfData(file, at);
    if (use == Use::none) {
      result.append(file.sliced(copied, segment->begin - copied));
      copied = at;
    }
  }
  if (!hasFrame) return {};
  return result.append(file.sliced(copied));
}

}  // namespace lumagrid
