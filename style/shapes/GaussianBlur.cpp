#include "GaussianBlur.h"

#include <algorithm>
#include <cmath>
#include <vector>

namespace lumagrid {

namespace {

std::vector<float> gaussianKernel(double sigma, int reach) {
  std::vector<float> kernel(std::size_t(reach) + 1);
  float sum = 0;
  for (int i = 0; i <= reach; ++i) {
    kernel[i] = float(std::exp(-i * i / (2 * sigma * sigma)));
    sum += i == 0 ? kernel[i] : 2 * kernel[i];
  }
  for (float& value : kernel) value /= sum;
  return kernel;
}

// Convolves each row of `source`, and writes it as a column of the result.
std::vector<float> blurredAndTransposed(const std::vector<float>& source, int width, int height,
                                        const std::vector<float>& kernel) {
  const int reach = int(kernel.size()) - 1;
  std::vector<float> result(source.size());
  for (int y = 0; y < height; ++y) {
    const float* row = source.data() + std::size_t(y) * width;
    for (int x = 0; x < width; ++x) {
      float sum = 0;
      for (int i = std::max(-reach, -x); i <= std::min(reach, width - 1 - x); ++i) {
        sum += row[x + i] * kernel[std::abs(i)];
      }
      result[std::size_t(x) * height + y] = sum;
    }
  }
  return result;
}

}  // namespace

int blurReach(double sigma) {
  return int(std::ceil(3 * sigma - 1e-6));
}

QImage blurredShadow(const QImage& image, double sigma, QRgb color) {
  const int width = image.width();
  const int height = image.height();
  std::vector<float> alpha(std::size_t(width) * height);
  for (int y = 0; y < height; ++y) {
    const auto* line = reinterpret_cast<const QRgb*>(image.constScanLine(y));
    for (int x = 0; x < width; ++x) alpha[std::size_t(y) * width + x] = float(qAlpha(line[x]));
  }
  const auto kernel = gaussianKernel(sigma, blurReach(sigma));
  alpha = blurredAndTransposed(alpha, width, height, kernel);
  alpha = blurredAndTransposed(alpha, height, width, kernel);
  QImage result(image.size(), QImage::Format_ARGB32_Premultiplied);
  for (int y = 0; y < height; ++y) {
    auto* line = reinterpret_cast<QRgb*>(result.scanLine(y));
    for (int x = 0; x < width; ++x) {
      const int a = std::clamp(int(std::lround(alpha[std::size_t(y) * width + x])), 0, 255);
      line[x] = qPremultiply(qRgba(qRed(color), qGreen(color), qBlue(color), a));
    }
  }
  return result;
}

}  // namespace lumagrid
