#include "LumagridApp.h"

#include <QQmlComponent>

#include "Curves.h"
#include "Palette.h"
#include "WorkerPool.h"

namespace lumagrid {

LumagridApp::LumagridApp(const Platform& platform, QObject* parent)
    : QObject(parent),
      m_platform(platform),
      m_recentFolders(m_platform.preferences),
      m_menus(m_recentFolders, m_notificationCenter, m_platform.popupMenu, m_platform.services.alert, m_dialogs,
              m_platform.knownLimits) {
  Palette::instance()->setAppearance(&m_platform.appearance);
  Curves::instance()->setAppearance(&m_platform.appearance);
  // Hinted to the pixel grid, as the desktop's other texts are.
  QQuickWindow::setTextRenderType(QQuickWindow::NativeTextRendering);
}

LumagridApp::~LumagridApp() {
  m_windows.clear();  // drops what nobody has begun for them
  workerPool().clear();
  workerPool().waitForDone();
}

QQuickWindow* LumagridApp::makeWindow() {
  auto view = std::make_unique<ContentView>(
      m_platform.services, ContentView::Shared{m_recentFolders, m_notificationCenter, m_thumbnailQueue,
                                               m_platform.popupMenu, m_platform.services.alert, m_dialogs});
  QQmlComponent component(&m_engine, QUrl(QStringLiteral("qrc:/qt-project.org/imports/Lumagrid/App/MainWindow.qml")));
  if (component.isError()) {
    qWarning("%s", qPrintable(component.errorString()));
    return nullptr;
  }
  std::unique_ptr<QObject> object(
      component.createWithInitialProperties({{QStringLiteral("view"), QVariant::fromValue(view.get())},
                                             {QStringLiteral("menus"), QVariant::fromValue(&m_menus)}}));
  auto* window = qobject_cast<QQuickWindow*>(object.get());
  if (!window) return nullptr;
  (void)object.release();
  m_windows.push_back({std::move(view), std::unique_ptr<QQuickWindow>(window)});
  connect(
      window, &QWindow::visibleChanged, this, [this, window] { forgetIfClosed(window); },
      Qt::QueuedConnection);  // once it has closed
  return window;
}

void LumagridApp::open(const std::vector<FileUrl>& files) {
  m_dialogs.afterwards(this, [this, files] {
    QQuickWindow* window = unusedWindow();
    if (!window) window = makeWindow();
    if (!window) return;
    if (!files.empty()) contentView(window)->openPaths(files);
    window->show();
    window->raise();
    window->requestActivate();
  });
}

QQuickWindow* LumagridApp::unusedWindow() const {
  for (const OpenWindow& open : m_windows) {
    const bool isOpening = open.window->property("isOpening").toBool();
    if (!open.view->library()->folderURL() && !isOpening) return open.window.get();
  }
  return nullptr;
}

// The last one stays: the application ends with it.
void LumagridApp::forgetIfClosed(const QQuickWindow* window) {
  if (m_windows.size() < 2) return;
  std::erase_if(m_windows,
                [window](const OpenWindow& open) { return open.window.get() == window && !open.window->isVisible(); });
}

ContentView* LumagridApp::contentView(const QQuickWindow* window) const {
  for (const OpenWindow& open : m_windows) {
    if (open.window.get() == window) return open.view.get();
  }
  return nullptr;
}

}  // namespace lumagrid
