#pragma once

#include <array>
#include <cstdint>
#include <cstdio>  // jpeglib.h needs it first

#include <jpeglib.h>

#include "BaselineJpegBits.h"

namespace lumagrid {

// The beginning of some bits, taken as a Huffman code.
struct JpegSymbol {
  std::uint8_t length = 0;  // of the code in bits; 0: no code of the table begins the bits
  std::uint8_t symbol = 0;
};

// A Huffman table of a file, for looking up symbols.
class JpegHuffmanTable {
 public:
  enum class Kind { dc, ac };
  // Whether a file may use the table: the library refuses all others.
  [[nodiscard]] static bool isValid(const JHUFF_TBL& table, Kind kind);

  explicit JpegHuffmanTable(const JHUFF_TBL& table);

  // `bits`: the next 16.
  [[nodiscard]] JpegSymbol symbolFor(std::uint32_t bits) const {
    const JpegSymbol found = m_byPrefix[bits >> (16 - kPrefixBits)];
    return found.length != 0 ? found : longSymbolFor(bits);
  }

 private:
  static constexpr int kPrefixBits = 9;

  [[nodiscard]] JpegSymbol longSymbolFor(std::uint32_t bits) const;

  // Codes of at most kPrefixBits, for all bits that may follow them.
  std::array<JpegSymbol, size_t{1} << kPrefixBits> m_byPrefix{};
  // For each length of codes, these being consecutive numbers. Codes are filled up with zeros to 16 bits.
  std::array<std::uint32_t, 17> m_firstCode{};
  std::array<std::uint32_t, 17> m_codeBehindLast{};
  std::array<std::uint16_t, 17> m_indexOfFirst{};  // in m_symbols
  std::array<std::uint8_t, 256> m_symbols{};       // in the order of their codes
};

// A symbol of a Huffman table, which gives a run of zero coefficients and the size of the next one, together with that
// coefficient, whose bits follow the code.
struct JpegCoefficient {
  std::uint8_t length = 0;  // of the code and the coefficient in bits; 0: there is no such code
  std::uint8_t run = 0;     // of zeros
  bool isEndOfBlock = false;
  std::int16_t value = 0;
};

// A Huffman table, for reading one coefficient after the other.
class JpegCoefficientTable {
 public:
  using Kind = JpegHuffmanTable::Kind;
  explicit JpegCoefficientTable(const JHUFF_TBL& table, Kind kind);

  // Takes the next coefficient from at least 31 bits; false where no code begins them.
  bool take(JpegBitCursor& bits, JpegCoefficient& coefficient) const {
    coefficient = m_byPrefix[bits.peek(kPrefixBits)];
    if (coefficient.length == 0) {
      coefficient = longCoefficient(bits.peek(32));
      if (coefficient.length == 0) return false;
    }
    bits.skip(coefficient.length);
    return true;
  }

 private:
  static constexpr int kPrefixBits = 10;

  [[nodiscard]] JpegCoefficient longCoefficient(std::uint32_t bits) const;

  JpegHuffmanTable m_table;
  Kind m_kind;
  // Where code and coefficient together have at most kPrefixBits, for all bits that may follow them.
  std::array<JpegCoefficient, size_t{1} << kPrefixBits> m_byPrefix{};
};

// A Huffman table for AC coefficients that nobody wants the values of. It steps over several of them with one look.
class JpegAcSkipper {
 public:
  explicit JpegAcSkipper(const JHUFF_TBL& table);

  // Steps over the AC coefficients of one block; false for damaged data.
  bool skipBlock(JpegBitCursor& bits) const {
    int position = 1;  // of the next coefficient in the block
    for (;;) {
      bits.refill();
      for (int step = 0; step < JpegBitCursor::kBitsOfRefill / kPrefixBits; ++step) {
        const unsigned entry = m_byPrefix[bits.peek(kPrefixBits)];
        const int next = position + static_cast<int>(entry >> kLengthBits);
        if (next >= kBlockEnd) {
          const bool isFull = next == kBlockEnd;  // such a block has no symbol for its end
          const bool isEnded = next > kEndOfBlock && next < kEndOfBlock + kBlockEnd;
          if (isFull || isEnded) {
            bits.skip(static_cast<int>(entry & kLengthMask));
            return true;
          }
          // A code is longer than the look, or the block is full before the look ends, and the entry has taken bits of
          // the next block for more coefficients.
          bits.refill();
          const Step single = singleStep(bits.peek(32));
          position += single.advance;
          if (single.length == 0 || (position > kBlockEnd && position < kEndOfBlock)) return false;
          bits.skip(single.length);
          if (position >= kBlockEnd) return true;
          break;
        }
        bits.skip(static_cast<int>(entry & kLengthMask));
        position = next;
      }
    }
  }

 private:
  static constexpr int kPrefixBits = 13;
  static constexpr int kBlockEnd = 64;  // the position behind the last coefficient
  // What the symbol for the end of a block adds to the position: more than any coefficients could.
  static constexpr int kEndOfBlock = 128;
  static constexpr int kNoWholeSymbol = 512;   // an advance that leads to a single step, from every position
  static constexpr int kLengthBits = 6;        // of an entry, below the advance
  static constexpr unsigned kLengthMask = 63;  // as wide as what a processor's shift looks at

  struct Step {
    int length = 0;   // of a code and its coefficient in bits; 0: there is no such code
    int advance = 0;  // of the position
  };
  [[nodiscard]] Step singleStep(std::uint32_t bits) const;

  JpegHuffmanTable m_table;
  // For all values of the next kPrefixBits, how many of these are whole symbols with their coefficients, and by how
  // much those advance the position.
  std::array<std::uint16_t, size_t{1} << kPrefixBits> m_byPrefix{};
};

}  // namespace lumagrid
