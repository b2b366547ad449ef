#pragma once

#include <QByteArray>
#include <QByteArrayView>
#include <memory>

namespace lumagrid {

// The order of file names in lists: the user's locale (the root order in the C locale), case and width ignored first
// and then deciding, runs of digits by value. Not thread-safe; one object per thread. Without collation data in the
// system, bytes decide.
class NameCollator {
 public:
  NameCollator();
  ~NameCollator();

  // Bytes whose memcmp order is the order of the names (UTF-8; other bytes order as U+FFFD).
  [[nodiscard]] QByteArray sortKey(QByteArrayView name) const;

 private:
  struct Data;
  std::unique_ptr<Data> m_data;
};

}  // namespace lumagrid
