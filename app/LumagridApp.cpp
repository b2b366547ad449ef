#include "LumagridApp.h"

#include <QQmlComponent>

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
  return window;
}

ContentView* LumagridApp::contentView(const QQuickWindow* window) const {
  for (const OpenWindow& open : m_windows) {
    if (open.window.get() == window) return open.view.get();
  }
  return nullptr;
}

}  // namespace lumagrid
