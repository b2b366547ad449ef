#include <QApplication>
#include <QMessageBox>
#include <QSGRendererInterface>
#include <QTimer>
#include <QTimerEvent>

#include "AnimationClock.h"
#include "HolidayPhotos.h"
#include "Pictures.h"
#include "QtAlert.h"
#include "SpinnerClock.h"
#include "SpinnerImage.h"
#include "ToolkitEnvironment.h"
#include "UiWindow.h"
#include "WidgetPalette.h"

using namespace lumagrid;

namespace {

constexpr QMargins kAround(16, 16, 16, 16);  // a control: its shadow and its focus ring
constexpr int kLongestAnimation = 200;       // ms

// An application whose alert is the desktop's own.
struct DesktopApp {
  Appearance appearance;
  WidgetPalette palette{appearance};
  QtAlert alert{palette};
  UiApp ui{appearance.colorScheme(), &alert};

  explicit DesktopApp(ColorScheme scheme) : appearance(scheme) { ui.platform.decoder.picture = largePhoto(); }
};

}  // namespace

// Pictures of the window and its parts, as they are in tests/pictures. Each is taken at rest: animations have come to
// their end, spinners stand at their first step.
class PictureUiTest : public QObject {
  Q_OBJECT

 private Q_SLOTS:
  void grids() {
    open(ColorScheme::light);
    for (const char* preset : {"4", "36", "16"}) {
      m_window->click(preset);
      QTest::mouseMove(&m_window->window, corner());
      (void)still();
      m_window->turnWheel(100'000);  // to the top
      isAs(QStringLiteral("grid-of-") + QLatin1String(preset));
    }
  }

  void selections() {
    for (const ColorScheme scheme : {ColorScheme::light, ColorScheme::dark}) {
      open(scheme);
      if (scheme == ColorScheme::dark) enlarge();
      for (const int number : {0, 2, 4, 7}) m_window->click(photoName(number), Qt::ControlModifier);
      isAs("selection");
    }
  }

  void contrasts() {
    for (const ColorScheme scheme : {ColorScheme::light, ColorScheme::dark}) {
      open(scheme);
      m_app->ui.appearance.setContrast(Contrast::high);
      isAs("high-contrast");
    }
  }

  void photos() {
    open(ColorScheme::light);
    m_window->openPhoto("0.jpg");
    isAs("photo");
    m_window->pinch({2});
    m_window->view.endDrag({300, -200});
    isAs("photo-zoomed");
    open(ColorScheme::dark);
    enlarge();
    m_window->openPhoto("10.jpg");
    isAs("photo");
  }

  void placeholders() {
    for (const ColorScheme scheme : {ColorScheme::light, ColorScheme::dark}) {
      openEmpty(scheme);
      isAs("no-folder");
    }
    open(ColorScheme::light);
    m_app->ui.platform.decoder.damaged = {photoName(HolidayPhotos::kCount - 1)};
    m_window->openPhoto("0.jpg");
    m_window->library.openPhoto(HolidayPhotos::kCount - 1);
    isAs("photo-damaged");
  }

  void pressed() {
    for (const ColorScheme scheme : {ColorScheme::light, ColorScheme::dark}) {
      open(scheme);
      QList<QImage> held;
      const auto hold = [&](std::initializer_list<const char*> names) {
        for (const char* name : names) {
          const QRect rect = m_window->rectOf(name);
          QTest::mousePress(&m_window->window, Qt::LeftButton, {}, rect.center());
          held.append(still(rect + kAround));
          QTest::mouseRelease(&m_window->window, Qt::LeftButton, {}, corner());
        }
      };
      hold({"File", "Zoom in to show fewer thumbnails", "9", "16", "Sort order", "Choose Folder", "12.jpg"});
      m_window->click("12.jpg", Qt::ControlModifier);
      (void)still();
      hold({"Clear", "Delete"});
      m_window->press(Qt::Key_Escape);
      m_window->openPhoto("12.jpg");
      hold({"Grid", "Previous photo", "Next photo", "Move current photo to Trash"});
      isAs("pressed", joined(held, Qt::Vertical), kOpenGlScaled);
    }
  }

  void hovered() {
    for (const ColorScheme scheme : {ColorScheme::light, ColorScheme::dark}) {
      open(scheme);
      QList<QImage> under;
      const QRect bar(m_window->window.width() - 41, 60, 40, 120);
      const auto hover = [this](const QRect& rect) { QTest::mouseMove(&m_window->window, rect.center()); };
      for (const char* title : {"Lumagrid", "File"}) {
        hover(m_window->rectOf(title));
        under.append(still(m_window->rectOf(title)));
      }
      hover(bar.adjusted(0, 0, -24, 0));
      under.append(still(bar));
      const auto takeTooltip = [&](const char* name, const char* text) {
        hover(m_window->rectOf(name));
        QTRY_VERIFY(m_window->find(text, QAccessible::ToolTip));
        under.append(still(m_window->rectOf(name) + QMargins(60, 0, 60, 50)));
        hover({corner(), QSize()});
      };
      takeTooltip("16", "4 x 4 grid");
      m_window->openPhoto("12.jpg");
      takeTooltip("Grid", "Back to grid (Esc)");
      isAs("hovered", joined(under, Qt::Vertical));
    }
  }

  void focused() {
    open(ColorScheme::light);
    QList<QImage> rings;
    const auto walk = [&](std::initializer_list<const char*> names) {
      for (const char* name : names) {
        for (int tabs = 0; tabs < 20 && !m_window->find(name)->state().focused; ++tabs) m_window->press(Qt::Key_Tab);
        rings.append(still(m_window->rectOf(name) + kAround));
      }
    };
    walk({"Lumagrid", "Zoom in to show fewer thumbnails", "16", "Sort order", "Choose Folder"});
    m_window->press(Qt::Key_Tab);
    rings.append(still(m_window->rectOf("0.jpg") + kAround));
    m_window->openPhoto("0.jpg");
    walk({"Grid", "Next photo"});
    isAs("focused", joined(rings, Qt::Vertical));
  }

  void statusLines() {
    for (const ColorScheme scheme : {ColorScheme::light, ColorScheme::dark}) {
      openEmpty(scheme);
      QList<QImage> lines;
      const auto take = [&] {
        QTRY_VERIFY(m_window->shows(m_window->library.statusMessage()));
        (void)still();
        lines.append(still(m_window->rectOf(m_window->library.statusMessage()) + kAround));
      };
      QVERIFY(m_window->drop(QUrl::fromLocalFile(QFile::decodeName(m_folder.folder().path()))));
      QTRY_VERIFY(m_window->library.photoCount() > 0);
      take();
      m_window->library.openFolder(m_folder.url(QStringLiteral("missing")));
      m_clock.pass(10'000);  // an error stays
      take();
      isAs("status", joined(lines, Qt::Vertical));
    }
  }

  void alerts() {
    for (const ColorScheme scheme : {ColorScheme::light, ColorScheme::dark}) {
      open(scheme);
      m_window->click("5.jpg", Qt::ControlModifier);
      (void)still();
      QImage alert;
      QTimer::singleShot(0, this, [&alert] {
        auto* box = qobject_cast<QMessageBox*>(QApplication::activeModalWidget());
        QVERIFY(box);
        QTRY_VERIFY(box->isActiveWindow());
        alert = box->grab().toImage();
        box->reject();
      });
      m_window->click("Delete");
      isAs("alert", alert);
    }
  }

  void cleanup() {
    m_window.reset();
    m_app.reset();
    const QString differences = std::exchange(m_differences, {}).join(u'\n');
    QVERIFY2(differences.isEmpty(), qPrintable(differences));
  }

 private:
  // Another window, on another application.
  void openEmpty(ColorScheme scheme) {
    m_window.reset();
    m_app = std::make_unique<DesktopApp>(scheme);
    m_window = std::make_unique<UiWindow>(m_app->ui);
  }
  void open(ColorScheme scheme) {
    openEmpty(scheme);
    m_clock.run();
    m_window->open(m_folder.folder());
    m_clock.hold();
  }

  void enlarge() {
    m_window->window.resize(1600, 1000 + m_window->menuBarHeight());
    QTRY_COMPARE(m_window->window.contentItem()->width(), 1600);
  }

  [[nodiscard]] bool isLoading() const { return m_app->ui.app.thumbnailQueue().pendingCount() > 0; }
  [[nodiscard]] double ratio() const { return m_window->window.effectiveDevicePixelRatio(); }
  [[nodiscard]] QPoint corner() const { return {2, m_window->window.height() - 2}; }

  // The window when a frame is as the one before.
  QImage still(const QRect& part = {}) {
    QImage image;
    QImage before;
    bool wasLoading = false;
    do {
      before = std::exchange(image, {});
      wasLoading = isLoading();
      m_clock.pass(wasLoading ? 0 : kLongestAnimation);  // a status line leaves by its time
      QCoreApplication::processEvents();
      while (SpinnerClock::instance()->step() % kSpinnerSteps != 0) {
        QTimerEvent tick(0);
        QCoreApplication::sendEvent(SpinnerClock::instance(), &tick);
      }
      image = m_window->grab();
      image.setDevicePixelRatio(1);
    } while (image != before || wasLoading || isLoading());
    const QRect pixels(part.topLeft() * ratio(), part.size() * ratio());
    return part.isEmpty() ? image : image.copy(pixels.intersected(image.rect()));
  }

  // The whole window, its top left quarter where it has four times as many pixels.
  void isAs(QAnyStringView name) {
    QTest::mouseMove(&m_window->window, corner());
    const QImage whole = still();
    isAs(name, ratio() == 1 ? whole : whole.copy(QRect(QPoint(), whole.size() / 2)));
  }

  void isAs(QAnyStringView name, const QImage& picture, const Tolerance& openGl = kOpenGl) {
    QString file = name.toString();
    if (m_app->appearance.colorScheme() == ColorScheme::dark) file += QStringLiteral("-dark");
    if (ratio() != 1) file += QStringLiteral("@2x");
    const bool isSoftware = m_window->window.rendererInterface()->graphicsApi() == QSGRendererInterface::Software;
    const QString difference = differenceFromPicture(file, picture, isSoftware ? kSoftware : openGl);
    if (!difference.isEmpty()) m_differences.append(difference);
  }

  // Vector units may round otherwise.
  static constexpr Tolerance kSoftware{2, 0};
  // Blended with more bits; the round ends of the scroll bar are covered otherwise …
  static constexpr Tolerance kOpenGl{4, 20};
  // … and so are letters that are scaled, each along its outline.
  static constexpr Tolerance kOpenGlScaled{4, 3000};

  AnimationClock m_clock;
  const HolidayPhotos m_folder;
  std::unique_ptr<DesktopApp> m_app;
  std::unique_ptr<UiWindow> m_window;
  QStringList m_differences;  // a failure at once would end all waiting in the test
};

int main(int argc, char** argv) {
  const TemporaryHome home(TemporaryHome::User::same);
  qputenv("FONTCONFIG_FILE", PICTURE_FONTS);
  for (const char* desktop : {"XDG_CURRENT_DESKTOP", "QT_QPA_PLATFORMTHEME", "QT_STYLE_OVERRIDE"}) qunsetenv(desktop);
  setToolkitEnvironment();
  QApplication::setStyle(QStringLiteral("Fusion"));
  QApplication application(argc, argv);
  QFont font(QStringLiteral("DejaVu Sans"));
  font.setPixelSize(13);
  QApplication::setFont(font);
  FileImageDecoder decoder;
  ThumbnailStore::setDecoder(decoder);
  PictureUiTest test;
  return QTest::qExec(&test, argc, argv);
}

#include "PictureUiTest.moc"
