#include <QtQml/qqmlextensionplugin.h>
#include <QAccessible>
#include <QSignalSpy>
#include <QtQuick>
#include <functional>

#include "Palette.h"
#include "ShapeImage.h"
#include "SpinnerClock.h"
#include "SpinnerImage.h"
#include "Table.h"
#include "ToolTipArea.h"

Q_IMPORT_QML_PLUGIN(Lumagrid_StylePlugin)

using namespace lumagrid;

// What no picture of the window tells of the things that are drawn in it. Items stand in the middle of 200 points.
class StyleTest : public QObject {
  Q_OBJECT

 private Q_SLOTS:
  void cleanup() { m_view.reset(); }

  void toolTipsStandBelowWithinTheWindow() {
    const auto position = [](const QRectF& item) { return ToolTipArea::positionOf({80, 24}, item, {400, 300}); };
    QCOMPARE(position({100, 50, 41, 30}), QPointF(81, 88));    // centered
    QCOMPARE(position({0, 50, 30, 30}), QPointF(8, 88));       // not beyond the left edge
    QCOMPARE(position({380, 50, 20, 30}), QPointF(312, 88));   // nor the right one
    QCOMPARE(position({100, 230, 40, 30}), QPointF(80, 268));  // just above the lower edge
    QCOMPARE(position({100, 231, 40, 30}), QPointF(80, 199));  // no room below
  }

  void toolTipsLeave_data() {
    const auto item = [this] { return m_item->childItems().first(); };
    addRows<std::function<void()>>({
        {"with the pointer", [this] { QTest::mouseMove(m_view.get(), QPoint(5, 5)); }},
        {"with any press", [this] { QTest::mousePress(m_view.get(), Qt::RightButton, {}, kOverItem); }},
        {"with a key", [this] { QTest::keyClick(m_view.get(), Qt::Key_A); }},
        {"with a dialog", [this] { send(QEvent(QEvent::WindowBlocked)); }},
        {"with another window", [this] { send(QFocusEvent(QEvent::FocusOut)); }},
        {"when the item is hidden", [item] { item()->setVisible(false); }},
        {"when the item is disabled", [item] { item()->setEnabled(false); }},
        {"when the item is gone", [item] { delete item(); }},
        {"with its text", [this] { m_view->findChild<ToolTipArea*>()->setProperty("text", QString()); }},
    });
  }

  void toolTipsLeave() {
    QFETCH(const std::function<void()>, row);
    const QByteArray item = "Item { width: 30; height: 30; ToolTip { text: 'a'; delay: 0 } } ";
    load("Row { " + item + item + "}");
    const auto shown = [this](int index) { return m_view->findChildren<ToolTipArea*>()[index]->isShown(); };
    const auto bubbles = [this] { return m_view->contentItem()->childItems().size() - 1; };
    QTest::mouseMove(m_view.get(), kCenter + QPoint(15, 0));
    QTRY_VERIFY(shown(1));
    QTest::mouseMove(m_view.get(), kOverItem);
    QTRY_VERIFY(shown(0) && !shown(1));
    QCOMPARE(bubbles(), 1);
    row();
    QTRY_COMPARE(bubbles(), 0);
  }

  void pointerKeysAndAssistiveTechnologyClick() {
    load("GridPresetButtonStyle { text: '9'; helpText: '3 x 3 grid'; isActive: true }");
    QSignalSpy clicks(m_item, SIGNAL(clicked()));
    const auto click = [this] { QTest::mouseClick(m_view.get(), Qt::LeftButton, {}, kCenter); };
    click();
    QVERIFY(!m_item->hasActiveFocus());  // that would take the keys away from the window
    QTest::keyClick(m_view.get(), Qt::Key_Tab);
    QVERIFY(m_item->hasActiveFocus());
    for (const auto key : {Qt::Key_Space, Qt::Key_Return, Qt::Key_Enter}) QTest::keyClick(m_view.get(), key);
    send(QKeyEvent(QEvent::KeyPress, Qt::Key_Return, {}, {}, true));  // held down

    QAccessible::setActive(true);
    QAccessibleInterface* preset = QAccessible::queryAccessibleInterface(m_item);
    QCOMPARE(preset->text(QAccessible::Description), QStringLiteral("3 x 3 grid"));
    QVERIFY(preset->state().checked);
    for (const bool isAvailable : {true, false}) {
      m_item->setProperty("isAvailable", isAvailable);
      click();
      preset->actionInterface()->doAction(QAccessibleActionInterface::pressAction());
      QCOMPARE(clicks.count(), 6);
    }
  }

