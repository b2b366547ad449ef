#include "BaselineJpegHuffman.h"

#include <algorithm>

namespace lumagrid {
namespace {

constexpr int kLongestCode = 16;
constexpr int kZeroRun = 0xf0;  // the symbol for 16 zeros and no coefficient

bool isEndOfBlock(int symbol) {
  return (symbol & 15) == 0 && symbol != kZeroRun;
}

// `bitsBehind` begin right after the code (ITU-T T.81, F.2.2.1).
JpegCoefficient coefficientOf(JpegSymbol found, std::uint32_t bitsBehind, JpegHuffmanTable::Kind kind) {
  const int size = found.symbol & 15;
  JpegCoefficient coefficient;
  coefficient.length = static_cast<std::uint8_t>(found.length + size);
  coefficient.run = found.symbol >> 4;
  coefficient.isEndOfBlock = kind == JpegHuffmanTable::Kind::ac && isEndOfBlock(found.symbol);
  if (size > 0) {
    const int number = static_cast<int>(bitsBehind >> (32 - size));
    const bool isNegative = bitsBehind >> 31 == 0;
    coefficient.value = static_cast<std::int16_t>(isNegative ? number - (1 << size) + 1 : number);
  }
  return coefficient;
}

}  // namespace

bool JpegHuffmanTable::isValid(const JHUFF_TBL& table, Kind kind) {
  constexpr int kLargestDcSize = 15;
  int count = 0;
  int code = 0;
  for (int length = 1; length <= kLongestCode; ++length) {
    count += table.bits[length];
    code = code * 2 + table.bits[length];
    if (code >= 1 << length) return false;  // more codes than there can be
  }
  return kind == Kind::ac ||
         std::all_of(table.huffval, table.huffval + count, [](int symbol) { return symbol <= kLargestDcSize; });
}

JpegHuffmanTable::JpegHuffmanTable(const JHUFF_TBL& table) {
  std::copy_n(table.huffval, m_symbols.size(), m_symbols.begin());
  std::uint32_t code = 0;
  unsigned index = 0;
  for (unsigned length = 1; length <= kLongestCode; ++length) {
    m_firstCode[length] = code;
    m_indexOfFirst[length] = static_cast<std::uint16_t>(index);
    for (int count = 0; count < table.bits[length]; ++count, ++index) {
      if (length <= kPrefixBits) {
        const auto first = m_byPrefix.begin() + (code >> (kLongestCode - kPrefixBits));
        std::fill_n(first, 1 << (kPrefixBits - length),
                    JpegSymbol{static_cast<std::uint8_t>(length), m_symbols[index]});
      }
      code += 1U << (kLongestCode - length);
    }
    m_codeBehindLast[length] = code;
  }
}

JpegSymbol JpegHuffmanTable::longSymbolFor(std::uint32_t bits) const {
  for (unsigned length = kPrefixBits + 1; length <= kLongestCode; ++length) {
    if (bits >= m_codeBehindLast[length]) continue;
    const std::uint32_t index = m_indexOfFirst[length] + ((bits - m_firstCode[length]) >> (kLongestCode - length));
    return {static_cast<std::uint8_t>(length), m_symbols[index]};
  }
  return {};
}

JpegCoefficientTable::JpegCoefficientTable(const JHUFF_TBL& table, Kind kind) : m_table(table), m_kind(kind) {
  for (std::uint32_t prefix = 0; prefix < m_byPrefix.size(); ++prefix) {
    const std::uint32_t bits = prefix << (32 - kPrefixBits);
    const JpegSymbol found = m_table.symbolFor(bits >> 16);
    const bool isWhole = found.length != 0 && found.length + (found.symbol & 15) <= kPrefixBits;
    if (isWhole) m_byPrefix[prefix] = coefficientOf(found, bits << found.length, kind);
  }
}

JpegCoefficient JpegCoefficientTable::longCoefficient(std::uint32_t bits) const {
  const JpegSymbol found = m_table.symbolFor(bits >> 16);
  return found.length == 0 ? JpegCoefficient{} : coefficientOf(found, bits << found.length, m_kind);
}

JpegAcSkipper::JpegAcSkipper(const JHUFF_TBL& table) : m_table(table) {
  for (std::uint32_t prefix = 0; prefix < m_byPrefix.size(); ++prefix) {
    int length = 0;
    int advance = 0;
    while (length < kPrefixBits) {
      const Step step = singleStep(prefix << (32 - kPrefixBits + length));
      const bool isWhole = step.length != 0 && length + step.length <= kPrefixBits;
      const bool isEnd = step.advance == kEndOfBlock;
      if (!isWhole || (!isEnd && advance + step.advance >= kBlockEnd)) break;
      length += step.length;
      advance += step.advance;
      if (isEnd) break;
    }
    if (length == 0) advance = kNoWholeSymbol;
    m_byPrefix[prefix] = static_cast<std::uint16_t>(advance << kLengthBits | length);
  }
}

JpegAcSkipper::Step JpegAcSkipper::singleStep(std::uint32_t bits) const {
  const JpegSymbol found = m_table.symbolFor(bits >> 16);
  if (found.length == 0) return {};
  return {found.length + (found.symbol & 15), isEndOfBlock(found.symbol) ? kEndOfBlock : (found.symbol >> 4) + 1};
}

}  // namespace lumagrid
