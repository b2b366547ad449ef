#include "PhotoView.h"
#include "UiWindow.h"

using namespace lumagrid;

// Zoom and pan of the photo on the detail stage.
class ZoomUiTest : public QObject {
  Q_OBJECT

 private Q_SLOTS:
  void init();
  void cleanup();
  void aPinchSetsTheScale_data();
  void aPinchSetsTheScale();
  void aPinchStartsFromItsOwnFactor();
  void twoFingersOnAScreenPinch();
  void aDragPans_data();
  void aDragPans();
  void aDoubleClickResets();
  void whatResetsTheZoom_data();
  void whatResetsTheZoom();

 private:
  [[nodiscard]] double scale() const { return m_window->view.zoom().scale; }
  [[nodiscard]] QSizeF offset() const { return m_window->view.zoom().offset; }
  [[nodiscard]] PhotoView* photo() const;
  // What is on screen has come to rest there.
  [[nodiscard]] bool isShown(double scale, QPointF offset) const {
    return photo() && photo()->displayedScale() == scale && photo()->displayedOffset() == offset;
  }

  const Photos m_folder{4};
  std::unique_ptr<UiApp> m_app;
  std::unique_ptr<UiWindow> m_window;
};

void ZoomUiTest::init() {
  m_app = std::make_unique<UiApp>();
  m_window = std::make_unique<UiWindow>(m_app->app);
  choose(*m_app, *m_window, m_folder.url());
  QTRY_VERIFY(m_window->shows(photoName(3)));
  m_window->click(photoName(1));
  QTRY_VERIFY(photo());
}

void ZoomUiTest::cleanup() {
  QTRY_COMPARE(m_app->app.thumbnailQueue().pendingCount(), 0);
  m_window.reset();
  m_app.reset();
}

PhotoView* ZoomUiTest::photo() const {
  const auto find = [](const auto& self, QQuickItem* parent) -> PhotoView* {
    for (QQuickItem* child : parent->childItems()) {
      if (auto* photo = qobject_cast<PhotoView*>(child)) return photo;
      if (PhotoView* photo = self(self, child)) return photo;
    }
    return nullptr;
  };
  return find(find, m_window->window.contentItem());
}

void ZoomUiTest::aPinchSetsTheScale_data() {
  QTest::addColumn<double>("magnification");
  QTest::addColumn<double>("during");
  QTest::addColumn<double>("afterwards");
  QTest::newRow("together stays fitted") << 0.6 << 1.0 << 1.0;
  QTest::newRow("a little apart springs back") << 1.04 << 1.04 << 1.0;
  QTest::newRow("further apart stays") << 1.06 << 1.06 << 1.06;
  QTest::newRow("far apart stays") << 3.0 << 3.0 << 3.0;
}

void ZoomUiTest::aPinchSetsTheScale() {
  QFETCH(double, magnification);
  QFETCH(double, during);
  QFETCH(double, afterwards);
  m_window->beginPinch();
  m_window->changePinch(magnification);
  QCOMPARE(scale(), during);
  QTRY_VERIFY(isShown(during, {}));
  m_window->endPinch();
  QCOMPARE(scale(), afterwards);
  QCOMPARE(offset(), QSizeF(0, 0));
  QTRY_VERIFY(isShown(afterwards, {}));
}

void ZoomUiTest::aPinchStartsFromItsOwnFactor() {
  m_window->pinch({1.5, 3.0});
  QCOMPARE(scale(), 3.0);
  m_window->beginPinch();
  m_window->changePinch(1.1);
  QCOMPARE(scale(), 1.1);
  m_window->changePinch(2.0);
  m_window->endPinch();
  QCOMPARE(scale(), 2.0);
  // The wheel goes on from the scale in force.
  for (int notch = 0; notch < 7; ++notch) m_window->turnWheel(120, Qt::ControlModifier);
  QVERIFY(std::abs(scale() - 4) < 1e-6);
  m_window->turnWheel(120);
  QVERIFY(std::abs(scale() - 4) < 1e-6);
}

void ZoomUiTest::twoFingersOnAScreenPinch() {
  const std::unique_ptr<QPointingDevice> screen(QTest::createTouchDevice());
  const QPoint middle = m_window->middle();
  const auto fingers = [&] { return QTest::touchEvent(&m_window->window, screen.get(), false); };
  const auto send = [](QTest::QTouchEventSequence sequence) { sequence.commit(); };
  const QPoint near(50, 0);
  const QPoint far(125, 0);
  send(fingers().press(0, middle - near, &m_window->window).press(1, middle + near, &m_window->window));
  send(fingers().move(0, middle - far, &m_window->window).move(1, middle + far, &m_window->window));
  QCOMPARE(scale(), 2.5);
  send(fingers().release(0, middle - far, &m_window->window).release(1, middle + far, &m_window->window));
  QCOMPARE(scale(), 2.5);
}

