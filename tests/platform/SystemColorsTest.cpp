#include "SystemColors.h"

#include <QTest>
#include <cmath>

using namespace lumagrid;

namespace {

QColor over(const QColor& below, const QColor& above) {
  const auto mix = [&above](float from, float to) { return from + (to - from) * above.alphaF(); };
  return QColor::fromRgbF(mix(below.redF(), above.redF()), mix(below.greenF(), above.greenF()),
                          mix(below.blueF(), above.blueF()));
}

// WCAG 2: relative luminance and contrast ratio.
double luminance(const QColor& color) {
  const auto linear = [](double c) { return c <= 0.04045 ? c / 12.92 : std::pow((c + 0.055) / 1.055, 2.4); };
  return 0.2126 * linear(color.redF()) + 0.7152 * linear(color.greenF()) + 0.0722 * linear(color.blueF());
}

double contrast(const QColor& backdrop, const QColor& content) {
  const auto [darker, lighter] = std::minmax({luminance(over(backdrop, content)), luminance(backdrop)});
  return (lighter + 0.05) / (darker + 0.05);
}

}  // namespace

class SystemColorsTest : public QObject {
  Q_OBJECT

 private Q_SLOTS:
  void contentIsReadableOnEveryBackdrop_data() {
    QTest::addColumn<ColorScheme>("scheme");
    QTest::addColumn<QColor>(
        "worst");  // of the stage: where a disc stains the end of the gradient that is nearer to the text
    QTest::newRow("in the light") << ColorScheme::light << over({241, 224, 197}, {31, 111, 95, 46});
    QTest::newRow("in the dark") << ColorScheme::dark << over({36, 31, 26}, {228, 179, 107, 31});
  }

  void contentIsReadableOnEveryBackdrop() {
    QFETCH(ColorScheme, scheme);
    QFETCH(QColor, worst);
    const SystemColors colors = SystemColors::of(scheme);
    QCOMPARE(colors.windowBackground.alpha(), 255);
    for (const QColor& backdrop : {worst, colors.windowBackground}) {
      QVERIFY(contrast(backdrop, colors.secondaryContent) >= 4.5);
      QVERIFY(contrast(backdrop, colors.primaryContent) > contrast(backdrop, colors.secondaryContent));
    }
  }
};

QTEST_APPLESS_MAIN(SystemColorsTest)
#include "SystemColorsTest.moc"
