#pragma once

#include <utility>

#if defined(__SANITIZE_THREAD__)
#include <sanitizer/tsan_interface.h>
#endif

namespace lumagrid {

// The toolkit is not built with the thread sanitizer, which therefore does not see that the toolkit's pool and event
// loop order what two threads do. These tell it: all that came before handOver() comes before what follows takeOver()
// of the same object. In other builds they do nothing.
inline void handOver([[maybe_unused]] const void* object) {
#if defined(__SANITIZE_THREAD__)
  __tsan_release(const_cast<void*>(object));
#endif
}
inline void takeOver([[maybe_unused]] const void* object) {
#if defined(__SANITIZE_THREAD__)
  __tsan_acquire(const_cast<void*>(object));
#endif
}

// What a closure takes to another thread. It goes on from there: whoever destroys the closure destroys nothing of it.
template <typename Value>
class HandedOver {
 public:
  explicit HandedOver(Value value) : m_value(std::move(value)) {}
  HandedOver(const HandedOver& other) : m_value(other.m_value) { handOver(this); }
  HandedOver(HandedOver&& other) noexcept : m_value(std::move(other.m_value)) { handOver(this); }
  HandedOver& operator=(const HandedOver&) = delete;
  HandedOver& operator=(HandedOver&&) = delete;
  ~HandedOver() { takeOver(this); }

  // On the other thread, before anything else; once.
  [[nodiscard]] Value take() {
    takeOver(this);
    Value value = std::move(m_value);
    handOver(this);
    return value;
  }

 private:
  Value m_value;
};

}  // namespace lumagrid
