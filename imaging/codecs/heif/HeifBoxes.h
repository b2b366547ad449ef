#pragma once

#include <QByteArrayView>
#include <cstdint>
#include <map>
#include <optional>
#include <vector>

namespace lumagrid {

// What the boxes of a HEIF or AVIF file say of one of its items. All views point into the file.
struct HeifItem {
  QByteArrayView type;                         // four letters; empty for an old kind of entry
  std::int64_t width = 0;                      // in pixels (ispe); 0 when it is not said
  std::int64_t height = 0;                     //
  std::vector<QByteArrayView> configurations;  // contents of av1C and hvcC
  int transforms = 0;                          // turns, mirrors and cuts
  bool isAlpha = false;                        // by its own word (auxC)
  std::vector<std::uint32_t> sources;          // items that it is put together from (dimg)
  std::uint32_t auxiliaryOf = 0;               // the item that it belongs to (auxl)
  std::vector<QByteArrayView> extents;         // its data, as far as it lies within the file

  [[nodiscard]] QByteArray data() const;  // the extents joined
};

struct HeifBoxes {
  std::uint32_t primary = 0;
  std::map<std::uint32_t, HeifItem> items;
};

// Reads the still pictures' boxes (`meta`) in one pass, and as their first reader would: the first of several boxes of
// a kind counts. Nothing where they contradict each other, are cut short, or name so much data that the file holds it
// several times. Any thread; takes time in proportion to the file.
[[nodiscard]] std::optional<HeifBoxes> heifBoxes(QByteArrayView file);

}  // namespace lumagrid
