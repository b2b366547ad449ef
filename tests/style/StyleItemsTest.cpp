#include <QtQml/qqmlextensionplugin.h>
#include <QAccessible>
#include <QQmlComponent>
#include <QQmlEngine>
#include <QQuickItem>
#include <QQuickView>
#include <QSignalSpy>
#include <QTest>
#include <array>
#include <cmath>
#include <functional>

#include "Palette.h"
#include "SpinnerClock.h"
#include "ToolTipArea.h"

Q_IMPORT_QML_PLUGIN(Lumagrid_StylePlugin)

using namespace lumagrid;

namespace {

const QColor kBackdrop(200, 220, 240);
const QColor kAccent(31, 111, 95);
const QColor kDanger(182, 63, 47);

QColor over(QColor top, double opacity, QColor below) {
  const auto mixed = [opacity](int one, int other) { return qRound(one * opacity + other * (1 - opacity)); };
  return {mixed(top.red(), below.red()), mixed(top.green(), below.green()), mixed(top.blue(), below.blue())};
}

// From 1 to 21.
double contrast(QColor one, QColor other) {
  const auto luminance = [](const QColor& color) {
    const auto linear = [](float value) {
      return value <= 0.04045F ? value / 12.92 : std::pow((value + 0.055) / 1.055, 2.4);
    };
    return 0.2126 * linear(color.redF()) + 0.7152 * linear(color.greenF()) + 0.0722 * linear(color.blueF());
  };
  const auto [darker, lighter] = std::minmax({luminance(one), luminance(other)});
  return (lighter + 0.05) / (darker + 0.05);
}

struct Style {
  const char* qml = nullptr;
  QSizeF size;  // more than that of the label, where there is one
  double pressedScale = 1;
  QColor color;
  std::array<double, 3> opacities = {};  // of the fill: released, pressed, disabled
  double shadow = 0;                     // the opacity of black beneath it, where it shows through
};

}  // namespace

// What is drawn in a window: buttons, each in the middle of 200 points of one colour, and the clock of spinners.
class StyleItemsTest : public QObject {
  Q_OBJECT

 private Q_SLOTS:
  void cleanup() { m_view.reset(); }

  void looksAndActsByItsState_data() {
    QTest::addColumn<Style>("style");
    const auto row = [](const char* name, const char* qml, QSizeF size, double pressedScale, QColor color,
                        const std::array<double, 3>& opacities, double shadow = 0) {
      QTest::newRow(name) << Style{qml, size, pressedScale, color, opacities, shadow};
    };
    row("side", "SideIconButtonStyle { backgroundColor: '#b63f2f'; foregroundColor: 'white' }", {56, 56}, 0.97, kDanger,
        {0.96, 0.86, 0.42}, 0.12);
    row("chrome", "ChromeButtonStyle { text: 'mm'; backgroundColor: '#b63f2f'; foregroundColor: 'white' }", {36, 24},
        0.985, kDanger, {1, 0.86, 1});
    row("zoom", "IconChromeButtonStyle {}", {34, 34}, 0.96, Qt::black, {0.06, 0.1, 0.02});
    row("preset", "GridPresetButtonStyle { text: '25'; isActive: true }", {24, 18}, 0.98, kAccent, {1, 0.86, 1});
  }

  void looksAndActsByItsState() {
    QFETCH(const Style, style);
    load(QString::fromLatin1(style.qml));
    const auto* label = m_button->property("contentItem").value<QQuickItem*>();
    const bool isEmpty = label->implicitWidth() == 0;
    const QSizeF labelSize(std::ceil(label->implicitWidth()), std::ceil(label->implicitHeight()));
    QCOMPARE(m_button->size(), isEmpty ? style.size : style.size + labelSize);
    // Where no label is, the middle, and there the shadow is whole; else between the label and the edge.
    const double y = isEmpty ? 0 : -m_button->height() / 2 + 5;
    const auto isFilled = [&, y](double opacity) {
      return shows(y, over(style.color, opacity, over(Qt::black, style.shadow * opacity, kBackdrop)));
    };
    QTRY_VERIFY(isFilled(style.opacities[0]));

    QSignalSpy clicks(m_button, SIGNAL(clicked()));
    QSignalSpy scales(m_button, &QQuickItem::scaleChanged);
    QTest::mousePress(m_view.get(), Qt::LeftButton, {}, kCentre);
    QTRY_COMPARE(m_button->scale(), style.pressedScale);
    QVERIFY(scales.count() > 1);  // animated, not at once
    QTRY_VERIFY(isFilled(style.opacities[1]));
    QTest::mouseRelease(m_view.get(), Qt::LeftButton, {}, kCentre);
    QTRY_COMPARE(m_button->scale(), 1.0);
    QCOMPARE(clicks.count(), 1);
    QVERIFY(!m_button->hasActiveFocus());  // a click does not take the keys away from the window

    m_button->setProperty("isAvailable", false);
    scales.clear();
    QTRY_VERIFY(isFilled(style.opacities[2]));
    QTest::mouseClick(m_view.get(), Qt::LeftButton, {}, kCentre);
    QCOMPARE(scales.count(), 0);
    QCOMPARE(clicks.count(), 1);
  }

