#pragma once

#include <QImage>
#include <QSize>
#include <mutex>
#include <stop_token>
#include <vector>

namespace lumagrid {

// A decoded photo and its halves. Level 0 is the photo itself, shared and never copied; each further level averages 2 x
// 2 pixels of the one before (the last column or row of an odd size counts twice), down to the first that fits into one
// block. All levels together take a third of the photo's bytes.
// Texel i of level k covers the photo's pixels [i * 2^k, (i + 1) * 2^k), so the last one may reach past the photo's
// edge. Thread-safe; one thread at a time builds.
class PhotoPyramid {
 public:
  // The longest side, in texels, of a level that needs no coarser one.
  static constexpr int kCoarsestSide = 510;

  // A photo in RGBX8888 or RGBA8888_Premultiplied is taken as it is; any other format is converted.
  explicit PhotoPyramid(QImage photo);

  [[nodiscard]] const QImage& photo() const { return m_photo; }
  [[nodiscard]] QSize size() const { return m_photo.size(); }
  [[nodiscard]] int levelCount() const { return static_cast<int>(m_levels.size()); }

  // Null until it is built; level 0 always exists.
  [[nodiscard]] QImage level(int level) const;

  // Builds the finest level that is missing. False when none is, when `stop` asks to, or when there is no memory for
  // it. The first level of 24 megapixels takes 10 ms, and much longer where fresh memory is slow.
  bool buildNextLevel(const std::stop_token& stop = {});

  // The photo in exactly `pixels` (each side no larger than the photo's), averaged by area from the coarsest level that
  // still has twice as many and covers nothing but the photo; or what keepFitted() has kept.
  [[nodiscard]] QImage fitted(QSize pixels) const;

 private:
  const QImage m_photo;
  mutable std::mutex m_mutex;
  std::vector<QImage> m_levels;
};

// Makes what fitted(pixels) gives before it is asked for, and keeps it among all that the process keeps. Any thread.
QImage keepFitted(const QImage& photo, QSize pixels);

// The average of each 2 x 2 pixels, in the same format; sizes round up. Null when stopped, or without memory for it.
[[nodiscard]] QImage halved(const QImage& image, const std::stop_token& stop = {});

}  // namespace lumagrid
