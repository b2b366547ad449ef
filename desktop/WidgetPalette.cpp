#include "WidgetPalette.h"

#include <QApplication>
#include <QPalette>

#include "SystemColors.h"
#include "moc_WidgetPalette.cpp"

namespace lumagrid {

namespace {

constexpr QColor kHighlight(31, 111, 95);  // the teal of the window

QColor over(const QColor& backdrop, const QColor& content) {
  const float opacity = content.alphaF();
  const auto mix = [opacity](float below, float above) { return below + (above - below) * opacity; };
  return QColor::fromRgbF(mix(backdrop.redF(), content.redF()), mix(backdrop.greenF(), content.greenF()),
                          mix(backdrop.blueF(), content.blueF()));
}

QPalette paletteFor(ColorScheme colorScheme) {
  const SystemColors colors = SystemColors::of(colorScheme);
  QPalette palette(colors.windowBackground);  // shades, and the disabled group
  const QColor text = over(colors.windowBackground, colors.primaryContent);
  for (const auto group : {QPalette::Active, QPalette::Inactive}) {
    for (const auto role : {QPalette::WindowText, QPalette::Text, QPalette::ButtonText}) {
      palette.setColor(group, role, text);
    }
    palette.setColor(group, QPalette::PlaceholderText, over(colors.windowBackground, colors.secondaryContent));
  }
  palette.setColor(QPalette::Highlight, kHighlight);
  palette.setColor(QPalette::HighlightedText, Qt::white);
  return palette;
}

}  // namespace

ColorScheme colorSchemeOf(const QPalette& palette) {
  return palette.color(QPalette::Window).lightnessF() < palette.color(QPalette::WindowText).lightnessF()
             ? ColorScheme::dark
             : ColorScheme::light;
}

WidgetPalette::WidgetPalette(const Appearance& appearance, QObject* parent)
    : QObject(parent), m_appearance(appearance) {
  connect(&appearance, &Appearance::colorSchemeChanged, this, [this] {
    if (m_applied) update();
  });
}

void WidgetPalette::apply() {
  if (m_applied) return;
  m_applied = true;
  update();
}

void WidgetPalette::update() {
  QApplication::setPalette(QPalette());  // the desktop's own again
  if (colorSchemeOf(QApplication::palette()) == m_appearance.colorScheme()) return;
  QApplication::setPalette(paletteFor(m_appearance.colorScheme()));
}

}  // namespace lumagrid
