#pragma once

#include <array>
#include <cstdint>
#include <cstdio>  // jpeglib.h needs it first

#include <jpeglib.h>

#include "BaselineJpegBits.h"

namespace lumagrid {

// A Huffman code that was found at the beginning of some bits, and the symbol that it stands for.
struct JpegSymbol {
  std::uint8_t length = 0;  // of the code in bits; 0: the bits begin with no code of the table
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

  // For every value of the next kPrefixBits bits, the code that they begin with, if it is no longer than they are.
  std::array<JpegSymbol, size_t{1} << kPrefixBits> m_byPrefix{};
  // Codes of one length are consecutive numbers, and below those of every greater length once zeros fill them up to 16
  // bits. By length: the first code, filled up, and the least number of 16 bits above all that begin with such a code.
  std::array<std::uint32_t, 17> m_firstCode{};
  std::array<std::uint32_t, 17> m_codeBehindLast{};
  std::array<std::uint16_t, 17> m_indexOfFirst{};  // in m_symbols
  std::array<std::uint8_t, 256> m_symbols{};       // in the order of their codes
};

// One step in the coefficients of a block. A symbol gives the number of zero coefficients to come and the size in bits
// of the one after them, and that coefficient's bits follow the symbol's code.
struct JpegCoefficient {
  std::uint8_t length = 0;  // of the code and the coefficient in bits; 0: there is no such code
  std::uint8_t run = 0;     // of zeros
  bool isEndOfBlock = false;
  std::int16_t value = 0;
};

// A Huffman table for reading coefficients one by one.
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
  // For every value of the next kPrefixBits bits, the code with its coefficient, if both lie within them.
  std::array<JpegCoefficient, size_t{1} << kPrefixBits> m_byPrefix{};
};

// A Huffman table for passing over AC coefficients, whose values are not wanted: several of them with one look into its
// table.
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