  // A bar that leaves is disabled as a whole.
  void disabledSurroundingsLeaveTheLookAlone() {
    load(QStringLiteral("Item { width: 34; height: 34; IconChromeButtonStyle {} }"));
    QVERIFY(shows(0, over(Qt::black, 0.06, kBackdrop)));
    m_button->setEnabled(false);
    QVERIFY(shows(0, over(Qt::black, 0.06, kBackdrop)));
    QVERIFY(!m_button->childItems().first()->isEnabled());
  }

  void theIconCastsAShadowThroughItsFill() {
    load(
        QStringLiteral("SideIconButtonStyle { iconName: 'checkmarkCircleFill'; backgroundColor: 'transparent'; "
                       "foregroundColor: 'white' }"));
    // Just outside of the disc, 11 points from its middle, and 8 from that of its shadow; the sigma is 5 points.
    QVERIFY(shows(12.5, over(Qt::black, 0.12 * 0.6, kBackdrop), 5));
    QVERIFY(shows(-24.5, kBackdrop));
  }

  void toolTipsStandBelowWithinTheWindow_data() {
    QTest::addColumn<QRectF>("item");
    QTest::addColumn<QPointF>("position");  // of 80 x 24 points, in a window of 400 x 300
    QTest::newRow("centred below the item") << QRectF(100, 50, 41, 30) << QPointF(81, 88);
    QTest::newRow("not beyond the left edge") << QRectF(0, 50, 30, 30) << QPointF(8, 88);
    QTest::newRow("nor beyond the right one") << QRectF(380, 50, 20, 30) << QPointF(312, 88);
    QTest::newRow("just above the lower edge") << QRectF(100, 230, 40, 30) << QPointF(80, 268);
    QTest::newRow("above the item where there is no room below") << QRectF(100, 231, 40, 30) << QPointF(80, 199);
  }

  void toolTipsStandBelowWithinTheWindow() {
    QFETCH(const QRectF, item);
    QTEST(ToolTipArea::positionOf({80, 24}, item, {400, 300}), "position");
  }

  void toolTipsLeave_data() {
    QTest::addColumn<std::function<void()>>("event");
    const auto row = [](const char* name, const std::function<void()>& event) { QTest::newRow(name) << event; };
    row("with the pointer", [this] { QTest::mouseMove(m_view.get(), {5, 5}); });
    row("with a press of any button", [this] { QTest::mousePress(m_view.get(), Qt::RightButton, {}, {5, 5}); });
    row("with a key", [this] { QTest::keyClick(m_view.get(), Qt::Key_A); });
    row("with a dialog", [this] { send(QEvent(QEvent::WindowBlocked)); });
    row("with another window", [this] { send(QFocusEvent(QEvent::FocusOut)); });
    row("when the item is hidden", [this] { m_button->childItems().first()->setVisible(false); });
    row("when the item is disabled", [this] { m_button->childItems().first()->setEnabled(false); });
    row("when the item is gone", [this] { delete m_button->childItems().first(); });
    row("with its text", [this] { m_view->findChild<ToolTipArea*>()->setProperty("text", QString()); });
  }

  void toolTipsLeave() {
    QFETCH(const std::function<void()>, event);
    const QString item = QStringLiteral("Item { width: 30; height: 30; ToolTip { text: 'a'; delay: 0 } } ");
    load(QStringLiteral("Row { %1 %1 }").arg(item));
    const auto shown = [this](int index) { return m_view->findChildren<ToolTipArea*>()[index]->isShown(); };
    const auto bubbles = [this] { return m_view->contentItem()->childItems().size() - 1; };
    QTest::mouseMove(m_view.get(), kCentre + QPoint(15, 0));
    QTRY_VERIFY(shown(1));
    QTest::mouseMove(m_view.get(), kCentre - QPoint(15, 0));
    QTRY_VERIFY(shown(0) && !shown(1));
    QCOMPARE(bubbles(), 1);
    event();
    QTRY_COMPARE(bubbles(), 0);
  }

