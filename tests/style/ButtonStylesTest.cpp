#include <QtQml/qqmlextensionplugin.h>
#include <QAccessible>
#include <QQmlComponent>
#include <QQmlEngine>
#include <QQuickItem>
#include <QQuickView>
#include <QSignalSpy>
#include <QTest>
#include <cmath>

#include "Palette.h"

Q_IMPORT_QML_PLUGIN(Lumagrid_StylePlugin)

using namespace lumagrid;

namespace {

constexpr QRgb kBackdrop = qRgb(200, 220, 240);

QColor over(QColor top, double opacity, QColor below) {
  const double a = top.alphaF() * opacity;
  return QColor::fromRgbF(float(top.redF() * a + below.redF() * (1 - a)),
                          float(top.greenF() * a + below.greenF() * (1 - a)),
                          float(top.blueF() * a + below.blueF() * (1 - a)));
}

bool isClose(QColor left, QColor right, int levels = 2) {
  return std::abs(left.red() - right.red()) <= levels && std::abs(left.green() - right.green()) <= levels &&
         std::abs(left.blue() - right.blue()) <= levels;
}

QString describe(QColor actual, QColor expected) {
  return actual.name() + QStringLiteral(" for ") + expected.name();
}

}  // namespace

// A button in the middle of a window of 200 points, on one colour.
class ButtonStylesTest : public QObject {
  Q_OBJECT

 private Q_SLOTS:
  void init();
  void cleanup();
  void fill_data();
  void fill();
  void sizes_data();
  void sizes();
  void pressedScale_data();
  void pressedScale();
  void rimOfSideButton();
  void activePresetIsFilledAndOthersAreOutlined();
  void disabledButtonDoesNotShrink();
  void keysClickAndShowFocus();
  void assistiveTechnologyHearsNameAndState();
  void paletteFollowsTheAppearance();

 private:
  void load(const QString& qml);
  QPoint centre() const;
  // The colour of the picture `x`, `y` points from the button's centre.
  QColor colorAt(double x, double y) const;

  std::unique_ptr<QQuickView> m_view;
  QQuickItem* m_button = nullptr;
};

void ButtonStylesTest::init() {
  Palette::instance()->setAppearance(nullptr);
}

void ButtonStylesTest::cleanup() {
  m_view.reset();
}

void ButtonStylesTest::load(const QString& qml) {
  m_view = std::make_unique<QQuickView>();
  m_view->setColor(QColor(kBackdrop));
  m_view->resize(200, 200);
  QQmlComponent component(m_view->engine());
  component.setData("import QtQuick\nimport Lumagrid.Style\n" + qml.toUtf8(), QUrl());
  auto* button = qobject_cast<QQuickItem*>(component.create());
  QVERIFY2(button, qPrintable(component.errorString()));
  m_button = button;
  button->setParent(m_view->contentItem());
  button->setParentItem(m_view->contentItem());
  button->setPosition(QPointF(std::round(100 - button->width() / 2), std::round(100 - button->height() / 2)));
  m_view->show();
  m_view->requestActivate();
  QVERIFY(QTest::qWaitForWindowActive(m_view.get()));
}

QPoint ButtonStylesTest::centre() const {
  return m_button->mapToScene(QPointF(m_button->width() / 2, m_button->height() / 2)).toPoint();
}

QColor ButtonStylesTest::colorAt(double x, double y) const {
  const QPointF point = m_button->mapToScene(QPointF(m_button->width() / 2 + x, m_button->height() / 2 + y));
  return m_view->grabWindow().pixelColor(int(std::floor(point.x())), int(std::floor(point.y())));
}

void ButtonStylesTest::fill_data() {
  QTest::addColumn<QString>("qml");
  QTest::addColumn<QColor>("color");
  QTest::addColumn<double>("opacity");

  const QColor danger(182, 63, 47);
  const QString side =
      QStringLiteral("SideIconButtonStyle { backgroundColor: WindowPalette.danger; foregroundColor: \"white\"; %1 }");
  const QString chrome = QStringLiteral(
      "ChromeButtonStyle { text: \"mm\"; backgroundColor: WindowPalette.danger; foregroundColor: \"white\"; %1 }");
  const QString icon = QStringLiteral("IconChromeButtonStyle { %1 }");
  const QString preset = QStringLiteral("GridPresetButtonStyle { text: \"25\"; %1 }");
  const QString pressed = QStringLiteral("down: true");
  const QString disabled = QStringLiteral("enabled: false");

  QTest::newRow("an enabled side button") << side.arg(QString()) << danger << 0.96;
  QTest::newRow("a pressed side button") << side.arg(pressed) << danger << 0.86;
  QTest::newRow("a disabled side button") << side.arg(disabled) << danger << 0.42;
  QTest::newRow("a chrome button") << chrome.arg(QString()) << danger << 1.0;
  QTest::newRow("a pressed chrome button") << chrome.arg(pressed) << danger << 0.86;
  QTest::newRow("a chrome button has no disabled look") << chrome.arg(disabled) << danger << 1.0;
  QTest::newRow("a zoom button") << icon.arg(QString()) << QColor(Qt::black) << 0.06;
  QTest::newRow("a pressed zoom button") << icon.arg(pressed) << QColor(Qt::black) << 0.1;
  QTest::newRow("a disabled zoom button") << icon.arg(disabled) << QColor(Qt::black) << 0.02;
  QTest::newRow("an active preset") << preset.arg(QStringLiteral("isActive: true")) << QColor(31, 111, 95) << 1.0;
  QTest::newRow("a pressed active preset")
      << preset.arg(QStringLiteral("isActive: true; down: true")) << QColor(31, 111, 95) << 0.86;
  QTest::newRow("a pressed preset that is not active")
      << preset.arg(QStringLiteral("isActive: false; down: true")) << QColor(31, 111, 95) << 0.0;
}

