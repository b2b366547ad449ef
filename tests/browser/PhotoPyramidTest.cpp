#include "PhotoPyramid.h"

#include <QRandomGenerator>
#include <QTest>
#include <thread>

using namespace lumagrid;

namespace {

QImage picture(const QList<QList<int>>& greys) {
  QImage image(int(greys[0].size()), int(greys.size()), QImage::Format_RGBX8888);
  for (int y = 0; y < image.height(); ++y) {
    for (int x = 0; x < image.width(); ++x) image.setPixel(x, y, qRgb(greys[y][x], greys[y][x], greys[y][x]));
  }
  return image;
}

}  // namespace

class PhotoPyramidTest : public QObject {
  Q_OBJECT

 private Q_SLOTS:
  void averages() {
    QCOMPARE(halved(picture({{0, 0}, {1, 1}})), picture({{1}}));      // rounded, not cut
    QCOMPARE(halved(picture({{0, 90, 255}})), picture({{45, 255}}));  // the last column counts twice
    QCOMPARE(halved(picture({{0}, {90}, {255}})), picture({{45}, {255}}));
    QCOMPARE(areaScaled(picture({{0, 90, 255}}), {2, 1}, 1), picture({{30, 200}}));  // one is shared
    QCOMPARE(areaScaled(picture({{0}, {90}, {255}}), {1, 2}, 1), picture({{30}, {200}}));
    QCOMPARE(areaScaled(picture({{10}, {20}, {30}, {40}, {50}, {60}, {70}}), {1, 1}, 1), picture({{40}}));
    // White stays white, also with more pixels for one than there are steps of weight.
    for (const auto& [from, to] : {std::pair(QSize(6000, 400), QSize(914, 61)), {{3000, 3}, {7, 1}}}) {
      QImage white(from, QImage::Format_RGBX8888);
      white.fill(Qt::white);
      QCOMPARE(areaScaled(white, to, 2), white.copy(QRect({}, to)));
    }
  }

  // Transparent pixels carry no colour, so they must not darken or tint what lies beside them.
  void averagesPremultipliedPixels() {
    QImage edge(2, 1, QImage::Format_ARGB32);
    edge.setPixel(0, 0, qRgba(200, 100, 0, 255));
    edge.setPixel(1, 0, qRgba(0, 0, 0, 0));
    const QImage photo = PhotoPyramid(edge).photo();
    QCOMPARE(halved(photo).pixel(0, 0), qRgba(100, 50, 0, 128));
    QCOMPARE(areaScaled(photo, {1, 1}, 1).pixel(0, 0), qRgba(100, 50, 0, 128));
  }

  // A frame may ask for levels while a thread builds them: they come finest first, and whole.
  void levelsAreReadWhileTheyAreBuilt() {
    QImage photo(3001, 1201, QImage::Format_RGBX8888);
    QRandomGenerator(1).fillRange(reinterpret_cast<quint32*>(photo.bits()), photo.sizeInBytes() / 4);
    PhotoPyramid pyramid(photo);
    QCOMPARE(pyramid.level(0).constBits(), photo.constBits());  // shared, not copied
    {
      const std::jthread builder([&pyramid] {
        while (pyramid.buildNextLevel()) {
        }
      });
      while (pyramid.level(2).isNull()) std::this_thread::yield();
      QCOMPARE(pyramid.level(1), halved(photo));
    }
    QCOMPARE(pyramid.level(3).size(), QSize(376, 151));
    QCOMPARE(pyramid.fitted({300, 60}), areaScaled(pyramid.level(2), {300, 60}, 1));
  }
};

QTEST_APPLESS_MAIN(PhotoPyramidTest)
#include "PhotoPyramidTest.moc"
