#include <QTest>
#include <thread>

#include "PhotoPyramid.h"

using namespace lumagrid;

namespace {

QImage picture(const QList<QRgb>& row) {
  QImage image(static_cast<int>(row.size()), 1, QImage::Format_RGBA8888_Premultiplied);
  for (int x = 0; x < image.width(); ++x) {
    image.setPixel(x, 0, row[x]);
  }
  return image;
}

QImage picture(const QList<QList<int>>& greys) {
  QImage image(static_cast<int>(greys[0].size()), static_cast<int>(greys.size()), QImage::Format_RGBX8888);
  for (int y = 0; y < image.height(); ++y) {
    for (int x = 0; x < image.width(); ++x) {
      image.setPixel(x, y, qRgb(greys[y][x], greys[y][x], greys[y][x]));
    }
  }
  return image;
}

QList<QList<int>> greysOf(const QImage& image) {
  QList<QList<int>> greys;
  for (int y = 0; y < image.height(); ++y) {
    greys.emplaceBack();
    for (int x = 0; x < image.width(); ++x) {
      greys.back().append(qRed(image.pixel(x, y)));
    }
  }
  return greys;
}

QImage noise(QSize size) {
  QImage image(size, QImage::Format_RGBX8888);
  quint32 seed = 1;
  for (int y = 0; y < size.height(); ++y) {
    for (int x = 0; x < size.width(); ++x) {
      seed = seed * 1664525 + 1013904223;
      image.setPixel(x, y, 0xff000000 | seed >> 8);
    }
  }
  return image;
}

}  // namespace

class PhotoPyramidTest : public QObject {
  Q_OBJECT

 private Q_SLOTS:
  void halves_data() {
    QTest::addColumn<QList<QList<int>>>("pixels");
    QTest::addColumn<QList<QList<int>>>("half");
    using G = QList<QList<int>>;
    QTest::newRow("four pixels become their average") << G{{0, 100}, {200, 40}} << G{{85}};
    QTest::newRow("an average is rounded, not cut") << G{{0, 0}, {1, 1}} << G{{1}};
    QTest::newRow("white stays white") << G{{255, 255}, {255, 255}} << G{{255}};
    QTest::newRow("the last column of an odd width counts twice") << G{{0, 0, 80}, {0, 0, 40}} << G{{0, 60}};
    QTest::newRow("the last row of an odd height counts twice") << G{{10, 30}, {0, 0}, {50, 70}} << G{{10}, {60}};
    QTest::newRow("one pixel stays") << G{{77}} << G{{77}};
  }
  void halves() {
    QFETCH(QList<QList<int>>, pixels);
    QFETCH(QList<QList<int>>, half);
    QCOMPARE(greysOf(halved(picture(pixels))), half);
  }

  void scalesByArea_data() {
    QTest::addColumn<QList<QList<int>>>("pixels");
    QTest::addColumn<QSize>("size");
    QTest::addColumn<QList<QList<int>>>("scaled");
    using G = QList<QList<int>>;
    QTest::newRow("a pixel on a border is shared by its parts") << G{{0, 90, 255}} << QSize(2, 1) << G{{30, 200}};
    QTest::newRow("rows are shared like columns") << G{{0}, {90}, {255}} << QSize(1, 2) << G{{30}, {200}};
    QTest::newRow("whole pixels are averaged") << G{{0, 20, 100, 200}} << QSize(2, 1) << G{{10, 150}};
    QTest::newRow("the same size changes nothing") << G{{1, 2}, {254, 255}} << QSize(2, 2) << G{{1, 2}, {254, 255}};
    QTest::newRow("many rows are all counted") << G{{10}, {20}, {30}, {40}, {50}, {60}, {70}} << QSize(1, 1) << G{{40}};
  }
  void scalesByArea() {
    QFETCH(QList<QList<int>>, pixels);
    QFETCH(QSize, size);
    QFETCH(QList<QList<int>>, scaled);
    const QList<QList<int>> got = greysOf(areaScaled(picture(pixels), size, 1));
    QCOMPARE(got.size(), scaled.size());
    for (int y = 0; y < scaled.size(); ++y) {
      QCOMPARE(got[y].size(), scaled[y].size());
      for (int x = 0; x < scaled[y].size(); ++x) {
        QVERIFY(std::abs(got[y][x] - scaled[y][x]) <= 1);
      }
    }
  }

