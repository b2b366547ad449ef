#pragma once

#include <QByteArray>
#include <QByteArrayView>
#include <optional>

namespace lumagrid {

// Names that differ in nothing but their numbers, as those of the files of one camera do. No locale has a say in their
// order, and their keys cost a tenth of a collator's. Any thread.
class NumberedNames {
 public:
  explicit NumberedNames(QByteArrayView sample);

  // Orders by its bytes as NameCollator's keys of the same names do. Nothing for a name that differs from the sample in
  // more than its numbers, that is not ASCII, or with a number of more than 254 digits.
  [[nodiscard]] std::optional<QByteArray> sortKey(QByteArrayView name) const;

 private:
  QByteArray m_pattern;  // the sample with one digit for each number; null when it is not ASCII
};

}  // namespace lumagrid
