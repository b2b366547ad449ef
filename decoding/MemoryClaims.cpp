#include "MemoryClaims.h"

#include <chrono>

namespace lumagrid {

namespace {

constexpr std::chrono::seconds kLongestWait(10);  // nobody decodes for longer

}  // namespace

bool MemoryClaims::claim(std::int64_t bytes, Urgency urgency, WhenShort whenShort) {
  std::unique_lock lock(m_mutex);
  if (bytes < 0 || bytes > m_budget) return false;
  const bool isUrgent = urgency == Urgency::urgent;
  const auto hasRoom = [&] { return m_claimed + bytes <= m_budget && (isUrgent || m_urgentWaiting == 0); };
  if (whenShort == WhenShort::refuse) {
    if (m_isClosed || !hasRoom()) return false;
  } else {
    m_urgentWaiting += isUrgent ? 1 : 0;
    const bool isGranted =
        m_changed.wait_for(lock, kLongestWait, [&] { return m_isClosed || hasRoom(); }) && !m_isClosed;
    m_urgentWaiting -= isUrgent ? 1 : 0;
    if (isUrgent) m_changed.notify_all();
    if (!isGranted) return false;
  }
  m_claimed += bytes;
  return true;
}

void MemoryClaims::giveBack(std::int64_t bytes) {
  {
    const std::scoped_lock lock(m_mutex);
    m_claimed -= bytes;
  }
  m_changed.notify_all();
}

void MemoryClaims::close() {
  {
    const std::scoped_lock lock(m_mutex);
    m_isClosed = true;
  }
  m_changed.notify_all();
}

}  // namespace lumagrid
