#include "BaselineJpegCodes.h"

#include <algorithm>

namespace lumagrid {
namespace {

constexpr int kZeroRun = 0xf0;  // the symbol for 16 zeros and no coefficient

bool isEndOfBlock(int symbol) {
  return (symbol & 15) == 0 && symbol != kZeroRun;
}

// The symbol and the bits of its number, of which there are enough, as a coefficient (ITU-T T.81, F.2.2.1).
JpegCoefficient coefficientOf(JpegSymbol found, std::uint32_t bitsBehind, JpegCoefficientTable::Kind kind) {
  const int size = found.symbol & 15;
  JpegCoefficient coefficient;
  coefficient.length = static_cast<std::uint8_t>(found.length + size);
  coefficient.run = found.symbol >> 4;
  coefficient.isEndOfBlock = kind == JpegCoefficientTable::Kind::ac && isEndOfBlock(found.symbol);
  if (size > 0) {
    const int number = static_cast<int>(bitsBehind >> (32 - size));
    const bool isNegative = bitsBehind >> 31 == 0;
    coefficient.value = static_cast<std::int16_t>(isNegative ? number - (1 << size) + 1 : number);
  }
  return coefficient;
}

}  // namespace

JpegCodes::JpegCodes(const JpegCodeList& list) : m_symbols(list.symbols) {
  std::uint32_t code = 0;  // of 16 bits, whatever its length
  unsigned index = 0;
  for (unsigned length = 1; length <= 16; ++length) {
    m_codeOfLength[length] = code;
    m_firstOfLength[length] = static_cast<std::uint16_t>(index);
    for (int count = 0; count < list.countOfLength[length]; ++count, ++index) {
      if (length <= kShortBits) {
        const auto first = m_short.begin() + (code >> (16 - kShortBits));
        std::fill_n(first, 1 << (kShortBits - length),
                    JpegSymbol{static_cast<std::uint8_t>(length), list.symbols[index]});
      }
      code += 1U << (16 - length);
    }
    m_endOfLength[length] = code;
  }
}

JpegSymbol JpegCodes::longSymbolFor(std::uint32_t bits) const {
  for (unsigned length = kShortBits + 1; length <= 16; ++length) {
    if (bits >= m_endOfLength[length]) continue;
    const std::uint32_t index = m_firstOfLength[length] + ((bits - m_codeOfLength[length]) >> (16 - length));
    return {static_cast<std::uint8_t>(length), m_symbols[index]};
  }
  return {};
}

JpegCoefficientTable::JpegCoefficientTable(const JpegCodeList& list, Kind kind) : m_codes(list), m_kind(kind) {
  for (std::uint32_t ahead = 0; ahead < m_ahead.size(); ++ahead) {
    const std::uint32_t bits = ahead << (32 - kBits);
    const JpegSymbol found = m_codes.symbolFor(bits >> 16);
    const bool isWhole = found.length != 0 && found.length + (found.symbol & 15) <= kBits;
    if (isWhole) m_ahead[ahead] = coefficientOf(found, bits << found.length, kind);
  }
}

JpegCoefficient JpegCoefficientTable::longCoefficient(std::uint32_t bits) const {
  const JpegSymbol found = m_codes.symbolFor(bits >> 16);
  return found.length == 0 ? JpegCoefficient{} : coefficientOf(found, bits << found.length, m_kind);
}

JpegAcSkipper::JpegAcSkipper(const JpegCodeList& list) : m_codes(list) {
  for (std::uint32_t ahead = 0; ahead < m_ahead.size(); ++ahead) {
    int length = 0;
    int advance = 0;
    for (;;) {
      const JpegSymbol found = m_codes.symbolFor((ahead << (16 - kBits + length)) & 0xffff);
      const int needed = length + found.length + (found.symbol & 15);
      if (found.length == 0 || needed > kBits) break;
      if (isEndOfBlock(found.symbol)) {
        length = needed;
        advance += kEndOfBlock;
        break;
      }
      const int next = advance + (found.symbol >> 4) + 1;
      if (next >= kPositions) break;
      length = needed;
      advance = next;
    }
    if (length == 0) advance = kNothingAhead;
    m_ahead[ahead] = static_cast<std::uint16_t>(advance << kAdvanceShift | length);
  }
}

JpegAcSkipper::Step JpegAcSkipper::singleStep(std::uint32_t bits) const {
  const JpegSymbol found = m_codes.symbolFor(bits >> 16);
  if (found.length == 0) return {};
  return {found.length + (found.symbol & 15), isEndOfBlock(found.symbol) ? kEndOfBlock : (found.symbol >> 4) + 1};
}

}  // namespace lumagrid