void ZoomUiTest::aDragPans_data() {
  QTest::addColumn<double>("zoom");
  QTest::addColumn<QList<QPoint>>("drags");
  QTest::addColumn<QSizeF>("offset");
  QTest::newRow("not the fitted photo") << 1.0 << QList<QPoint>{{40, -25}} << QSizeF(0, 0);
  QTest::newRow("the zoomed photo") << 3.0 << QList<QPoint>{{40, -25}} << QSizeF(40, -25);
  QTest::newRow("again from where it is") << 3.0 << QList<QPoint>{{40, -25}, {10, 10}} << QSizeF(50, -15);
  QTest::newRow("not within ten points") << 3.0 << QList<QPoint>{{7, 7}} << QSizeF(0, 0);
  QTest::newRow("out of sight") << 2.0 << QList<QPoint>{{500, 300}, {500, 300}, {500, 300}} << QSizeF(1500, 900);
}

void ZoomUiTest::aDragPans() {
  QFETCH(double, zoom);
  QFETCH(QList<QPoint>, drags);
  QFETCH(QSizeF, offset);
  m_window->pinch({zoom});
  for (const QPoint& way : drags) {
    m_window->drag(m_window->middle() - QPoint(250, 150), {way / 4, way / 2, way});
    QCOMPARE(m_window->view.dragOffset(), QSizeF(0, 0));
  }
  QCOMPARE(this->offset(), offset);
  QCOMPARE(scale(), zoom);
  QTRY_VERIFY(isShown(zoom, {offset.width(), offset.height()}));
}

void ZoomUiTest::aDoubleClickResets() {
  m_window->pinch({3.0});
  m_window->drag(m_window->middle(), {{20, 20}, {300, 200}});
  QTRY_VERIFY(isShown(3, {300, 200}));
  for (int time = 0; time < 2; ++time) {  // it is no toggle
    QTest::mouseDClick(&m_window->window, Qt::LeftButton, {}, m_window->middle());
    QCOMPARE(scale(), 1.0);
    QCOMPARE(offset(), QSizeF(0, 0));
    QTRY_VERIFY(isShown(1, {}));
  }
}

void ZoomUiTest::whatResetsTheZoom_data() {
  QTest::addColumn<QString>("action");
  QTest::addColumn<bool>("resets");
  QTest::newRow("the next photo") << "Next photo" << true;
  QTest::newRow("the photo before") << "Previous photo" << true;
  QTest::newRow("the grid") << "Grid" << true;
  QTest::newRow("not the photo that follows a moved one") << "Move current photo to Trash" << false;
  QTest::newRow("not the same folder, dropped") << "drop" << false;
  QTest::newRow("not the same folder, opened again") << "recent" << false;
}

void ZoomUiTest::whatResetsTheZoom() {
  QFETCH(QString, action);
  QFETCH(bool, resets);
  if (action == QStringLiteral("drop") || action == QStringLiteral("recent")) {
    // A folder opened again starts at what the system lists first.
    const qsizetype first = numberedNames(4).indexOf(m_folder.listed().first());
    m_window->press(Qt::Key_Escape);
    QTRY_VERIFY(m_window->shows(photoName(3)));
    m_window->click(photoName(int(first)));
    QTRY_VERIFY(photo());
  }
  m_window->pinch({3.0});
  m_window->drag(m_window->middle(), {{20, 20}, {30, 40}});
  QCOMPARE(offset(), QSizeF(30, 40));
  if (action == QStringLiteral("drop")) {
    QVERIFY(m_window->drop({QUrl::fromLocalFile(QFile::decodeName(m_folder.url().path()))}));
    QTRY_VERIFY(m_window->shows("Sort order"));
  } else if (action == QStringLiteral("recent")) {
    m_app->app.menus().fileMenu().front().submenu.front().action();
    QTRY_VERIFY(m_window->shows("Sort order"));
  } else {
    m_window->click(action);
  }
  QTRY_COMPARE(scale(), resets ? 1.0 : 3.0);
  QCOMPARE(offset(), resets ? QSizeF(0, 0) : QSizeF(30, 40));
  if (photo()) QTRY_VERIFY(isShown(scale(), {offset().width(), offset().height()}));
}

LUMAGRID_UI_TEST_MAIN(ZoomUiTest)
#include "ZoomUiTest.moc"
