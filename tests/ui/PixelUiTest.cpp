#include <QPainter>
#include <cmath>

#include "UiWindow.h"

using namespace lumagrid;

namespace {

constexpr int kMargin = 18;   // around the stage
constexpr int kPadding = 24;  // around the grid
constexpr int kSpacing = 14;
constexpr int kColumns = 4;
const QColor kAccent(31, 111, 95);
const QColor kPhoto(0, 128, 128);

// `over` at `opacity` over `under`.
QColor blend(const QColor& under, const QColor& over, double opacity) {
  const auto mix = [opacity](int from, int to) { return int(std::lround(from + (to - from) * opacity)); };
  return {mix(under.red(), over.red()), mix(under.green(), over.green()), mix(under.blue(), over.blue())};
}

bool isNear(const QColor& actual, const QColor& expected, int tolerance = 2) {
  const auto near = [tolerance](int a, int b) { return std::abs(a - b) <= tolerance; };
  const bool result = near(actual.red(), expected.red()) && near(actual.green(), expected.green()) &&
                      near(actual.blue(), expected.blue());
  if (!result) qInfo() << actual.name() << "where" << expected.name() << "was expected";
  return result;
}

struct Look {
  ColorScheme scheme;
  QColor top, bottom;  // of the backdrop
  double warm, teal;   // opacities of its discs
  QColor first, second;
  double firstOpacity, secondOpacity;  // of the card
};

const Look kLight{
    ColorScheme::light, {251, 246, 238}, {241, 224, 197}, 0.24, 0.18, {255, 255, 255}, {238, 226, 208}, 0.86, 0.96};
const Look kDark{ColorScheme::dark, {26, 23, 20}, {36, 31, 26}, 0.12, 0.22, {44, 40, 36}, {35, 31, 27}, 0.92, 0.98};

}  // namespace

// Pictures of a window at two sizes, light and dark.
class PixelUiTest : public QObject {
  Q_OBJECT

 private Q_SLOTS:
  void init();
  void cleanup();
  void theCardStandsOnTheBackdrop_data() { windows(); }
  void theCardStandsOnTheBackdrop();
  void tilesStandWhereTheyFit_data() { windows(); }
  void tilesStandWhereTheyFit();
  void nothingIsDrawnOutsideTheCard_data() { windows(); }
  void nothingIsDrawnOutsideTheCard();

 private:
  static void windows();
  void openGrid();
  [[nodiscard]] QRect stage() const {
    return QRect({}, m_window->window.size())
        .adjusted(kMargin, m_window->menuBarHeight() + kMargin, -kMargin, -kMargin);
  }
  [[nodiscard]] QColor backdropAt(QPoint point) const;
  [[nodiscard]] bool showsBackdropInCorners(const QRect& rect) const;
  [[nodiscard]] QRect tile(int index) const;

  const Photos m_folder{200};
  const Look* m_look = nullptr;
  std::unique_ptr<UiApp> m_app;
  std::unique_ptr<UiWindow> m_window;
};

void PixelUiTest::windows() {
  QTest::addColumn<bool>("dark");
  QTest::addColumn<QSize>("content");
  QTest::newRow("light, the least size") << false << QSize(1100, 760);
  QTest::newRow("dark, the least size") << true << QSize(1100, 760);
  QTest::newRow("light, a large window") << false << QSize(2560, 1440);
  QTest::newRow("dark, a large window") << true << QSize(2560, 1440);
}

void PixelUiTest::init() {
  QFETCH(bool, dark);
  QFETCH(QSize, content);
  m_look = dark ? &kDark : &kLight;
  m_app = std::make_unique<UiApp>(m_look->scheme);
  m_window = std::make_unique<UiWindow>(*m_app);
  m_window->window.resize(content + QSize(0, m_window->menuBarHeight()));
  QTRY_COMPARE(m_window->grab().size(), m_window->window.size());
  // Laid out and painted at that size.
  QTRY_COMPARE(m_window->rectOf("Choose Folder").right(), content.width() - 23);
  QTRY_VERIFY(m_window->grab().pixelColor(content.width() - 1, content.height()) != QColor(Qt::white));
}

void PixelUiTest::cleanup() {
  m_window.reset();
  m_app.reset();
}

