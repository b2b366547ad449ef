#pragma once

#include <QByteArrayView>
#include <QtEndian>
#include <array>
#include <cstdint>
#include <cstring>

namespace lumagrid {

// A place among bits, most significant first. Refill it whenever fewer bits than wanted may be left. Small enough to
// live in registers: copy it out of its owner for a stretch of work, and back.
class JpegBitCursor {
 public:
  static constexpr int kBitsOfRefill = 56;

  JpegBitCursor() = default;
  explicit JpegBitCursor(const std::uint8_t* bytes) : m_next(bytes) {}

  // At least kBitsOfRefill bits are left afterwards. Reads eight bytes from next().
  void refill() {
    m_bits |= qFromBigEndian<std::uint64_t>(m_next) >> m_count;
    m_next += (63 - m_count) >> 3;
    m_count |= kBitsOfRefill;
  }

  // The next `count` (1 to 32) bits.
  [[nodiscard]] std::uint32_t peek(int count) const { return static_cast<std::uint32_t>(m_bits >> (64 - count)); }

  void skip(int count) {
    m_bits <<= count;
    m_count -= count;
  }

  [[nodiscard]] const std::uint8_t* next() const { return m_next; }  // of the bytes that refill() takes
  [[nodiscard]] int count() const { return m_count; }                // of the bits taken from bytes before that
  void moveTo(const std::uint8_t* sameBytes) { m_next = sameBytes; }

 private:
  std::uint64_t m_bits = 0;  // from the top; below m_count of them may stand some of those that follow
  const std::uint8_t* m_next = nullptr;
  int m_count = 0;
};

// The entropy-coded data of a JPEG scan with the zeros that follow bytes of 0xFF taken out. The data goes through a
// small buffer, so that it is in the processor's nearest cache, and no single byte needs a look when bits are read.
//
// Whoever reads calls prepare() before each MCU: at most 10 blocks, so never more than kLargestMcu bytes. Past the end
// of an interval come zeros; prepare() and endInterval() tell whether any of them were read. Never reads a byte outside
// of the data.
class BaselineJpegBits {
 public:
  explicit BaselineJpegBits(QByteArrayView data)
      : m_next(reinterpret_cast<const std::uint8_t*>(data.data())), m_dataEnd(m_next + data.size()) {
    startInterval();
  }
  Q_DISABLE_COPY_MOVE(BaselineJpegBits)

  // False when the data of this interval was used up before.
  [[nodiscard]] bool prepare() { return m_cursor.next() < m_safeEnd || load(); }

  [[nodiscard]] JpegBitCursor cursor() const { return m_cursor; }
  void setCursor(JpegBitCursor cursor) { m_cursor = cursor; }

  // True when exactly the bits of this interval were read, up to the padding of the last byte, and `marker` follows.
  // Reading goes on behind it.
  [[nodiscard]] bool endInterval(int marker);

 private:
  static constexpr std::ptrdiff_t kLargestMcu = 10 * 64 * 4;
  static constexpr std::ptrdiff_t kCapacity = 16384;
  static constexpr std::ptrdiff_t kZeros = kLargestMcu + 32;  // what may be read ahead comes on top

  void startInterval() {
    m_cursor = JpegBitCursor(m_buffer.data());
    m_safeEnd = m_end = m_buffer.data();
    m_isAtMarker = false;
  }
  [[nodiscard]] bool load();

  JpegBitCursor m_cursor;
  const std::uint8_t* m_safeEnd = nullptr;  // before it, the buffer holds a whole MCU, or zeros for it
  std::uint8_t* m_end = nullptr;            // of the bytes in the buffer
  bool m_isAtMarker = false;                // the interval ends where the buffer does
  const std::uint8_t* m_next;               // what goes into the buffer next
  const std::uint8_t* m_dataEnd;
  std::array<std::uint8_t, kCapacity + kZeros> m_buffer;
};

}  // namespace lumagrid