  void keysAndAssistiveTechnologyClick() {
    load(QStringLiteral("GridPresetButtonStyle { text: '9'; helpText: '3 x 3 grid'; isActive: true }"));
    QSignalSpy clicks(m_button, SIGNAL(clicked()));
    QTest::keyClick(m_view.get(), Qt::Key_Tab);
    QVERIFY(m_button->hasActiveFocus());
    QTRY_VERIFY(shows(-m_button->height() / 2 - 2.5, kAccent));
    for (const auto key : {Qt::Key_Space, Qt::Key_Return, Qt::Key_Enter}) QTest::keyClick(m_view.get(), key);

    QAccessible::setActive(true);
    QAccessibleInterface* preset = QAccessible::queryAccessibleInterface(m_button);
    QCOMPARE(preset->text(QAccessible::Description), QStringLiteral("3 x 3 grid"));
    QVERIFY(preset->state().checked);
    preset->actionInterface()->doAction(QAccessibleActionInterface::pressAction());
    QCOMPARE(clicks.count(), 4);
    m_button->setEnabled(false);
    preset->actionInterface()->doAction(QAccessibleActionInterface::pressAction());
    QCOMPARE(clicks.count(), 4);
  }

  void paletteFollowsTheAppearance() {
    Palette* palette = Palette::instance();
    QSignalSpy changes(palette, &Palette::changed);
    const QColor lightText = palette->text();
    const Appearance dark(ColorScheme::dark);
    palette->setAppearance(&dark);
    QCOMPARE(changes.count(), 1);
    QVERIFY(palette->text().lightness() > lightText.lightness());
    // What has its colour from nobody else can be seen, and read, in both.
    const Appearance light(ColorScheme::light);
    for (const Appearance* appearance : {&dark, &light}) {
      palette->setAppearance(appearance);
      QVERIFY(contrast(palette->danger(), palette->errorBackground()) >= 4.5);
      QVERIFY(contrast(palette->focusRing(), palette->windowBackground()) >= 3);
    }
  }

  void spinnersTickOnlyWhileTheyCanBeSeen() {
    const SpinnerClock* clock = SpinnerClock::instance();
    auto window = std::make_unique<QQuickWindow>();
    SpinnerClock::Running spinner(window.get());
    SpinnerClock::Running other(window.get());
    QVERIFY(!clock->isTicking());  // not shown yet
    window->show();
    QTRY_VERIFY(clock->isTicking());
    QSignalSpy ticks(clock, &SpinnerClock::ticked);
    QVERIFY(ticks.wait());

    spinner = {};
    QVERIFY(clock->isTicking());
    window->hide();
    QTRY_VERIFY(!clock->isTicking());
    window->show();
    QTRY_VERIFY(clock->isTicking());
    other = {};
    QVERIFY(!clock->isTicking());

    spinner = SpinnerClock::Running(window.get());
    QTRY_VERIFY(clock->isTicking());
    window.reset();  // it outlives its windows
    QVERIFY(!clock->isTicking());
  }

 private:
  static constexpr QPoint kCentre{100, 100};

  template <typename Event>
  void send(Event event) {
    QCoreApplication::sendEvent(m_view.get(), &event);
  }

  void load(const QString& qml) {
    m_view = std::make_unique<QQuickView>();
    m_view->setColor(kBackdrop);
    m_view->resize(200, 200);
    QQmlComponent component(m_view->engine());
    component.setData("import QtQuick\nimport Lumagrid.Style\n" + qml.toUtf8(), QUrl());
    m_button = qobject_cast<QQuickItem*>(component.create());
    QVERIFY2(m_button, qPrintable(component.errorString()));
    m_button->setParent(m_view->contentItem());
    m_button->setParentItem(m_view->contentItem());
    m_button->setPosition(QPointF(std::round(100 - m_button->width() / 2), std::round(100 - m_button->height() / 2)));
    m_view->show();
    m_view->requestActivate();
    QVERIFY(QTest::qWaitForWindowActive(m_view.get()));
  }

  // Whether the picture has the colour, `y` points below the button's centre.
  bool shows(double y, QColor color, int tolerance = 2) const {
    const QPointF point = m_button->mapToScene(QPointF(m_button->width() / 2, m_button->height() / 2 + y));
    const QColor found = m_view->grabWindow().pixelColor(int(std::floor(point.x())), int(std::floor(point.y())));
    return std::abs(found.red() - color.red()) <= tolerance && std::abs(found.green() - color.green()) <= tolerance &&
           std::abs(found.blue() - color.blue()) <= tolerance;
  }

  std::unique_ptr<QQuickView> m_view;
  QQuickItem* m_button = nullptr;
};

QTEST_MAIN(StyleItemsTest)
#include "StyleItemsTest.moc"
