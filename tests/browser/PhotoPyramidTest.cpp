#include "PhotoPyramid.h"

#include <QRandomGenerator>
#include <QTest>
#include <thread>

using namespace lumagrid;

namespace {

using Greys = QList<QList<int>>;

QImage picture(const Greys& greys) {
  QImage image(int(greys[0].size()), int(greys.size()), QImage::Format_RGBX8888);
  for (int y = 0; y < image.height(); ++y) {
    for (int x = 0; x < image.width(); ++x) image.setPixel(x, y, qRgb(greys[y][x], greys[y][x], greys[y][x]));
  }
  return image;
}

QImage noise(QSize size) {
  QImage image(size, QImage::Format_RGBX8888);
  QRandomGenerator random(1);
  for (int y = 0; y < size.height(); ++y) {
    for (int x = 0; x < size.width(); ++x) image.setPixel(x, y, qRgb(0, 0, 0) | random.generate());
  }
  return image;
}

}  // namespace

class PhotoPyramidTest : public QObject {
  Q_OBJECT

 private Q_SLOTS:
  void halves_data() {
    QTest::addColumn<Greys>("pixels");
    QTest::addColumn<Greys>("half");
    QTest::newRow("four pixels become their average") << Greys{{0, 100}, {200, 40}} << Greys{{85}};
    QTest::newRow("an average is rounded, not cut") << Greys{{0, 0}, {1, 1}} << Greys{{1}};
    QTest::newRow("white stays white") << Greys{{255, 255}, {255, 255}} << Greys{{255}};
    QTest::newRow("the last column of an odd width counts twice") << Greys{{0, 0, 80}, {0, 0, 40}} << Greys{{0, 60}};
    QTest::newRow("the last row of an odd height counts twice")
        << Greys{{10, 30}, {0, 0}, {50, 70}} << Greys{{10}, {60}};
  }
  void halves() {
    QFETCH(Greys, pixels);
    QFETCH(Greys, half);
    QCOMPARE(halved(picture(pixels)), picture(half));
  }

  void scalesByArea_data() {
    QTest::addColumn<Greys>("pixels");
    QTest::addColumn<Greys>("scaled");
    QTest::newRow("a pixel on a border is shared by its parts") << Greys{{0, 90, 255}} << Greys{{30, 200}};
    QTest::newRow("rows are shared like columns") << Greys{{0}, {90}, {255}} << Greys{{30}, {200}};
    QTest::newRow("many rows are all counted") << Greys{{10}, {20}, {30}, {40}, {50}, {60}, {70}} << Greys{{40}};
    QTest::newRow("the same size changes nothing") << Greys{{1, 2}, {254, 255}} << Greys{{1, 2}, {254, 255}};
  }
  void scalesByArea() {
    QFETCH(Greys, pixels);
    QFETCH(Greys, scaled);
    const QImage expected = picture(scaled);
    QCOMPARE(areaScaled(picture(pixels), expected.size(), 1), expected);
  }

  // Also with more pixels for one than there are steps of weight.
  void whiteStaysWhiteAtAwkwardRatios() {
    for (const auto& [from, to] : {std::pair(QSize(6000, 400), QSize(914, 61)), {{3000, 3}, {7, 1}}}) {
      QImage white(from, QImage::Format_RGBX8888);
      white.fill(Qt::white);
      QImage expected(to, QImage::Format_RGBX8888);
      expected.fill(Qt::white);
      QCOMPARE(areaScaled(white, to, 2), expected);
    }
  }

  // Transparent pixels carry no colour, so they must not darken or tint what lies beside them.
  void averagesPremultipliedPixels() {
    QImage edge(2, 1, QImage::Format_ARGB32);
    edge.setPixel(0, 0, qRgba(200, 100, 0, 255));
    edge.setPixel(1, 0, qRgba(0, 0, 0, 0));
    const QImage photo = PhotoPyramid(edge).photo();
    for (const QImage& half : {halved(photo), areaScaled(photo, {1, 1}, 1)}) {
      QCOMPARE(half.format(), QImage::Format_RGBA8888_Premultiplied);
      const std::uint8_t* const bytes = half.constScanLine(0);
      QCOMPARE(QList<int>({bytes[0], bytes[1], bytes[2], bytes[3]}), QList<int>({100, 50, 0, 128}));
    }
  }

  void buildsItsLevelsInOrder() {
    const QImage photo = noise({3001, 1201});
    PhotoPyramid pyramid(photo);
    QCOMPARE(pyramid.levelCount(), 4);
    QCOMPARE(pyramid.level(0).constBits(), photo.constBits());  // shared, not copied
    QCOMPARE(pyramid.fitted({300, 120}), areaScaled(photo, {300, 120}, 1));
    while (pyramid.buildNextLevel()) {
    }
    QCOMPARE(pyramid.level(1), halved(photo));
    QCOMPARE(pyramid.level(3).size(), QSize(376, 151));
    QCOMPARE(pyramid.fitted({300, 120}), areaScaled(pyramid.level(2), {300, 120}, 1));
  }

  // A frame may ask for levels while a thread builds them: they come finest first, and whole.
  void readsWhileBuilding() {
    PhotoPyramid pyramid(noise({2000, 1500}));
    std::jthread builder([&pyramid] {
      while (pyramid.buildNextLevel()) {
      }
    });
    QImage coarser;
    while (coarser.isNull()) coarser = pyramid.level(2);
    QVERIFY(!pyramid.level(1).isNull());
    QCOMPARE(coarser.size(), QSize(500, 375));
  }
};

QTEST_APPLESS_MAIN(PhotoPyramidTest)
#include "PhotoPyramidTest.moc"