void ButtonStylesTest::fill() {
  QFETCH(const QString, qml);
  QFETCH(const QColor, color);
  QFETCH(const double, opacity);

  load(qml);
  // Between the label and the edge. The shadow that lies beneath is hidden where the fill is opaque; the side button's
  // is 0.12 of black, as strong as the fill, and is whole so far inside.
  const double y = -m_button->height() / 2 + 5;
  const QColor backdrop(kBackdrop);
  const auto matches = [&] {
    const QColor actual = colorAt(0, y);
    const QColor clear = over(color, opacity, backdrop);
    const QColor shaded = over(color, opacity, over(Qt::black, 0.12 * opacity, backdrop));
    return isClose(actual, clear) ||
           (actual.red() <= clear.red() + 1 && actual.red() >= shaded.red() - 1 && m_button->width() == 56);
  };
  QTRY_VERIFY2(matches(), qPrintable(describe(colorAt(0, y), over(color, opacity, backdrop))));
}

void ButtonStylesTest::sizes_data() {
  QTest::addColumn<QString>("qml");
  QTest::addColumn<QSizeF>("padding");  // around the label; empty: a frame of `frame` points
  QTest::addColumn<QSizeF>("frame");

  QTest::newRow("a side button is 56 points")
      << QStringLiteral(
             "SideIconButtonStyle { iconName: \"trash\"; backgroundColor: \"red\"; foregroundColor: \"white\" }")
      << QSizeF() << QSizeF(56, 56);
  QTest::newRow("a zoom button is 34 points")
      << QStringLiteral("IconChromeButtonStyle { iconName: \"plusMagnifyingGlass\" }") << QSizeF() << QSizeF(34, 34);
  QTest::newRow("a chrome button pads its label by 18 and 12")
      << QStringLiteral("ChromeButtonStyle { text: \"Grid\"; backgroundColor: \"red\"; foregroundColor: \"white\" }")
      << QSizeF(36, 24) << QSizeF();
  QTest::newRow("a preset pads its label by 12 and 9")
      << QStringLiteral("GridPresetButtonStyle { text: \"25\"; isActive: false }") << QSizeF(24, 18) << QSizeF();
}

void ButtonStylesTest::sizes() {
  QFETCH(const QString, qml);
  QFETCH(const QSizeF, padding);
  QFETCH(const QSizeF, frame);

  load(qml);
  if (frame.isValid()) {
    QCOMPARE(m_button->size(), frame);
    return;
  }
  const auto* label = m_button->property("contentItem").value<QQuickItem*>();
  QVERIFY(label->implicitWidth() > 0);
  QCOMPARE(m_button->width(), std::ceil(label->implicitWidth() + padding.width()));
  QCOMPARE(m_button->height(), std::ceil(label->implicitHeight() + padding.height()));
}

void ButtonStylesTest::pressedScale_data() {
  QTest::addColumn<QString>("qml");
  QTest::addColumn<double>("scale");

  const QString colors = QStringLiteral("backgroundColor: \"red\"; foregroundColor: \"white\"");
  QTest::newRow("side") << QStringLiteral("SideIconButtonStyle { %1 }").arg(colors) << 0.97;
  QTest::newRow("chrome") << QStringLiteral("ChromeButtonStyle { text: \"Grid\"; %1 }").arg(colors) << 0.985;
  QTest::newRow("zoom") << QStringLiteral("IconChromeButtonStyle {}") << 0.96;
  QTest::newRow("preset") << QStringLiteral("GridPresetButtonStyle { text: \"9\"; isActive: false }") << 0.98;
}

void ButtonStylesTest::pressedScale() {
  QFETCH(const QString, qml);
  QFETCH(const double, scale);

  load(qml);
  QSignalSpy clicks(m_button, SIGNAL(clicked()));
  QSignalSpy scales(m_button, &QQuickItem::scaleChanged);
  QTest::mousePress(m_view.get(), Qt::LeftButton, {}, centre());
  QTRY_COMPARE(m_button->scale(), scale);
  QVERIFY(scales.count() > 1);  // animated, not at once
  QTest::mouseRelease(m_view.get(), Qt::LeftButton, {}, centre());
  QTRY_COMPARE(m_button->scale(), 1.0);
  QCOMPARE(clicks.count(), 1);
}

