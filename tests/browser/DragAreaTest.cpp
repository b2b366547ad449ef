#include "DragArea.h"

#include <QQuickWindow>
#include <QTest>

using namespace lumagrid;

// The area fills the window; the button goes down at (50, 50).
class DragAreaTest : public QObject {
  Q_OBJECT

 private Q_SLOTS:
  void initTestCase() {
    m_window.resize(200, 200);
    m_area.setParentItem(m_window.contentItem());
    m_area.setSize(m_window.size());
    m_area.setProperty("canMove", true);
    const auto text = [](const char* what, QPointF way) {
      return QStringLiteral("%1 %2 %3").arg(QLatin1String(what)).arg(way.x()).arg(way.y());
    };
    connect(&m_area, &DragArea::dragged, this, [this, text](QPointF way) { m_told.append(text("dragged", way)); });
    connect(&m_area, &DragArea::ended, this, [this, text](QPointF way) { m_told.append(text("ended", way)); });
    connect(&m_area, &DragArea::canceled, this, [this] { m_told.append(QStringLiteral("canceled")); });
    connect(&m_area, &DragArea::doubleClicked, this, [this] { m_told.append(QStringLiteral("double click")); });
    m_window.show();
  }

  void recognizes_data() {
    QTest::addColumn<QList<QPoint>>("way");
    QTest::addColumn<QStringList>("told");
    QTest::newRow("no drag within ten points") << QList<QPoint>{{56, 57}, {50, 59}, {50, 50}} << QStringList();
    QTest::newRow("a drag of exactly ten points")
        << QList<QPoint>{{56, 58}} << QStringList{QStringLiteral("dragged 6 8"), QStringLiteral("ended 6 8")};
    QTest::newRow("a drag that comes back to its start")
        << QList<QPoint>{{50, 20}, {50, 49}}
        << QStringList{QStringLiteral("dragged 0 -30"), QStringLiteral("dragged 0 -1"), QStringLiteral("ended 0 -1")};
  }

  void recognizes() {
    QFETCH(const QList<QPoint>, way);
    QTest::mousePress(&m_window, Qt::LeftButton, {}, {50, 50});
    for (const QPoint point : way) QTest::mouseMove(&m_window, point);
    QTest::mouseRelease(&m_window, Qt::LeftButton, {}, way.last());
    QTEST(std::exchange(m_told, {}), "told");
  }

  void theMouseIsTakenAway() {
    QTest::mousePress(&m_window, Qt::LeftButton, {}, {50, 50});
    QTest::mouseMove(&m_window, {80, 50});
    QCOMPARE(m_area.cursor().shape(), Qt::ClosedHandCursor);
    m_area.ungrabMouse();
    QCOMPARE(m_area.cursor().shape(), Qt::OpenHandCursor);
    QTest::mouseRelease(&m_window, Qt::LeftButton, {}, {90, 50});
    QCOMPARE(std::exchange(m_told, {}), (QStringList{QStringLiteral("dragged 30 0"), QStringLiteral("canceled")}));
    QTest::mouseDClick(&m_window, Qt::LeftButton, {}, {50, 50});
    QCOMPARE(std::exchange(m_told, {}), QStringList{QStringLiteral("double click")});
  }

 private:
  QQuickWindow m_window;
  DragArea m_area;
  QStringList m_told;
};

QTEST_MAIN(DragAreaTest)
#include "DragAreaTest.moc"
