#include "Damage.h"

#include <QtEndian>
#include <algorithm>
#include <random>

namespace lumagrid {

namespace {

using Random = std::mt19937_64;

// At least 0, below `end`; 0 without any.
qsizetype below(qsizetype end, Random& random) {
  return end > 0 ? static_cast<qsizetype>(random() % static_cast<std::uint64_t>(end)) : 0;
}

// Half of them near the begin, where the headers are.
qsizetype place(qsizetype size, Random& random) {
  constexpr qsizetype kHeaders = 1024;
  return below(random() % 2 == 0 ? std::min(size, kHeaders) : size, random);
}

void flipBytes(QByteArray& content, Random& random) {
  constexpr qsizetype kMost = 16;
  for (qsizetype left = below(kMost, random) + 1; left > 0 && !content.isEmpty(); --left) {
    char& byte = content.data()[place(content.size(), random)];
    byte = static_cast<char>(byte ^ static_cast<char>(random() % 255 + 1));
  }
}

void swapBlocks(QByteArray& content, Random& random) {
  const qsizetype size = below(std::min<qsizetype>(content.size() / 2, 4096), random);
  const qsizetype first = below(content.size() / 2 - size, random);
  const qsizetype second = content.size() / 2 + below(content.size() / 2 - size, random);
  std::swap_ranges(content.data() + first, content.data() + first + size, content.data() + second);
}

template <typename Number>
void enlarge(QByteArray& content, Random& random) {
  constexpr auto kSize = static_cast<qsizetype>(sizeof(Number));
  if (content.size() < kSize) return;
  char* const at = content.data() + place(content.size() - kSize + 1, random);
  const bool isBigEndian = random() % 2 == 0;
  Number number = isBigEndian ? qFromBigEndian<Number>(at) : qFromLittleEndian<Number>(at);
  switch (random() % 4) {
    case 0:
      number = static_cast<Number>(~Number{0});
      break;
    case 1:
      number = static_cast<Number>(static_cast<Number>(~Number{0}) >> 1);
      break;
    case 2:
      number = static_cast<Number>(number << (random() % 8 + 1));
      break;
    default:
      number = static_cast<Number>(number + random() % 64 + 1);
      break;
  }
  isBigEndian ? qToBigEndian(number, at) : qToLittleEndian(number, at);
}

}  // namespace

QByteArray damaged(QByteArray content, std::uint64_t seed) {
  Random random(seed * 0x9E3779B97F4A7C15U + 1);
  for (std::uint64_t left = random() % 3 + 1; left > 0; --left) {
    switch (random() % 5) {
      case 0:
        flipBytes(content, random);
        break;
      case 1:
        content.truncate(below(content.size(), random));
        break;
      case 2:
        swapBlocks(content, random);
        break;
      case 3:
        enlarge<quint16>(content, random);
        break;
      default:
        enlarge<quint32>(content, random);
        break;
    }
  }
  return content;
}

}  // namespace lumagrid
