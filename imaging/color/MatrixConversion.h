#pragma once

#include <QtGlobal>
#include <array>
#include <cstdint>
#include <memory>
#include <vector>

namespace lumagrid {

// Turns 8-bit colours into sRGB for profiles that are three curves and a matrix, as those of cameras and displays are:
// 1 ns for a pixel, where the general way takes 15. Within one step of it in every channel.
class MatrixConversion {
 public:
  // `profile`: an open lcms2 profile. Null when it says more than curves and a matrix.
  [[nodiscard]] static std::unique_ptr<MatrixConversion> of(void* profile);

  // Converts pixels of four bytes in place; the fourth stays. Any thread.
  void convert(uchar* pixels, qsizetype count) const;

 private:
  // For each channel and each value of it, its share of the linear red, green and blue of sRGB, in units of indices
  // into m_encoded. The three shares are fields of 16 bits of one number, red lowest, so that one addition adds all
  // three. A negative share borrows from the field above; in the sum of all channels, where every field is an index and
  // none is negative, that has been given back. Black is not index 0, as sums below it exist; its index is in the first
  // channel's shares.
  std::array<std::array<std::int64_t, 256>, 3> m_light{};
  // The sRGB value, 0 to 255, of each sum: of linear light from the least that the matrix can give, below black, to the
  // most, above white.
  std::vector<uchar> m_encoded;
};

}  // namespace lumagrid
