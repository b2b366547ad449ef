#include "DragArea.h"

#include <QQuickWindow>

#include "Table.h"

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
    const auto log = [this](const char* what, QPointF way) {
      m_log += QStringLiteral("%1 %2 %3; ").arg(QLatin1String(what)).arg(way.x()).arg(way.y());
    };
    connect(&m_area, &DragArea::dragged, this, [log](QPointF way) { log("dragged", way); });
    connect(&m_area, &DragArea::ended, this, [log](QPointF way) { log("ended", way); });
    connect(&m_area, &DragArea::canceled, this, [this] { m_log += u"canceled; "; });
    connect(&m_area, &DragArea::doubleClicked, this, [this] { m_log += u"double click; "; });
    m_window.show();
  }

  void recognizes_data() {
    addRows<std::pair<QList<QPoint>, QString>>({
        {"no drag within ten points", {{{56, 57}, {50, 59}, {50, 50}}, {}}},
        {"a drag of exactly ten points", {{{56, 58}}, u"dragged 6 8; ended 6 8; "_qs}},
        {"a drag that comes back to its start",
         {{{50, 20}, {50, 49}}, u"dragged 0 -30; dragged 0 -1; ended 0 -1; "_qs}},
    });
  }

  void recognizes() {
    const auto [points, log] = fetchedRow<std::pair<QList<QPoint>, QString>>();
    QTest::mousePress(&m_window, Qt::LeftButton, {}, {50, 50});
    for (const QPoint point : points) QTest::mouseMove(&m_window, point);
    QTest::mouseRelease(&m_window, Qt::LeftButton, {}, points.last());
    QCOMPARE(std::exchange(m_log, {}), log);
  }

  void theMouseIsTakenAway() {
    QTest::mousePress(&m_window, Qt::LeftButton, {}, {50, 50});
    QTest::mouseMove(&m_window, {80, 50});
    QCOMPARE(m_area.cursor().shape(), Qt::ClosedHandCursor);
    m_area.ungrabMouse();
    QCOMPARE(m_area.cursor().shape(), Qt::OpenHandCursor);
    QTest::mouseRelease(&m_window, Qt::LeftButton, {}, {90, 50});
    QTest::mouseDClick(&m_window, Qt::LeftButton, {}, {50, 50});
    QCOMPARE(m_log, u"dragged 30 0; canceled; double click; "_qs);
  }

 private:
  QQuickWindow m_window;
  DragArea m_area;
  QString m_log;
};

QTEST_MAIN(DragAreaTest)
#include "DragAreaTest.moc"
