#pragma once

#include <algorithm>
#include <cstddef>
#include <list>
#include <mutex>
#include <optional>
#include <unordered_map>
#include <utility>

namespace lumagrid {

// For values that nobody but the cache holds.
struct NeverInUse {
  template <typename Value>
  bool operator()(const Value&) const {
    return false;
  }
};

// A map bounded by the bytes of its values: least recently used goes first, but none that is in use elsewhere, which
// would free nothing. Thread-safe by itself. A value larger than the whole budget is not kept.
template <typename Key, typename Value, typename Hash = std::hash<Key>, typename InUse = NeverInUse>
class MemoryCache {
 public:
  explicit MemoryCache(std::size_t budgetBytes) : m_budget(budgetBytes) {}

  [[nodiscard]] std::optional<Value> object(const Key& key) {
    const std::scoped_lock lock(m_mutex);
    const auto found = m_index.find(key);
    if (found == m_index.end()) return std::nullopt;
    m_entries.splice(m_entries.begin(), m_entries, found->second);
    return found->second->value;
  }

  // Replaces what stood under the key.
  void setObject(const Key& key, Value value, std::size_t bytes) {
    const std::scoped_lock lock(m_mutex);
    if (const auto found = m_index.find(key); found != m_index.end()) remove(found->second);
    if (bytes > m_budget) return;
    m_entries.push_front({key, std::move(value), bytes});
    m_index.emplace(key, m_entries.begin());
    m_bytes += bytes;
    shrinkTo(m_budget);
  }

  // Lets go of what was used least recently until `bytes` more would fit.
  void makeRoom(std::size_t bytes) {
    const std::scoped_lock lock(m_mutex);
    shrinkTo(m_budget - std::min(m_budget, bytes));
  }

  [[nodiscard]] std::size_t budget() const { return m_budget; }

 private:
  struct Entry {
    Key key;
    Value value;
    std::size_t bytes;
  };

  void shrinkTo(std::size_t bytes) {
    for (auto at = m_entries.end(); m_bytes > bytes && at != m_entries.begin();) {
      const auto oldest = std::prev(at);
      if (InUse()(oldest->value)) {
        at = oldest;
      } else {
        remove(oldest);
      }
    }
  }

  void remove(typename std::list<Entry>::iterator entry) {
    m_bytes -= entry->bytes;
    m_index.erase(entry->key);
    m_entries.erase(entry);
  }

  std::mutex m_mutex;
  std::list<Entry> m_entries;
  std::unordered_map<Key, typename std::list<Entry>::iterator, Hash> m_index;
  std::size_t m_bytes = 0;
  const std::size_t m_budget;
};

}  // namespace lumagrid
