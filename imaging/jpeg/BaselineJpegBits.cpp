#include "BaselineJpegBits.h"

#include <algorithm>

namespace lumagrid {
namespace {

constexpr std::uint8_t kEscape = 0xff;

bool hasEscape(std::uint64_t bytes) {
  constexpr std::uint64_t kOnes = 0x0101010101010101;
  constexpr std::uint64_t kTops = 0x8080808080808080;
  return ((~bytes - kOnes) & bytes & kTops) != 0;
}

}  // namespace

// Keeps what has not been read, and fills the buffer up to its capacity or the next marker. False when all was read.
bool BaselineJpegBits::load() {
  if (m_isAtMarker) return false;
  const auto left = m_end - m_cursor.next();
  std::memmove(m_buffer.data(), m_cursor.next(), static_cast<size_t>(left));
  m_cursor.moveTo(m_buffer.data());
  std::uint8_t* end = m_buffer.data() + left;
  std::uint8_t* const full = m_buffer.data() + kCapacity;
  while (end < full && !m_isAtMarker) {
    std::uint64_t bytes = 0;
    if (m_dataEnd - m_next >= 8 && full - end >= 8) {
      std::memcpy(&bytes, m_next, sizeof(bytes));
      if (!hasEscape(bytes)) {
        std::memcpy(end, &bytes, sizeof(bytes));
        m_next += 8;
        end += 8;
        continue;
      }
    }
    // Up to the next eight bytes without an escape, one by one.
    for (int step = 0; step < 8 && end < full; ++step) {
      if (m_next == m_dataEnd) {
        m_isAtMarker = true;
        break;
      }
      if (*m_next == kEscape) {
        if (m_dataEnd - m_next < 2 || m_next[1] != 0) {
          m_isAtMarker = true;
          break;
        }
        ++m_next;
        *end++ = kEscape;
        ++m_next;
        continue;
      }
      *end++ = *m_next++;
    }
  }
  m_end = end;
  if (m_isAtMarker) {
    constexpr std::ptrdiff_t kReadAhead = 8;
    std::memset(end, 0, static_cast<size_t>(kZeros));
    m_safeEnd = end + kReadAhead + 1;
  } else {
    m_safeEnd = end - kLargestMcu;
  }
  return true;
}

bool BaselineJpegBits::endInterval(int marker) {
  // An interval may end just where the buffer was full.
  if (!m_isAtMarker && !load()) return false;
  const std::ptrdiff_t bitsLeft = (m_end - m_cursor.next()) * 8 + m_cursor.count();
  if (!m_isAtMarker || bitsLeft < 0 || bitsLeft > 7) return false;
  while (m_dataEnd - m_next >= 2 && m_next[0] == kEscape && m_next[1] == kEscape) ++m_next;  // padding
  if (m_dataEnd - m_next < 2 || m_next[0] != kEscape || m_next[1] != marker) return false;
  m_next += 2;
  startInterval();
  return true;
}

}  // namespace lumagrid
