#pragma once

#include <cstddef>
#include <list>
#include <mutex>
#include <optional>
#include <unordered_map>
#include <utility>

namespace lumagrid {

// A map bounded by the bytes of its values: least recently used goes first. Thread-safe by itself. A value larger than
// the whole budget is not kept.
template <typename Key, typename Value, typename Hash = std::hash<Key>>
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
    while (m_bytes > m_budget) remove(std::prev(m_entries.end()));
  }

  // Lets go of what was used least recently until `bytes` more would fit; never of the last one.
  void makeRoom(std::size_t bytes) {
    const std::scoped_lock lock(m_mutex);
    while (m_entries.size() > 1 && m_bytes + bytes > m_budget) remove(std::prev(m_entries.end()));
  }

 private:
  struct Entry {
    Key key;
    Value value;
    std::size_t bytes;
  };

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