  void paletteFollowsTheAppearance() {
    Palette* palette = Palette::instance();
    const QSignalSpy changes(palette, &Palette::changed);
    const QColor lightText = palette->text();
    const Appearance dark(ColorScheme::dark);
    palette->setAppearance(&dark);
    QCOMPARE(changes.count(), 1);
    QVERIFY(palette->text().lightness() > lightText.lightness());
  }

  void spinnersTickOnlyWhileTheyCanBeSeen() {
    const SpinnerClock* clock = SpinnerClock::instance();
    auto window = std::make_unique<QQuickWindow>();
    SpinnerClock::Running spinner(window.get());
    SpinnerClock::Running other(window.get());
    QVERIFY(!clock->isTicking());  // not shown yet
    window->show();
    QSignalSpy ticks(clock, &SpinnerClock::ticked);
    QVERIFY(ticks.wait());
    spinner = {};
    QVERIFY(clock->isTicking());
    window->hide();
    QTRY_VERIFY(!clock->isTicking());
    window->show();
    QTRY_VERIFY(clock->isTicking());
    window.reset();  // it outlives its windows
    QVERIFY(!clock->isTicking());
    for (int step = 1; step < kSpinnerSteps; ++step) {
      QVERIFY(spinnerImage(step, 20, qRgb(90, 90, 90), 2) != spinnerImage(0, 20, qRgb(90, 90, 90), 2));
    }
  }

  void shapesMeetThePixelGridOfBrokenRatios() {
    const Shape shape{.part = Shape::Part::fill, .radius = 20, .color = qRgb(31, 111, 95)};
    for (const QSizeF size : {QSizeF(181, 181), QSizeF(34, 34), QSizeF(63, 41)}) {
      const NinePatch patch = shapeImage(shape, size, 1.5);
      const QPoint center(patch.border.left() - 1, patch.border.top() - 1);
      QCOMPARE(patch.image.pixel(center), shape.color);
      for (const QImage& image : {patch.image, patch.image.mirrored(true, true)}) {
        QVERIFY(qAlpha(image.pixel(center.x(), 0)) > 240 && qAlpha(image.pixel(0, center.y())) > 240);
        QCOMPARE(qAlpha(image.pixel(0, 0)), 0);
      }
    }
  }

 private:
  static constexpr QPoint kCenter{100, 100};
  static constexpr QPoint kOverItem{85, 100};

  template <typename Event>
  void send(Event event) {
    QCoreApplication::sendEvent(m_view.get(), &event);
  }

  void load(const QByteArray& qml) {
    m_view = std::make_unique<QQuickView>();
    m_view->resize(200, 200);
    QQmlComponent component(m_view->engine());
    component.setData("import QtQuick\nimport Lumagrid.Style\n" + qml, QUrl());
    m_item = qobject_cast<QQuickItem*>(component.create());
    QVERIFY2(m_item, qPrintable(component.errorString()));
    m_item->setParent(m_view->contentItem());
    m_item->setParentItem(m_view->contentItem());
    m_item->setPosition(kCenter - QPointF(m_item->width(), m_item->height()) / 2);
    m_view->show();
    m_view->requestActivate();
    QVERIFY(QTest::qWaitForWindowActive(m_view.get()));
  }

  std::unique_ptr<QQuickView> m_view;
  QQuickItem* m_item = nullptr;
};

QTEST_MAIN(StyleTest)
#include "StyleTest.moc"
