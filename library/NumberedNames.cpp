#include "NumberedNames.h"

#include <algorithm>

namespace lumagrid {

namespace {

constexpr char kNumber = '0';
constexpr qsizetype kMostDigits = 254;  // in a number for the collator; it divides longer ones

bool isDigit(char byte) {
  return byte >= '0' && byte <= '9';
}

// The end of the bytes of which `isWanted` that begin at `begin`.
template <typename IsWanted>
qsizetype endOfRun(QByteArrayView name, qsizetype begin, IsWanted isWanted) {
  while (begin < name.size() && isWanted(name[begin])) ++begin;
  return begin;
}

}  // namespace

NumberedNames::NumberedNames(QByteArrayView sample) {
  QByteArray pattern;
  for (qsizetype at = 0; at < sample.size();) {
    if (static_cast<unsigned char>(sample[at]) > 0x7f) return;
    const qsizetype end = endOfRun(sample, at, isDigit);
    pattern += end > at ? kNumber : sample[at];
    at = std::max(end, at + 1);
  }
  m_pattern = pattern;
}

std::optional<QByteArray> NumberedNames::sortKey(QByteArrayView name) const {
  // Each number as the count of its digits and the digits, then what decides between numbers of one value: the name.
  QByteArray key;
  key.reserve(2 * name.size() + m_pattern.size());
  qsizetype at = 0;
  for (const char wanted : m_pattern) {
    if (at == name.size()) return std::nullopt;
    if (wanted != kNumber) {
      if (name[at++] != wanted) return std::nullopt;
      continue;
    }
    const qsizetype end = endOfRun(name, at, isDigit);
    if (end == at) return std::nullopt;
    const qsizetype begin = endOfRun(name, at, [](char byte) { return byte == '0'; });
    if (end - begin > kMostDigits) return std::nullopt;
    key += static_cast<char>(end - begin);
    key.append(name.sliced(begin, end - begin));
    at = end;
  }
  if (m_pattern.isNull() || at != name.size()) return std::nullopt;
  return key.append(name);
}

}  // namespace lumagrid
