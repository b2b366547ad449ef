#pragma once

#include <QTest>

namespace lumagrid {

// Fills the table of a test whose every row is one value, under a name that is a sentence; the test fetches `row`, or
// takes it apart.
template <typename Row>
void addRows(std::initializer_list<std::pair<const char*, Row>> rows) {
  QTest::addColumn<Row>("row");
  for (const auto& [name, row] : rows) QTest::newRow(name) << row;
}

template <typename Row>
Row fetchedRow() {
  return *static_cast<Row*>(QTest::qData("row", qMetaTypeId<Row>()));
}

}  // namespace lumagrid