void PixelUiTest::openGrid() {
  m_window->open(m_folder.url());
  // The threads that make thumbnails stand back on a busy machine.
  QTRY_COMPARE_WITH_TIMEOUT(m_app->app.thumbnailQueue().pendingCount(), 0, 60'000);
}

// Where no edge of a disc is.
QColor PixelUiTest::backdropAt(QPoint point) const {
  const QSize size = m_window->window.size();
  const auto distance = [point](QPoint center) { return std::hypot(point.x() - center.x(), point.y() - center.y()); };
  QColor color = blend(m_look->top, m_look->bottom, (point.y() + 0.5) / size.height());
  if (distance({110, 80}) < 150) color = blend(color, {228, 179, 107}, m_look->warm);
  if (distance({size.width() - 90, size.height() - 60}) < 130) color = blend(color, {31, 111, 95}, m_look->teal);
  return color;
}

bool PixelUiTest::showsBackdropInCorners(const QRect& rect) const {
  const QImage image = m_window->grab();
  const QList<QPoint> corners{rect.topLeft(), rect.topRight(), rect.bottomLeft(), rect.bottomRight()};
  return std::all_of(corners.begin(), corners.end(),
                     [&](QPoint corner) { return isNear(image.pixelColor(corner), backdropAt(corner)); });
}

QRect PixelUiTest::tile(int index) const {
  const QRect stage = this->stage();
  const auto side = [](int extent) { return (extent - 2 * kPadding - (kColumns - 1) * kSpacing) / kColumns; };
  const int cellSide = std::min(side(stage.width()), side(stage.height()));
  const int pitch = cellSide + kSpacing;
  const int left = stage.left() + (stage.width() - (kColumns * pitch - kSpacing)) / 2;
  return {left + index % kColumns * pitch, stage.top() + kPadding + index / kColumns * pitch, cellSide, cellSide};
}

void PixelUiTest::theCardStandsOnTheBackdrop() {
  const QImage image = m_window->grab();
  const QRect stage = this->stage();
  for (const QRect& rect : {image.rect(), stage, stage.adjusted(3, 3, -3, -3)}) QVERIFY(showsBackdropInCorners(rect));
  for (const double progress : {0.2, 0.3, 0.7, 0.75}) {
    const QPoint point = stage.topLeft() + QPoint(int(stage.width() * progress), int(stage.height() * progress));
    const QColor card = blend(m_look->first, m_look->second, progress);
    const double opacity = m_look->firstOpacity + (m_look->secondOpacity - m_look->firstOpacity) * progress;
    QVERIFY(isNear(image.pixelColor(point), blend(backdropAt(point), card, opacity), 5));
  }
  // The border, in the middle of an edge: half of its line lies within the card.
  const QPoint edge(stage.left(), stage.center().y());
  QVERIFY(image.pixelColor(edge) != image.pixelColor(edge - QPoint(1, 0)));
  QVERIFY(image.pixelColor(edge) != image.pixelColor(edge + QPoint(1, 0)));
}

void PixelUiTest::tilesStandWhereTheyFit() {
  openGrid();
  QImage image = m_window->grab();
  const auto leftEdge = [this](int index) { return QPoint(tile(index).left(), tile(index).center().y()); };
  for (const int index : {1, 4, 7, 9, 14}) {  // not the current one, which is marked
    const QRect rect = tile(index);
    QCOMPARE(m_window->rectOf(photoName(index)), rect);
    QVERIFY(isNear(image.pixelColor(rect.center()), kPhoto));
    const QPoint left = leftEdge(index) + QPoint(0, rect.height() / 4);  // clear of the bar above the first row
    const QPoint right = left + QPoint(rect.width() - 1, 0);
    QVERIFY(isNear(image.pixelColor(left + QPoint(1, 0)), kPhoto));
    QVERIFY(isNear(image.pixelColor(right - QPoint(1, 0)), kPhoto));
    QVERIFY(image.pixelColor(left - QPoint(2, 0)).red() > kPhoto.red() + 20);
    QVERIFY(image.pixelColor(right + QPoint(2, 0)).red() > kPhoto.red() + 20);
    QVERIFY(isNear(image.pixelColor(rect.bottomLeft()), kPhoto));  // the picture's corners stay square
  }
  QVERIFY(isNear(image.pixelColor(leftEdge(0)), kAccent));
  QVERIFY(isNear(image.pixelColor(tile(0).center()), kPhoto));

  m_window->click(photoName(9), Qt::ControlModifier);
  QTRY_COMPARE(m_window->grab().pixelColor(leftEdge(9)), kAccent);
  image = m_window->grab();
  const QColor dimmed = blend(kPhoto, Qt::black, 0.22);
  QVERIFY(isNear(image.pixelColor(tile(9).center()), dimmed));
  const QPoint badge = tile(9).topLeft() + QPoint(7, 7);
  QVERIFY(isNear(image.pixelColor(badge + QPoint(2, 13)), kAccent));
  QVERIFY(isNear(image.pixelColor(badge + QPoint(-2, 13)), dimmed));
  QVERIFY(isNear(image.pixelColor(badge + QPoint(28, 13)), dimmed));
  // While one is checked, no other is marked.
  QVERIFY(image.pixelColor(leftEdge(0)) != kAccent);
  QVERIFY(isNear(image.pixelColor(tile(10).center()), kPhoto));
}

void PixelUiTest::nothingIsDrawnOutsideTheCard() {
  openGrid();
  const auto frame = [this] {
    QImage image = m_window->grab();
    QPainter(&image).fillRect(stage(), Qt::black);
    return image;
  };
  const QRect within = stage().adjusted(2, 2, -2, -2);
  const QImage untouched = frame();
  const int top = m_window->rectOf(photoName(4)).top();
  m_window->turnWheel(-120);
  QTRY_COMPARE(m_window->rectOf(photoName(4)).top(), top - 120);
  QCOMPARE(frame(), untouched);
  QVERIFY(showsBackdropInCorners(within));

  m_window->openPhoto(photoName(5));
  const QImage fitted = frame();
  m_window->pinch({30});
  const QPoint corner = stage().topLeft() + QPoint(stage().width() / 2, 4);
  QTRY_COMPARE(m_window->grab().pixelColor(corner), QColor(Qt::white));  // the photo covers the card
  QCOMPARE(frame(), fitted);
  QVERIFY(showsBackdropInCorners(within));
}

LUMAGRID_UI_TEST_MAIN(PixelUiTest)
#include "PixelUiTest.moc"
