#pragma once

#include <condition_variable>
#include <cstdint>
#include <mutex>

namespace lumagrid {

// The memory that all decoders together may use beyond what each has unasked. Thread-safe.
class MemoryClaims {
 public:
  explicit MemoryClaims(std::int64_t budget) : m_budget(budget) {}

  enum class Urgency : unsigned char { ordinary, urgent };
  enum class WhenShort : unsigned char { wait, refuse };

  // True when `bytes` may be used until they are given back. Waits for others to give back, urgent claims first, unless
  // the claim is above the whole budget or `whenShort` says not to: whoever holds something must not wait for more.
  [[nodiscard]] bool claim(std::int64_t bytes, Urgency urgency, WhenShort whenShort);
  void giveBack(std::int64_t bytes);

  // Refuses everybody from now on, those who wait included.
  void close();

 private:
  std::mutex m_mutex;  // guards all below
  std::condition_variable m_changed;
  const std::int64_t m_budget;
  std::int64_t m_claimed = 0;
  int m_urgentWaiting = 0;
  bool m_isClosed = false;
};

}  // namespace lumagrid
