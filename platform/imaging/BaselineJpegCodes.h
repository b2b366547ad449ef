#pragma once

#include <array>
#include <cstdint>

#include "BaselineJpegBits.h"
#include "BaselineJpegHeader.h"

namespace lumagrid {

// One symbol of a Huffman table, found in the bits ahead.
struct JpegSymbol {
  std::uint8_t length = 0;  // of the code in bits; 0: no symbol has this code
  std::uint8_t symbol = 0;
};

// The symbols of a table by their codes, of any length.
class JpegCodes {
 public:
  static constexpr int kShortBits = 9;

  explicit JpegCodes(const JpegCodeList& list);

  // `bits`: the next 16.
  [[nodiscard]] JpegSymbol symbolFor(std::uint32_t bits) const {
    const JpegSymbol found = m_short[bits >> (16 - kShortBits)];
    return found.length != 0 ? found : longSymbolFor(bits);
  }

 private:
  [[nodiscard]] JpegSymbol longSymbolFor(std::uint32_t bits) const;

  std::array<JpegSymbol, size_t{1} << kShortBits> m_short{};
  std::array<std::uint32_t, 17> m_endOfLength{};    // the first code of 16 bits behind those of a length
  std::array<std::uint16_t, 17> m_firstOfLength{};  // index of the first symbol of a length
  std::array<std::uint32_t, 17> m_codeOfLength{};   // and its code, of 16 bits
  std::array<std::uint8_t, 256> m_symbols{};
};

// A symbol of a table together with the number whose bits follow it: a coefficient and the zeros before it.
struct JpegCoefficient {
  std::uint8_t length = 0;  // of both in bits; 0: they are longer than the look ahead, or damaged
  std::uint8_t run = 0;     // of zeros
  bool isEndOfBlock = false;
  std::int16_t value = 0;
};

// Coefficients by the bits ahead.
class JpegCoefficientTable {
 public:
  enum class Kind { dc, ac };
  explicit JpegCoefficientTable(const JpegCodeList& list, Kind kind);

  // Takes the next coefficient; false for a code that means nothing. `bits` needs 31 of them.
  bool take(JpegBitCursor& bits, JpegCoefficient& coefficient) const {
    coefficient = m_ahead[bits.peek(kBits)];
    if (coefficient.length == 0) {
      coefficient = longCoefficient(bits.peek(32));
      if (coefficient.length == 0) return false;
    }
    bits.skip(coefficient.length);
    return true;
  }

 private:
  static constexpr int kBits = 10;

  [[nodiscard]] JpegCoefficient longCoefficient(std::uint32_t bits) const;

  JpegCodes m_codes;
  Kind m_kind;
  std::array<JpegCoefficient, size_t{1} << kBits> m_ahead{};
};

// Skips the AC coefficients of blocks, as many at once as the bits ahead hold in full.
class JpegAcSkipper {
 public:
  explicit JpegAcSkipper(const JpegCodeList& list);

  // Takes the AC coefficients of a block. False for damaged data.
  bool skipBlock(JpegBitCursor& bits) const {
    int position = 1;
    for (;;) {
      bits.refill();
      for (int step = 0; step < JpegBitCursor::kBitsOfRefill / kBits; ++step) {
        const unsigned entry = m_ahead[bits.peek(kBits)];
        const int advanced = position + static_cast<int>(entry >> kAdvanceShift);
        if (advanced >= kPositions) {
          // The last symbols of a block may only seem to be followed by more of it: then they count one by one.
          if (advanced == kPositions || (advanced > kEndOfBlock && advanced < kEndOfBlock + kPositions)) {
            bits.skip(static_cast<int>(entry & kLengthMask));
            return true;
          }
          bits.refill();
          const Step single = singleStep(bits.peek(32));
          position += single.advance;
          if (single.length == 0 || (position > kPositions && position < kEndOfBlock)) return false;
          bits.skip(single.length);
          if (position >= kPositions) return true;
          break;
        }
        bits.skip(static_cast<int>(entry & kLengthMask));
        position = advanced;
      }
    }
  }

 private:
  static constexpr int kBits = 13;
  static constexpr int kPositions = 64;        // of coefficients in a block
  static constexpr unsigned kLengthMask = 63;  // as wide as what a processor's shift looks at
  static constexpr int kAdvanceShift = 6;
  static constexpr int kEndOfBlock = 128;    // an advance that no run of coefficients reaches
  static constexpr int kNothingAhead = 512;  // one that neither reaches

  struct Step {
    int length = 0;  // in bits; 0: damaged
    int advance = 0;
  };
  [[nodiscard]] Step singleStep(std::uint32_t bits) const;

  JpegCodes m_codes;
  // The bits of whole symbols, and above them by how many positions in the block these advance.
  std::array<std::uint16_t, size_t{1} << kBits> m_ahead{};
};

}  // namespace lumagrid
