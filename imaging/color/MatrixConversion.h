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
  // What each value of each channel adds to the linear red, green and blue of sRGB, as entries of m_encoded. The three
  // lie side by side in one number: what borrows from its neighbour on the way gives it back in the sum of all
  // channels, which has no negative part. The first channel carries the place of black too.
  std::array<std::array<std::int64_t, 256>, 3> m_light{};
  std::vector<uchar> m_encoded;  // the values of sRGB for all light that the sums can give, out of range included
};

}  // namespace lumagrid
