#pragma once

#include <QAccessible>
#include <QQuickItem>
#include <QQuickWindow>
#include <QTest>

#include "FakePlatform.h"
#include "FileImageDecoder.h"
#include "LumagridApp.h"
#include "PhotoFolder.h"
#include "TemporaryHome.h"
#include "ThumbnailStore.h"

namespace lumagrid {

// A desktop whose user has second thoughts.
struct FakeAppearance : Appearance {
  using Appearance::Appearance;
  using Appearance::setContrast;
  using Appearance::setMotion;
};

// The application over a platform that does as the test says.
struct UiApp {
  FakePlatform platform;
  FakeAppearance appearance;
  LumagridApp app;

  // The alert is the platform's, unless there is one of the test's own.
  explicit UiApp(ColorScheme colorScheme = ColorScheme::light, Alert* alert = nullptr)
      : appearance(colorScheme),
        app({{platform.decoder, platform.trash, platform.chooser, alert ? *alert : platform.alert, platform.access},
             platform.preferences,
             platform.popupMenu,
             appearance}) {}
};

// One window of the application: driven by events, and seen as assistive technology sees it. Positions are points of
// the window.
class UiWindow {
 public:
  explicit UiWindow(UiApp& app);
  UiWindow(UiApp& app, const FileUrl& folder) : UiWindow(app) { open(folder); }

  QQuickWindow& window;
  ContentView& view;
  PhotoLibrary& library;

  // Opens a folder with photos as a user does, its first one current.
  void open(const FileUrl& folder);
  void openPhoto(QAnyStringView name);

  // What shows under this name; null when nothing does.
  [[nodiscard]] QAccessibleInterface* find(QAnyStringView name, QAccessible::Role role = QAccessible::NoRole) const;
  [[nodiscard]] bool shows(QAnyStringView name) const { return find(name) != nullptr; }
  [[nodiscard]] bool isEnabled(QAnyStringView name) const;
  [[nodiscard]] bool isChecked(QAnyStringView name) const;
  // Empty when nothing shows under this name.
  [[nodiscard]] QRect rectOf(QAnyStringView name) const;

  void click(QAnyStringView name, Qt::KeyboardModifiers modifiers = {});
  void press(Qt::Key key, Qt::KeyboardModifiers modifiers = {}) { QTest::keyClick(&window, key, modifiers); }
  // Moves the mouse to `position`; there it presses and releases what it takes to hold `buttons`.
  void pointTo(QPoint position, Qt::MouseButtons buttons = {}, Qt::KeyboardModifiers modifiers = {});
  // `angle` in eighths of a degree; `pixels`, where there are any, scroll by exact points.
  void turnWheel(int angle, Qt::KeyboardModifiers modifiers = {}, int pixels = 0);
  // Two fingers on a touch pad, over the middle of the window; magnifications are relative to the start.
  void pinch(const QList<double>& magnifications);
  // Drops what is at `url` on the middle of the window from a source that would rather move it; whether the window took
  // a copy. Nothing when it was refused while it hovered.
  std::optional<bool> drop(const QUrl& url);

  [[nodiscard]] QPoint middle() const { return {window.width() / 2, window.height() / 2}; }
  [[nodiscard]] int menuBarHeight() const { return window.minimumHeight() - 760; }
  [[nodiscard]] QImage grab() { return window.grabWindow().convertToFormat(QImage::Format_RGB32); }

 private:
  UiApp& m_app;
  Qt::MouseButtons m_heldButtons;
};

// An application with one window.
struct OnlyWindow : UiApp, UiWindow {
  explicit OnlyWindow(const FileUrl& folder) : UiWindow(static_cast<UiApp&>(*this), folder) {}
};

// A folder of small pictures under these names, dark cyan all over.
class Photos : public PhotoFolder {
 public:
  explicit Photos(const QStringList& names) {
    const QByteArray photo = samplePhoto({20, 20});
    for (const QString& name : names) (void)add(name, photo);
  }
  explicit Photos(int count) : Photos(numberedNames(count)) {}
};

inline QString photoName(int number) {
  return QString::number(number) + QStringLiteral(".jpg");
}

}  // namespace lumagrid

// Outside of every namespace.
#define LUMAGRID_UI_TEST_MAIN(Test)          \
  int main(int argc, char** argv) {          \
    const TemporaryHome home;                \
    FileImageDecoder decoder;                \
    ThumbnailStore::setDecoder(decoder);     \
    QGuiApplication application(argc, argv); \
    Test test;                               \
    return QTest::qExec(&test, argc, argv);  \
  }