void ButtonStylesTest::rimOfSideButton() {
  // Half of the rim lies outside of the circle: the pixel above the top has half of its opacity.
  const QString qml =
      QStringLiteral("SideIconButtonStyle { backgroundColor: \"transparent\"; foregroundColor: \"red\"; enabled: %1 }");
  for (const auto& [enabled, opacity] :
       {std::pair(QStringLiteral("true"), 0.55), std::pair(QStringLiteral("false"), 0.2)}) {
    load(qml.arg(enabled));
    const QColor expected = over(Qt::white, opacity / 2, QColor(kBackdrop));
    QVERIFY2(isClose(colorAt(0, -28.5), expected), qPrintable(describe(colorAt(0, -28.5), expected)));
    QVERIFY(isClose(colorAt(0, -30), QColor(kBackdrop)));
  }
}

void ButtonStylesTest::activePresetIsFilledAndOthersAreOutlined() {
  load(QStringLiteral("GridPresetButtonStyle { text: \"25\"; isActive: false }"));
  const double top = -m_button->height() / 2;
  const QColor rim = over(Qt::black, 0.08 / 2, QColor(kBackdrop));
  QVERIFY2(isClose(colorAt(0, top - 0.5), rim), qPrintable(describe(colorAt(0, top - 0.5), rim)));
  m_button->setProperty("isActive", true);
  QTRY_VERIFY(isClose(colorAt(0, top + 4), QColor(31, 111, 95)));
  QVERIFY(isClose(colorAt(0, top - 0.5), QColor(kBackdrop)));
}

void ButtonStylesTest::disabledButtonDoesNotShrink() {
  load(QStringLiteral("IconChromeButtonStyle { enabled: false }"));
  QSignalSpy scales(m_button, &QQuickItem::scaleChanged);
  QSignalSpy clicks(m_button, SIGNAL(clicked()));
  QTest::mouseClick(m_view.get(), Qt::LeftButton, {}, centre());
  QCOMPARE(scales.count(), 0);
  QCOMPARE(clicks.count(), 0);
}

void ButtonStylesTest::keysClickAndShowFocus() {
  load(QStringLiteral("IconChromeButtonStyle { helpText: \"Zoom in\" }"));
  QSignalSpy clicks(m_button, SIGNAL(clicked()));
  QTest::mouseClick(m_view.get(), Qt::LeftButton, {}, centre());
  QCOMPARE(clicks.count(), 1);
  QVERIFY(!m_button->hasActiveFocus());  // a click does not take the keys away from the window

  QTest::keyClick(m_view.get(), Qt::Key_Tab);
  QVERIFY(m_button->hasActiveFocus());
  QTRY_VERIFY(isClose(colorAt(0, -19.5), QColor(31, 111, 95)));
  for (const auto key : {Qt::Key_Space, Qt::Key_Return, Qt::Key_Enter}) QTest::keyClick(m_view.get(), key);
  QCOMPARE(clicks.count(), 4);
}

void ButtonStylesTest::assistiveTechnologyHearsNameAndState() {
  load(QStringLiteral("GridPresetButtonStyle { text: \"9\"; helpText: \"3 x 3 grid\"; isActive: true }"));
  QAccessible::setActive(true);
  QAccessibleInterface* preset = QAccessible::queryAccessibleInterface(m_button);
  QVERIFY(preset);
  QCOMPARE(preset->text(QAccessible::Name), QStringLiteral("9"));
  QCOMPARE(preset->text(QAccessible::Description), QStringLiteral("3 x 3 grid"));
  QVERIFY(preset->state().checked);
  QSignalSpy clicks(m_button, SIGNAL(clicked()));
  preset->actionInterface()->doAction(QAccessibleActionInterface::pressAction());
  QCOMPARE(clicks.count(), 1);

  load(QStringLiteral("IconChromeButtonStyle { helpText: \"Zoom in\"; enabled: false }"));
  QAccessibleInterface* zoom = QAccessible::queryAccessibleInterface(m_button);
  QCOMPARE(zoom->role(), QAccessible::Button);
  QCOMPARE(zoom->text(QAccessible::Name), QStringLiteral("Zoom in"));
  QSignalSpy disabledClicks(m_button, SIGNAL(clicked()));
  zoom->actionInterface()->doAction(QAccessibleActionInterface::pressAction());
  QCOMPARE(disabledClicks.count(), 0);
}

void ButtonStylesTest::paletteFollowsTheAppearance() {
  Palette* palette = Palette::instance();
  QSignalSpy changes(palette, &Palette::changed);
  const QColor lightText = palette->text();
  const Appearance dark(ColorScheme::dark);
  palette->setAppearance(&dark);
  QCOMPARE(changes.count(), 1);
  QVERIFY(palette->text().lightness() > lightText.lightness());
  QCOMPARE(palette->line(), palette->softButton());
  QVERIFY(std::abs(palette->line().alphaF() - palette->text().alphaF() * 0.1) < 1e-4);
  QCOMPARE(palette->accent(), QColor(0x1F, 0x6F, 0x5F));
  QCOMPARE(palette->danger(), QColor(0xB6, 0x3F, 0x2F));
}

QTEST_MAIN(ButtonStylesTest)
#include "ButtonStylesTest.moc"
