#include "MatrixConversion.h"

#include <lcms2.h>

#include <algorithm>
#include <cmath>
#include <optional>

namespace lumagrid {
namespace {

// Entries of the table for the light from black to white: the steepest part of the curve passes five of them per step.
constexpr double kEntriesOfRange = 16384;
constexpr int kBitsOfEntry = 16;  // of a sum; wider ones come from no real colours

using Row = std::array<double, 3>;
using Matrix = std::array<Row, 3>;

std::optional<Matrix> colorants(cmsHPROFILE profile) {
  Matrix matrix;
  constexpr cmsTagSignature kTags[3] = {cmsSigRedColorantTag, cmsSigGreenColorantTag, cmsSigBlueColorantTag};
  for (size_t column = 0; column < 3; ++column) {
    const auto* color = static_cast<const cmsCIEXYZ*>(cmsReadTag(profile, kTags[column]));
    if (color == nullptr) return std::nullopt;
    matrix[0][column] = color->X;
    matrix[1][column] = color->Y;
    matrix[2][column] = color->Z;
  }
  return matrix;
}

std::optional<Matrix> inverted(const Matrix& m) {
  const auto minor = [&m](size_t row, size_t column) {
    const size_t r1 = (row + 1) % 3;
    const size_t r2 = (row + 2) % 3;
    const size_t c1 = (column + 1) % 3;
    const size_t c2 = (column + 2) % 3;
    return m[r1][c1] * m[r2][c2] - m[r1][c2] * m[r2][c1];
  };
  const double determinant = m[0][0] * minor(0, 0) + m[0][1] * minor(0, 1) + m[0][2] * minor(0, 2);
  if (std::abs(determinant) < 1e-6) return std::nullopt;
  Matrix inverse;
  for (size_t row = 0; row < 3; ++row) {
    for (size_t column = 0; column < 3; ++column) inverse[row][column] = minor(column, row) / determinant;
  }
  return inverse;
}

// The matrix from the linear values of the profile to those of sRGB; both meet at D50.
std::optional<Matrix> toLinearSrgb(cmsHPROFILE profile) {
  cmsHPROFILE srgb = cmsCreate_sRGBProfile();
  const auto target = srgb != nullptr ? colorants(srgb) : std::nullopt;
  if (srgb != nullptr) cmsCloseProfile(srgb);
  const auto source = colorants(profile);
  const auto inverse = target ? inverted(*target) : std::nullopt;
  if (!source || !inverse) return std::nullopt;
  Matrix product{};
  for (size_t row = 0; row < 3; ++row) {
    for (size_t column = 0; column < 3; ++column) {
      for (size_t index = 0; index < 3; ++index) {
        product[row][column] += (*inverse)[row][index] * (*source)[index][column];
      }
    }
  }
  return product;
}

// IEC 61966-2-1.
double encoded(double light) {
  if (light <= 0.0031308) return std::max(light, 0.0) * 12.92;
  return std::min(1.055 * std::pow(light, 1 / 2.4) - 0.055, 1.0);
}

}  // namespace

std::unique_ptr<MatrixConversion> MatrixConversion::of(void* profile) {
  if (!cmsIsMatrixShaper(profile) || cmsGetColorSpace(profile) != cmsSigRgbData ||
      cmsGetPCS(profile) != cmsSigXYZData) {
    return nullptr;
  }
  const auto matrix = toLinearSrgb(profile);
  if (!matrix) return nullptr;
  double darkest = 0;
  double brightest = 1;
  for (const Row& row : *matrix) {
    double negative = 0;
    double positive = 0;
    for (const double factor : row) (factor < 0 ? negative : positive) += factor;
    darkest = std::min(darkest, negative);
    brightest = std::max(brightest, positive);
  }
  constexpr double kRounding = 2;  // of three numbers
  const double black = std::ceil(-darkest * kEntriesOfRange) + kRounding;
  const double entries = black + std::ceil(brightest * kEntriesOfRange) + kRounding + 1;
  if (!(entries < 1 << kBitsOfEntry)) return nullptr;

  auto conversion = std::make_unique<MatrixConversion>();
  constexpr cmsTagSignature kTags[3] = {cmsSigRedTRCTag, cmsSigGreenTRCTag, cmsSigBlueTRCTag};
  for (size_t channel = 0; channel < 3; ++channel) {
    const auto* curve = static_cast<const cmsToneCurve*>(cmsReadTag(profile, kTags[channel]));
    if (curve == nullptr) return nullptr;
    for (size_t value = 0; value < 256; ++value) {
      const double light = cmsEvalToneCurveFloat(curve, static_cast<float>(value) / 255);
      if (!(light >= 0 && light <= 1)) return nullptr;
      std::int64_t& sums = conversion->m_light[channel][value];
      for (size_t row = 0; row < 3; ++row) {
        const double origin = channel == 0 ? black : 0;
        const std::int64_t sum = std::llround(origin + (*matrix)[row][channel] * light * kEntriesOfRange);
        sums += sum * (std::int64_t{1} << (kBitsOfEntry * row));
      }
    }
  }
  conversion->m_encoded.resize(static_cast<size_t>(entries));
  for (size_t entry = 0; entry < conversion->m_encoded.size(); ++entry) {
    const double light = (static_cast<double>(entry) - black) / kEntriesOfRange;
    conversion->m_encoded[entry] = static_cast<uchar>(std::lround(encoded(light) * 255));
  }
  return conversion;
}

void MatrixConversion::convert(uchar* pixels, qsizetype count) const {
  const auto& [red, green, blue] = m_light;
  const uchar* const values = m_encoded.data();
  for (uchar* const end = pixels + count * 4; pixels != end; pixels += 4) {
    const auto sums = static_cast<std::uint64_t>(red[pixels[0]] + green[pixels[1]] + blue[pixels[2]]);
    pixels[0] = values[static_cast<std::uint16_t>(sums)];
    pixels[1] = values[static_cast<std::uint16_t>(sums >> kBitsOfEntry)];
    pixels[2] = values[sums >> (2 * kBitsOfEntry)];
  }
}

}  // namespace lumagrid
