#include "SystemColors.h"

#include <QTest>
#include <cmath>

using namespace lumagrid;

namespace {

constexpr double kReadableContrast = 4.5;

struct Color {
  double red = 0;
  double green = 0;
  double blue = 0;
};

Color opaque(const QColor& color) {
  return {color.redF(), color.greenF(), color.blueF()};
}

Color over(const Color& below, const Color& above, double opacity) {
  const auto mix = [opacity](double from, double to) { return from + (to - from) * opacity; };
  return {mix(below.red, above.red), mix(below.green, above.green), mix(below.blue, above.blue)};
}

// WCAG 2: relative luminance and contrast ratio.
double luminance(const Color& color) {
  const auto linear = [](double c) { return c <= 0.04045 ? c / 12.92 : std::pow((c + 0.055) / 1.055, 2.4); };
  return 0.2126 * linear(color.red) + 0.7152 * linear(color.green) + 0.0722 * linear(color.blue);
}

double contrast(const Color& one, const Color& other) {
  const auto [darker, lighter] = std::minmax({luminance(one), luminance(other)});
  return (lighter + 0.05) / (darker + 0.05);
}

struct Layer {
  QColor color;
  double opacity = 0;
};

// Everything that a text of the window can stand on: the gradient's ends with and without each disc, bare, under the
// card's ends, and under a bar.
std::vector<Color> backdrops(ColorScheme scheme) {
  const bool dark = scheme == ColorScheme::dark;
  const QColor bar = SystemColors::of(scheme).windowBackground;
  const std::vector<QColor> gradient =
      dark ? std::vector<QColor>{{26, 23, 20}, {36, 31, 26}} : std::vector<QColor>{{251, 246, 238}, {241, 224, 197}};
  const std::vector<Layer> discs = {
      {Qt::black, 0}, {QColor(228, 179, 107), dark ? 0.12 : 0.24}, {QColor(31, 111, 95), dark ? 0.22 : 0.18}};
  const std::vector<Layer> cards = dark ? std::vector<Layer>{{{44, 40, 36}, 0.92}, {{35, 31, 27}, 0.98}}
                                        : std::vector<Layer>{{Qt::white, 0.86}, {{238, 226, 208}, 0.96}};
  std::vector<Color> result = {opaque(bar)};
  for (const QColor& base : gradient) {
    for (const Layer& disc : discs) {
      const Color bare = over(opaque(base), opaque(disc.color), disc.opacity);
      result.push_back(bare);
      result.push_back(over(bare, opaque(bar), 0.9));
      for (const Layer& card : cards) {
        result.push_back(over(bare, opaque(card.color), card.opacity));
        result.push_back(over(result.back(), opaque(bar), 0.9));
      }
    }
  }
  return result;
}

}  // namespace

class SystemColorsTest : public QObject {
  Q_OBJECT

 private Q_SLOTS:
  void contentIsReadableOnEveryBackdrop_data() {
    QTest::addColumn<ColorScheme>("scheme");
    QTest::newRow("in the light") << ColorScheme::light;
    QTest::newRow("in the dark") << ColorScheme::dark;
  }

  void contentIsReadableOnEveryBackdrop() {
    QFETCH(ColorScheme, scheme);
    const SystemColors colors = SystemColors::of(scheme);
    QCOMPARE(colors.windowBackground.alpha(), 255);
    for (const Color& backdrop : backdrops(scheme)) {
      const auto contrastOf = [&backdrop](const QColor& content) {
        return contrast(over(backdrop, opaque(content), content.alphaF()), backdrop);
      };
      QVERIFY(contrastOf(colors.secondaryContent) >= kReadableContrast);
      QVERIFY(contrastOf(colors.primaryContent) > contrastOf(colors.secondaryContent));
    }
  }
};

QTEST_APPLESS_MAIN(SystemColorsTest)
#include "SystemColorsTest.moc"