  void keepsExtremesAtAwkwardRatios_data() {
    QTest::addColumn<QSize>("from");
    QTest::addColumn<QSize>("to");
    QTest::newRow("a camera's photo") << QSize(6000, 400) << QSize(914, 61);
    QTest::newRow("more pixels for one than there are steps of weight") << QSize(3000, 3) << QSize(7, 1);
    QTest::newRow("hardly smaller") << QSize(1000, 1000) << QSize(999, 997);
  }
  void keepsExtremesAtAwkwardRatios() {
    QFETCH(QSize, from);
    QFETCH(QSize, to);
    QImage white(from, QImage::Format_RGBX8888);
    white.fill(Qt::white);
    QImage expected(to, QImage::Format_RGBX8888);
    expected.fill(Qt::white);
    QCOMPARE(areaScaled(white, to, 2), expected);
  }

  // Transparent pixels carry no colour, so they must not darken or tint what lies beside them.
  void averagesPremultipliedPixels() {
    const QImage edge = picture({qRgba(200, 100, 0, 255), qRgba(0, 0, 0, 0)});
    const QImage scaled = areaScaled(edge, {1, 1}, 1);
    for (const QImage& half : {halved(edge), scaled}) {
      QCOMPARE(half.format(), QImage::Format_RGBA8888_Premultiplied);
      const std::uint8_t* const bytes = half.constScanLine(0);
      QCOMPARE(QList<int>({bytes[0], bytes[1], bytes[2], bytes[3]}), QList<int>({100, 50, 0, 128}));
    }
  }

  void threadsAgree() {
    const QImage image = noise({701, 523});
    QCOMPARE(areaScaled(image, {97, 201}, 5), areaScaled(image, {97, 201}, 1));
  }

  void buildsItsLevelsInOrder() {
    const QImage photo = noise({3001, 1201});
    PhotoPyramid pyramid(photo);
    QCOMPARE(pyramid.levelCount(), 4);
    QCOMPARE(pyramid.level(0).constBits(), photo.constBits());  // shared, not copied
    QVERIFY(pyramid.level(1).isNull());
    const QImage fittedBefore = pyramid.fitted({300, 120});
    while (pyramid.buildNextLevel()) {
    }
    QCOMPARE(pyramid.level(1), halved(photo));
    QCOMPARE(pyramid.level(3).size(), QSize(376, 151));
    // From a level, the same picture but for rounding and for the ends of the pixels that straddle two of it.
    const QImage fittedAfter = pyramid.fitted({300, 120});
    qint64 difference = 0;
    for (int y = 0; y < 120; ++y) {
      for (int x = 0; x < 300; ++x) {
        difference += std::abs(qGreen(fittedBefore.pixel(x, y)) - qGreen(fittedAfter.pixel(x, y)));
      }
    }
    QVERIFY2(difference < 300 * 120 * 8, qPrintable(QString::number(difference)));
  }

  void takesOtherFormats() {
    QImage photo(4, 4, QImage::Format_RGB16);
    photo.fill(Qt::red);
    QCOMPARE(PhotoPyramid(photo).photo().format(), QImage::Format_RGBX8888);
    QImage clear(4, 4, QImage::Format_ARGB32);
    clear.fill(Qt::transparent);
    QCOMPARE(PhotoPyramid(clear).photo().format(), QImage::Format_RGBA8888_Premultiplied);
  }

  // A frame may ask for levels while a thread builds them.
  void readsWhileBuilding() {
    PhotoPyramid pyramid(noise({2000, 1500}));
    std::jthread builder([&pyramid] {
      while (pyramid.buildNextLevel()) {
      }
    });
    QSize coarsest;
    while (coarsest.isEmpty()) {
      // Levels come finest first, and whole.
      const QImage coarser = pyramid.level(2);
      if (!coarser.isNull()) {
        QVERIFY(!pyramid.level(1).isNull());
      }
      coarsest = coarser.size();
    }
    QCOMPARE(coarsest, QSize(500, 375));
  }
};

QTEST_APPLESS_MAIN(PhotoPyramidTest)
#include "PhotoPyramidTest.moc"
